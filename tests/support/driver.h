// A driver in the kernel's place, wireless under all names and wired as eth0.
#pragma once

#include <devfacts/wireless.h>
#include <linux/ethtool.h>
#include <linux/wireless.h>

#include <cstring>

#include "test.h"

namespace test {

// What it answers, which a case may change, and what it was asked: request, name, length and flags of the room; for a
// wired link the command, the word behind it and the name's first.
struct driver {
  std::string log;
  uint16_t essid_length = 5;
  uint8_t disabled = 0;
  iw_freq frequency{241200000, 1, 7, 0xff};
  iw_range_record range{};

  driver() {
    range.num_bitrates = 3, range.num_frequency = 255;
    for (int i = 0; i < 32; ++i) range.bitrate[i] = 1500000 * (i + 1);
    for (int i = 0; i < 255; ++i) range.freq[i] = {2407 + 5 * i, 6, {0xff, 0xff}, 1000 + i, {}};
    drive([this](unsigned long number, void *record) { return answer(number, *static_cast<iwreq *>(record)); });
  }

  int answer(unsigned long number, iwreq &request) {
    auto &u = request.u;
    auto *room = static_cast<char *>(u.data.pointer);
    if (number == 0x8946) return answer_wired(request.ifr_name, *reinterpret_cast<ethtool_cmd *>(room));
    char line[80];
    std::snprintf(line, sizeof line, "%lx %.16s %u %x\n", number, request.ifr_name, u.data.length, u.data.flags);
    log += line;
    EXPECT_TRUE(u.data.length != 0 || shown(&u, sizeof u) == std::string(sizeof u, '.'));
    switch (number) {
      case 0x8B01: std::memcpy(u.name, "IEEE 802.11TURBO", 16); break;
      case 0x8B1B: std::memcpy(room, "net&5", 5), u.essid.length = essid_length, u.essid.flags = 0x1281; break;
      case 0x8B07: u.mode = 6; break;
      case 0x8B05: u.freq = frequency; break;
      case 0x8B15: u.ap_addr = {1, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14}}; break;
      case 0x8B21: u.bitrate = {-54000000, 1, 1, 0xffff}; break;
      case 0x8B0B: bytes_of(range).copy(room, u.data.length), u.data.length = sizeof range; break;
      case 0x8B0F: bytes_of(iw_statistics{0xffff, {1, 0xc3, 0xa1, 0xff}, {}, {}}).copy(room, u.data.length); break;
      case 0x8B2B: std::memset(room, 'k', u.data.length), u.data.length = 5, u.data.flags = 0xa802; break;
      case 0x8B27: u.txpower = {INT32_MIN, 1, disabled, 0xffff}; break;
      case 0x8BED: std::memset(room + 4, *room, u.data.length - 4); break;
      default: return errno = EOPNOTSUPP, -1;
    }
    return 0;
  }

  // Puts something behind each record, too, where that has room for it.
  int answer_wired(const std::string &name, ethtool_cmd &record) {
    log += listed(record.cmd, record.supported) + " " + name + "\n";
    if (name != "eth0") return errno = ENODEV, -1;
    auto *values = reinterpret_cast<char *>(&record.supported);
    switch (record.cmd) {
      case ETHTOOL_GSET:
        EXPECT_EQ(shown(values, 40), std::string(40, '.'));
        record.supported = 0x89abcdef, record.speed = 0x1234, record.speed_hi = 0xffff, record.duplex = 1;
        break;
      case ETHTOOL_GLINK: record.supported = 0xffffff02; break;
      case ETHTOOL_GPERMADDR: std::memcpy(values + 4, "permanen", 8); break;
      default: return errno = EOPNOTSUPP, -1;
    }
    return 0;
  }
};

}  // namespace test
