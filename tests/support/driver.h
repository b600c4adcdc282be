// A driver in the kernel's place: wireless under every name, and wired as eth0.
#pragma once

#include <devfacts/wireless.h>
#include <linux/ethtool.h>
#include <linux/wireless.h>

#include <cstdint>
#include <string>

namespace test {

// As long as it lives, the library's ioctl comes to it. A case may change its answers.
class driver {
 public:
  driver();
  ~driver();

  int answer(unsigned long number, void *record);

  // Each request: its number, the interface's name, and the length and flags that were given for the buffer; for a
  // wired link the command and the first two words after it.
  std::string log;

  uint16_t essid_length = 5;
  uint8_t txpower_disabled = 0;
  iw_freq frequency{241200000, 1, 7, 0xff};
  iw_range_record range{};

 private:
  int answer_wireless(unsigned long number, iwreq &request);
  int answer_wired(const std::string &name, ethtool_cmd &command);
};

}  // namespace test
