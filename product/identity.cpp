// Names, serial number, firmware version and chip.
#include <devfacts/core.h>
#include <devfacts/product.h>

#include <atomic>
#include <cstdio>
#include <cstring>

#include "core/owner.h"

using namespace devfacts;

namespace {

constexpr char default_serial_no[] = "0000000000000000";

// Searched in this order.
constexpr struct {
  int32_t id;
  char name[8];  // in place: no relocation
} cpu_table[] = {
    {CPU_ADM5120, "adm5120"}, {CPU_AR2316, "ar2316"}, {CPU_AR2317, "ar2317"}, {CPU_AR5312, "ar5312"},
    {CPU_RT2880, "rt2880"},   {CPU_RT3052, "rt3052"}, {CPU_RT3050, "rt3050"}, {CPU_RT3352, "rt3352"},
    {CPU_SL3512, "SL3512"},   {CPU_X86, "x86"},       {CPU_XSCALE, "xscale"},
};

// Atomic: first calls at the same time all store the same number.
constinit std::atomic<int32_t> cpu_id_cached = CPU_NONE;
static_assert(std::atomic<int32_t>::is_always_lock_free);

const char *text_or(const char *text, const char *otherwise) { return text != nullptr ? text : otherwise; }

// The first line of a file without the white space at its end.
char *read_line(FILE *file, char *buffer, int length) {
  return std::fgets(buffer, length, file) == nullptr ? nullptr : trimr_string(buffer);
}

// The text with its NUL, if the buffer holds both.
char *copy_text(char *buffer, size_t length, const char *text) {
  const size_t size = std::strlen(text) + 1;
  return length < size ? nullptr : static_cast<char *>(std::memcpy(buffer, text, size));
}

int32_t find_cpu() {
  char version[4096];
  if (read_firmware_version(version, sizeof version) == nullptr) return CPU_NONE;
  for (const auto &cpu : cpu_table) {
    if (std::strstr(version, cpu.name) != nullptr) return cpu.id;
  }
  return CPU_NONE;
}

}  // namespace

const char *product_name() { return text_or(prod_spec_get("product.name"), "product"); }

const char *product_manufacturer() { return text_or(prod_spec_get("product.enterprise-name"), "manufacturer"); }

char *read_serial_no(char *buffer, uint32_t length) {
  if (buffer == nullptr || length == 0) return nullptr;
  std::memset(buffer, 0, length);
  const unique_file file{std::fopen("/etc/serial-no", "re")};
  if (!file) return copy_text(buffer, length, default_serial_no);
  char line[64];
  return read_line(file.get(), line, sizeof line) == nullptr ? nullptr : copy_text(buffer, length, line);
}

char *read_firmware_version(char *buffer, int length) {
  if (length < 1) return nullptr;
  const unique_file file{std::fopen("/usr/lib/version", "re")};
  return file ? read_line(file.get(), buffer, length) : nullptr;
}

int cpu_detect(int32_t id) {
  int32_t found = cpu_id_cached.load(std::memory_order_relaxed);
  if (found == CPU_NONE) {
    found = find_cpu();
    // A miss is not stored: another thread may have a hit by now.
    if (found != CPU_NONE) cpu_id_cached.store(found, std::memory_order_relaxed);
  }
  return found == id ? 1 : 0;
}

const char *cpu_vendor() { return "ralink"; }
