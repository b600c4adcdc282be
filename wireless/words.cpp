// Words for the numbers of a status record.
#include <devfacts/wireless.h>
#include <linux/wireless.h>

#include <cstring>
#include <iterator>

const char *const IW_OPERATION_MODE[] = {"Auto", "Ad-Hoc", "Managed", "Master", "Repeater", "Secondary", "Monitor"};

namespace {

// The first bit that is set decides.
constexpr struct {
  uint16_t bit;
  char text[12];  // in place: no relocation
} security_modes[] = {
    {IW_ENCODE_DISABLED, "off"},
    {IW_ENCODE_RESTRICTED, "restricted"},
    {IW_ENCODE_OPEN, "open"},
};

}  // namespace

const char *iw_operation_mode2str(uint32_t mode) {
  return mode < std::size(IW_OPERATION_MODE) ? IW_OPERATION_MODE[mode] : nullptr;
}

const char *iw_security_mode2str(uint32_t flags) {
  for (const auto &mode : security_modes) {
    if ((flags & mode.bit) != 0) return mode.text;
  }
  return nullptr;
}

const char *iw_bandwidth2str(const iw_status *status) {
  if (std::strchr(status->ieee_name, 'T') != nullptr) return "turbo";
  if (status->bit_rates[0] == 1500000) return "quarter";
  if (status->bit_rates[0] == 3000000) return "half";
  return "full";
}
