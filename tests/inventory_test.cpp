// The list of interfaces that crafted messages make.
#include <devfacts/net.h>
#include <unistd.h>

#include "support/faults.h"
#include "support/messages.h"
#include "support/process.h"

using namespace test;

static void print_interface(const ifi_entry &entry) {
  std::printf("%d %s %d %u", entry.index, text_or_none(entry.name).c_str(), entry.type, entry.flags);
  char hwaddr[18];
  std::printf(" %d %u %s", entry.master, entry.txqlen, ifi_mac_ntop(hwaddr, sizeof hwaddr, entry.hwaddr));
  std::printf(" %s\n", shown(entry.broadcast, 6).c_str());
  if (entry.stats != nullptr) std::printf("  %u %u\n", entry.stats->rx_packets, entry.stats->tx_compressed);
  for (const list_link *link = entry.addrs.next; link != &entry.addrs; link = link->next) {
    const auto *each = reinterpret_cast<const ipi_entry *>(link);
    std::printf("  %d/%d %s", each->family, each->prefixlen, shown(each->addr, 17).c_str());
    std::printf(" %s\n", shown(each->broadcast, 17).c_str());
  }
}

// Fills the list from these messages in the kernel's place and looks at each interface; leaks nothing.
static void with_dump(const std::string &links, const std::string &addresses, void (*look)(const ifi_entry &),
                      const std::vector<const char *> &reports = {}) {
  const int free_descriptor = dup(STDIN_FILENO);
  close(free_descriptor);
  receive_instead({links + done(), addresses + done()});
  ifi_get_all_ip();
  for (list_link *link = interfaces.next; link != &interfaces; link = link->next) {
    look(*reinterpret_cast<const ifi_entry *>(link));
  }
  EXPECT_EQ(ifi_find_by_name(""), nullptr);
  for (const char *filter : reports) ifi_dump_all(filter);
  ifi_free_all();
  EXPECT_EQ(live_blocks(), 0);
  EXPECT_EQ(dup(STDIN_FILENO), free_descriptor);
}

// What a message is too short for is zero.
TEST(crafted_dump, every_field_and_what_is_missing) {
  const std::string links = full_link() + link(8, ~1U, attribute(IFLA_STATS, counters().substr(0, 4))) +
                            link(9, 0, attribute(IFLA_IFNAME, "no-nul") + attribute(IFLA_STATS, "")) +
                            message(RTM_NEWLINK, "") + message(RTM_NEWLINK, std::string(6, 0));
  const std::string addresses = address(8, AF_INET, attribute(IFA_LOCAL, "abcd")) +
                                address(7, AF_INET, attribute(IFA_LOCAL, "abcd") + attribute(IFA_ADDRESS, "efgh")) +
                                address(99, AF_INET, attribute(IFA_ADDRESS, "lost")) +
                                address(7, AF_INET6, attribute(IFA_ADDRESS, "ab") + attribute(IFA_ANYCAST, "yz")) +
                                address(7, AF_INET, attribute(IFA_BROADCAST, "ijkl")) +
                                address(7, AF_PACKET, attribute(IFA_ADDRESS, "abcd")) + message(RTM_NEWADDR, "");
  const ending end = run([&] { with_dump(links, addresses, print_interface, {"no-nul", "no", ""}); });
  EXPECT_EQ(end.out, read_file("dump"));
  EXPECT_EQ(end.err, "!!!Deficit -16, rta_len=0\n!!!Deficit -10, rta_len=0\n!!!Deficit -8, rta_len=0\n");
  EXPECT_EQ(end.status, 0);
}

TEST(crafted_dump, owners_are_those_that_a_search_finds) {
  const struct {
    std::vector<int> indices;
    const char *owners;
  } cases[] = {{{5, 9, 31}, "xxx"}, {{31, 9, 5}, "xxx"}, {{9, 5, 9}, "xx-"}, {{5, 31, 31}, "xx-"}, {{-9, 6}, "--"}};
  std::string addresses;
  for (const uint32_t index : {9, 31, 5, 4, 9, 65536 + 5}) addresses += address(index, AF_INET, "");
  const auto print_owner = [](const ifi_entry &entry) { std::printf(entry.addrs.next != &entry.addrs ? "x" : "-"); };
  for (const auto &each : cases) {
    for (const int others : {0, 200}) {
      std::string links;
      for (const int index : each.indices) links += link(index, 0, "");
      for (int i = 0; i < others; ++i) links += link(300 + i, 0, "");
      const ending end = run([&] { with_dump(links, addresses, print_owner); });
      EXPECT_EQ(end, (ending{each.owners + std::string(static_cast<size_t>(others), '-'), "", 0}));
    }
  }
}
