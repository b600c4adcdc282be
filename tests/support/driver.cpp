#include "driver.h"

#include <gtest/gtest.h>
#include <linux/sockios.h>
#include <sys/ioctl.h>

#include <cerrno>
#include <cstring>

#include "faults.h"
#include "process.h"

static test::driver *installed = nullptr;

extern "C" int test_ioctl(int fd, unsigned long number, void *record) {
  if (test::strikes("ioctl")) return -1;
  return installed != nullptr ? installed->answer(number, record) : ioctl(fd, number, record);
}

// A request's union has a buffer's pointer, length and flags, or nothing, and zeros otherwise.
static void expect_clean(const iwreq_data &given) {
  iwreq_data clean;
  std::memset(&clean, 0, sizeof clean);
  if (given.data.length != 0) {
    clean.data.pointer = given.data.pointer;
    clean.data.length = given.data.length;
    clean.data.flags = given.data.flags;
  }
  EXPECT_EQ(test::bytes_of(given), test::bytes_of(clean));
}

test::driver::driver() {
  range.num_bitrates = 3;
  range.num_frequency = 255;
  for (int i = 0; i < 32; ++i) range.bitrate[i] = 1500000 * (i + 1);
  for (int i = 0; i < 255; ++i) range.freq[i] = {2407 + 5 * i, 6, {0xff, 0xff}, 1000 + i, {}};
  installed = this;
}

test::driver::~driver() { installed = nullptr; }

int test::driver::answer(unsigned long number, void *record) {
  auto &request = *static_cast<iwreq *>(record);
  if (number != SIOCETHTOOL) return answer_wireless(number, request);
  return answer_wired(request.ifr_name, *static_cast<ethtool_cmd *>(request.u.data.pointer));
}

int test::driver::answer_wireless(unsigned long number, iwreq &request) {
  iwreq_data &u = request.u;
  auto *buffer = static_cast<char *>(u.data.pointer);
  char line[80];
  std::snprintf(line, sizeof line, "%lx %.16s %u %x\n", number, request.ifr_name, u.data.length, u.data.flags);
  log += line;
  expect_clean(u);
  switch (number) {
    case SIOCGIWNAME: std::memcpy(u.name, "IEEE 802.11TURBO", 16); break;
    case SIOCGIWESSID:
      std::memcpy(buffer, "net&5", 5);
      u.essid.length = essid_length;
      u.essid.flags = 0x1281;
      break;
    case SIOCGIWMODE: u.mode = 6; break;
    case SIOCGIWFREQ: u.freq = frequency; break;
    case SIOCGIWAP: u.ap_addr = {1, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14}}; break;
    case SIOCGIWRATE: u.bitrate = {-54000000, 1, 1, 0xffff}; break;
    case SIOCGIWRANGE:
      bytes_of(range).copy(buffer, u.data.length);
      u.data.length = sizeof range;
      break;
    case SIOCGIWSTATS:
      bytes_of(iw_statistics{0xffff, {1, 0xc3, 0xa1, 0xff}, {}, {}}).copy(buffer, u.data.length);
      break;
    case SIOCGIWENCODE:
      std::memset(buffer, 'k', u.data.length);
      u.encoding.length = 5;
      u.encoding.flags = 0xa802;
      break;
    case SIOCGIWTXPOW: u.txpower = {INT32_MIN, 1, txpower_disabled, 0xffff}; break;
    case SIOCIWFIRSTPRIV + 0xd: std::memset(buffer + 4, *buffer, u.data.length - 4U); break;
    default: return -1;
  }
  return 0;
}

int test::driver::answer_wired(const std::string &name, ethtool_cmd &command) {
  log += listed(command.cmd, command.supported) + name + "\n";
  auto *values = reinterpret_cast<char *>(&command.supported);
  errno = EOPNOTSUPP;
  if (name != "eth0") return -1;
  switch (command.cmd) {
    case ETHTOOL_GSET:
      EXPECT_EQ(shown(values, 40), std::string(40, '.'));
      command.supported = 0x89abcdef;
      command.speed = 0x1234;
      command.speed_hi = 0xffff;
      command.duplex = 1;
      return 0;
    case ETHTOOL_GLINK: command.supported = 0xffffff02; return 0;
    case ETHTOOL_GPERMADDR: std::memcpy(values + 4, "permanen", 8); return 0;
    default: return -1;
  }
}
