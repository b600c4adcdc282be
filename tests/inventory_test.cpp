// The list of interfaces, of this namespace and of crafted dumps.
#include <devfacts/net.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sys/ioctl.h>

#include "support/test.h"

using namespace test;

void each_interface(void (*look)(const ifi_entry &)) {
  for (list_link *link = interfaces.next; link != &interfaces; link = link->next) {
    look(*reinterpret_cast<const ifi_entry *>(link));
  }
}

TEST(inventory, is_a_cache_until_it_is_freed) {
  const auto collect = [] {
    if (emulated) stderr = std::tmpfile();
    ifreq request{{"lo"}, {}};
    request.ifr_flags = IFF_UP;
    EXPECT_EQ(ioctl(socket(AF_INET, SOCK_DGRAM, 0), SIOCSIFFLAGS, &request), 0);
    EXPECT_EQ(ifi_get_all(), &interfaces);
    fail("socket", 1, EMFILE), ifi_get_all_ip();
    const ifi_entry *lo = ifi_find_by_name("lo");
    EXPECT_TRUE(ifi_find_by_index(lo->index) == lo && lo->addrs.next == &lo->addrs);
    for (int i = 0; i < 2; ++i) ifi_free_all();
    EXPECT_EQ(ifi_find_by_name("lo"), nullptr);
    fail("", 0, 0), ifi_get_all_ip();
    EXPECT_NE(ifi_find_by_name("lo")->addrs.next, &ifi_find_by_name("lo")->addrs);
    for (ifi_entry *each : {ifi_find_by_name("lo"), ifi_alloc()}) ifi_free(each);
    ifi_free_all();
    EXPECT_EQ(live_blocks(), 0);
  };
  expect_run("||0", collect);
}

TEST(inventory, parent_names_are_the_first_line_of_their_file) {
  const auto ask = [long_name = std::string(500, 'x')] {
    write_file("/proc/sys/net/a/%parent", "12345678901234567890");
    write_file("/proc/sys/net/b/%parent", " \nra0"), write_file("/proc/sys/net/c/%parent", "");
    char parent[17] = "kept";
    EXPECT_EQ(iw_parent_name("a", parent, 0), -1);
    for (const char *name : {static_cast<const char *>(nullptr), "c", "d", long_name.c_str(), "b", "a"})
      std::printf("%d%s ", iw_parent_name(name, parent, sizeof parent), parent);
  };
  on_device(ask, "-1kept -1kept -1kept -1kept 0 01234567890123456 ||0");
}

void print_interface(const ifi_entry &entry) {
  const char *name = entry.name == nullptr ? "-" : entry.name;
  std::printf("%d %s %d %u %d %u", entry.index, name, entry.type, entry.flags, entry.master, entry.txqlen);
  std::printf(" %s %s", shown(entry.hwaddr, 6).c_str(), shown(entry.broadcast, 6).c_str());
  if (entry.stats != nullptr) std::printf(" %u %u", entry.stats->rx_packets, entry.stats->tx_compressed);
  for (const list_link *link = entry.addrs.next; link != &entry.addrs; link = link->next) {
    const auto *each = reinterpret_cast<const ipi_entry *>(link);
    const std::string address = shown(each->addr, 17), broadcast = shown(each->broadcast, 17);
    std::printf("\n  %d/%d %s %s", each->family, each->prefixlen, address.c_str(), broadcast.c_str());
  }
  std::printf("\n");
}

// Fills the list from these messages in the kernel's place, then looks at it; leaks nothing.
void with_dump(const std::string &links, const std::string &addresses, void (*look)(const ifi_entry &),
               const std::vector<const char *> &reports = {}) {
  const int free_descriptor = dup(STDIN_FILENO);
  close(free_descriptor);
  receive_instead({links + done(), addresses + done()});
  ifi_get_all_ip(), each_interface(look);
  for (const char *filter : reports) ifi_dump_all(filter);
  EXPECT_EQ(ifi_find_by_name(""), nullptr);
  ifi_free_all();
  EXPECT_EQ(live_blocks(), 0);
  EXPECT_EQ(dup(STDIN_FILENO), free_descriptor);
}

TEST(crafted_dump, every_field_and_what_is_missing) {
  const std::string nameless = link(8, ~1U, attribute(IFLA_STATS, counters.substr(0, 4)));
  const std::string bare = link(9, 0, attribute(IFLA_IFNAME, "no-nul") + attribute(IFLA_STATS, ""));
  const std::string addresses = address(8, AF_INET, attribute(IFA_LOCAL, "abcd")) +
                                address(7, AF_INET, attribute(IFA_LOCAL, "abcd") + attribute(IFA_ADDRESS, "efgh")) +
                                address(99, AF_INET, attribute(IFA_ADDRESS, "lost")) +
                                address(7, AF_INET6, attribute(IFA_ADDRESS, "ab") + attribute(IFA_ANYCAST, "yz")) +
                                address(7, AF_INET, attribute(IFA_BROADCAST, "ijkl")) +
                                address(7, AF_PACKET, attribute(IFA_ADDRESS, "abcd"));
  // What a message is too short for is zero.
  const std::string links =
      full_link + nameless + bare + message(RTM_NEWLINK, "") + message(RTM_NEWLINK, std::string(6, 0));
  expect_run(data("dump"), [&] {
    with_dump(links, addresses + message(RTM_NEWADDR, ""), print_interface, {nullptr, "ra<0", "ra", ""});
  });
}

TEST(crafted_dump, owners_are_those_that_a_search_finds) {
  const std::pair<std::vector<int>, std::string> rows[] = {
      {{5, 9, 31}, "xxx"}, {{31, 9, 5}, "xxx"}, {{9, 5, 9}, "xx-"}, {{5, 31, 31}, "xx-"}, {{-9, 6}, "--"}};
  std::string addresses;
  for (const uint32_t index : {9, 31, 5, 4, 9, 65536 + 5}) addresses += address(index, AF_INET, "");
  const auto print_owner = [](const ifi_entry &entry) { std::printf(entry.addrs.next != &entry.addrs ? "x" : "-"); };
  for (const auto &[indices, owners] : rows) {
    for (const int others : {0, 200}) {
      std::string links;
      for (const int index : indices) links += link(index, 0, "");
      for (int i = 0; i < others; ++i) links += link(300 + i, 0, "");
      expect_run(owners + std::string(others, '-') + "||0", [&] { with_dump(links, addresses, print_owner); });
    }
  }
}
