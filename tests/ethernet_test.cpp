#include <devfacts/core.h>
#include <devfacts/ethernet.h>
#include <linux/ethtool.h>
#include <net/if.h>
#include <unistd.h>

#include "support/test.h"

using namespace test;

// A driver that knows its requests, each with the record that it expects behind the number, and what it puts there.
int answer(unsigned long number, void *record) {
  auto &request = *static_cast<ifreq *>(record);
  if (number != 0x8946 || request.ifr_name != std::string("eth0")) return errno = ENODEV, -1;
  ethtool_cmd settings{};
  settings.speed = 0x1234, settings.speed_hi = 0xffff, settings.duplex = 1, settings.supported = 0x89abcdef;
  const struct {
    std::string command, expected, answer;
  } known[] = {{bytes_of(1), std::string(40, '\0'), bytes_of(settings).substr(4)},
               {bytes_of(0xa), bytes_of(0), bytes_of(0xffffff01)},
               {bytes_of(0x20), bytes_of(6) + std::string(8, '\0'), bytes_of(6) + "permanen"}};
  char *bytes = request.ifr_data + 4;
  for (const auto &each : known)
    if (each.command == std::string(bytes - 4, 4) && each.expected == std::string(bytes, each.expected.size()))
      return each.answer.copy(bytes, each.answer.size()), 0;
  return errno = EOPNOTSUPP, -1;
}

TEST(ethernet, a_driver_that_answers) {
  drive(answer);
  eth_status status{};
  for (const bool alone : {true, false}) {
    const int control = ioctl_socket();
    EXPECT_EQ(alone ? eth_perm_addr(status.perm_addr, "eth0") : eth_info(&status, "eth0"), 0);
    EXPECT_EQ(close(control), -1) << "the control socket was left open";
    EXPECT_EQ(shown(status.perm_addr, 6), "perman");
  }
  EXPECT_EQ(listed(status.speed, status.duplex, status.link, status.supported), "4660 1 1 2309737967");
  EXPECT_EQ(eth_capable("eth0") - eth_capable("eth1"), 1);
}

TEST(ethernet, words_of_any_size) {
  std::string seen;
  for (const int size : {7, 5, 4, 3, 1, 0, -1})
    for (const uint8_t value : {0, 1, 2, 255})
      for (const auto word : {eth_duplex2str, eth_link2str}) {
        char room[] = "???????";
        eth_status status{};
        status.link = status.duplex = value;
        EXPECT_EQ(word(&status, room, size), value > 1 || size < 1 ? nullptr : room);
        seen += shown(room, 7) + "\n";
      }
  EXPECT_EQ(seen, data("words"));
}
