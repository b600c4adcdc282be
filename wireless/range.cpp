// The driver's range record: rates, frequencies and channels.
#include <devfacts/wireless.h>
#include <linux/wireless.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <iterator>
#include <span>

#include "core/byte_reader.h"
#include "wireless/query.h"

using namespace devfacts;

static_assert(std::size(iw_range_record{}.bitrate) == std::size(iw_status{}.bit_rates));

namespace {

constexpr uint32_t channel_list_request = SIOCIWFIRSTPRIV + 13;
constexpr uint16_t channel_list_size = 2048;

// Mantissa times ten to the exponent. Powers are slow on a processor without a floating-point unit, and most rows of a
// table have the same exponent, so the last power is kept.
class frequency_reader {
 public:
  double read(const void *freq) {
    byte_reader bytes(freq, sizeof(int32_t) + sizeof(int16_t));
    const auto m = bytes.read_or_zero<int32_t>();
    const auto e = bytes.read_or_zero<int16_t>();
    if (e != exponent_) power_ = std::pow(10.0, exponent_ = e);
    return m * power_;
  }

 private:
  int16_t exponent_ = 0;
  double power_ = 1.0;
};

// What the driver is offered: twice the record, of which the first is the answer.
struct range_answer {
  iw_range_record range, rest;
};

int ask_range(const char *name, range_answer &answer) {
  std::memset(&answer, 0, sizeof answer);
  return query(SIOCGIWRANGE, name, {&answer, sizeof answer, 0}, [](const iwreq_data &) {});
}

}  // namespace

int get_range_info(const char *name, iw_range_record *range) {
  range_answer answer;
  if (ask_range(name, answer) != 0) return -1;
  *range = answer.range;
  return 0;
}

double iw_freq2double(const void *freq) { return frequency_reader().read(freq); }

int iw_freq_channel(iw_status *status, const char *name) {
  frequency_reader reader;
  const auto store = [&](const iwreq_data &answer) { status->frequency = reader.read(&answer.freq); };
  if (query(SIOCGIWFREQ, name, {}, store) != 0) return -1;
  range_answer answer;
  if (ask_range(name, answer) != 0) return -1;
  const iw_range_record &range = answer.range;
  for (const iw_range_freq &row : std::span(range.freq, range.num_frequency)) {
    if (reader.read(&row) != status->frequency) continue;
    status->channel = row.channel;
    break;
  }
  return 0;
}

int iw_bitrates(iw_status *status, const char *name) {
  range_answer answer;
  if (ask_range(name, answer) != 0) return -1;
  const iw_range_record &range = answer.range;
  const size_t count = std::min<size_t>(range.num_bitrates, std::size(range.bitrate));
  std::copy_n(range.bitrate, count, status->bit_rates);
  return 0;
}

int iw_get_channels(const char *name, uint32_t first_word, void *buffer) {
  std::memcpy(buffer, &first_word, sizeof first_word);
  return query(channel_list_request, name, {buffer, channel_list_size, 0}, [](const iwreq_data &) {});
}
