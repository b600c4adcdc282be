// The rtnetlink client and the list of interfaces, with crafted and hostile messages.
#include <devfacts/net.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "support/faults.h"
#include "support/messages.h"
#include "support/process.h"

using namespace test;

static int print_message(nlmsghdr *message) { return std::printf("%d:%u ", message->nlmsg_type, message->nlmsg_len); }

// A handle whose kernel is the other end of a socket pair; its wait is bounded.
static nl_handle handle_on(int (&ends)[2]) {
  EXPECT_EQ(socketpair(AF_UNIX, SOCK_DGRAM, 0, ends), 0);
#ifndef __SANITIZE_ADDRESS__  // which takes the length of the sender's long address for what was written
  const sockaddr_un sender{AF_UNIX, {}};
  EXPECT_TRUE(is_emulated || bind(ends[1], reinterpret_cast<const sockaddr *>(&sender), sizeof sender) == 0);
#endif
  const timeval wait{0, 20000};
  setsockopt(ends[0], SOL_SOCKET, SO_RCVTIMEO, &wait, sizeof wait);
  nl_handle handle{};
  handle.fd = ends[0];
  return handle;
}

static ending receive(const std::vector<std::string> &datagrams, nl_callback callback) {
  return run([&] {
    int ends[2];
    nl_handle handle = handle_on(ends);
    for (const std::string &each : datagrams) send(ends[1], each.data(), each.size(), 0);
    errno = EAGAIN;  // of an earlier call
    nl_recv(&handle, callback);
    std::printf("end");
  });
}

TEST(netlink, what_it_makes_of_datagrams) {
  const std::string noop = message(NLMSG_NOOP, "");
  const std::string full = message(20, std::string(static_cast<size_t>(getpagesize()) * 4 - 16, 'x'));
  const std::string full_length = std::to_string(full.size());
  const auto error = [](int32_t number, size_t size) {
    return message(NLMSG_ERROR, (bytes_of(number) + std::string(16, '\0')).substr(0, size),
                   static_cast<int>(16 + size));
  };
  const auto remains = [](int count) {
    return "netlink packet remains " + std::to_string(count) + " bytes, not parsed.\n";
  };
  const struct {
    const char *name;
    std::vector<std::string> datagrams;
    ending end;
  } cases[] = {
      {"nothing before the timeout", {}, {"end", "", 0}},
      {"several", {noop + noop, message(4, "four"), done()}, {"1:16 1:16 4:20 end", "", 0}},
      {"shorter than a header", {noop.substr(0, 3)}, {"", remains(3), 1}},
      {"bytes after the last", {noop + noop.substr(0, 8)}, {"1:16 ", remains(8), 1}},
      {"no padding", {message(9, "xx").substr(0, 18)}, {"9:18 ", remains(-2), 1}},
      {"claims one byte too many", {message(9, "", 17)}, {"", remains(16), 1}},
      {"claims everything", {noop + message(9, "", UINT32_MAX)}, {"1:16 ", remains(16), 1}},
      {"an empty one", {""}, {"", "EOF on netlink, Resource temporarily unavailable\n", 1}},
      {"an error cut short", {error(-1, 19)}, {"", "netlink error message truncated.\n", 1}},
      {"an error", {noop + error(-1, 20)}, {"1:16 ", "netlink error (1), Operation not permitted\n", 1}},
      {"the least", {error(INT32_MIN, 20)}, {"", "netlink error (-2147483648), Unknown error -2147483648\n", 1}},
      {"an acknowledgement", {error(0, 20)}, {"", "netlink communication error ...\n", 1}},
      {"too long", {full + noop, noop, done()}, {"20:" + full_length + " 1:16 end", "truncated message ?\n", 0}},
  };
  for (const auto &each : cases) EXPECT_EQ(receive(each.datagrams, print_message), each.end) << each.name;
}

TEST(netlink, requests_have_twenty_bytes_and_the_next_sequence_number) {
  int ends[2];
  nl_handle handle = handle_on(ends);
  handle.seq = UINT32_MAX - 1;
  for (const uint32_t sequence : {UINT32_MAX, 0U}) {
    EXPECT_EQ(nl_dump(&handle, RTM_GETADDR), 20);
    char received[32];
    ASSERT_EQ(recv(ends[1], received, sizeof received, 0), 20);
    const nlmsghdr header{20, RTM_GETADDR, NLM_F_REQUEST | NLM_F_DUMP, sequence, static_cast<uint32_t>(getpid())};
    EXPECT_EQ(std::string(received, 20), bytes_of(header) + std::string(4, '\0'));
    EXPECT_EQ(handle.dump, sequence);
  }
}

TEST(attributes, the_walk_stays_inside_the_block) {
  const std::string empty = attribute(1, "");
  const struct {
    const char *name;
    std::string block;
    const char *offsets;  // of the attributes of types 0 to 2, or -1
    const char *warning;
  } cases[] = {
      {"in order", attribute(2, "") + attribute(1, "four"), "-1 4 0 ", ""},
      {"the last of a type counts", attribute(1, "four") + attribute(1, "four"), "-1 8 -1 ", ""},
      {"types beyond the table", attribute(3, "") + attribute(0x8001, "") + empty, "-1 8 -1 ", ""},
      {"bytes after the last", empty + bytes_of(rtattr{1799, 7}).substr(0, 3), "-1 0 -1 ",
       "!!!Deficit 3, rta_len=1799\n"},
      {"claims less than a header", empty + attribute(2, "", 3), "-1 0 -1 ", "!!!Deficit 4, rta_len=3\n"},
      {"no padding", attribute(2, "x").substr(0, 5), "-1 -1 0 ", "!!!Deficit -3, rta_len=0\n"},
  };
  for (const auto &each : cases) {
    const ending end = run([&] {
      std::vector<char> block(each.block.begin(), each.block.end());  // the sanitizer watches its end
      auto *first = reinterpret_cast<rtattr *>(block.data());
      rtattr *table[3] = {first, first, first};
      EXPECT_EQ(nl_parse_rtattr(table, 2, first, static_cast<int>(block.size())), 0);
      for (const rtattr *found : table) {
        std::printf("%d ",
                    found == nullptr ? -1 : static_cast<int>(reinterpret_cast<const char *>(found) - block.data()));
      }
    });
    EXPECT_EQ(end, (ending{each.offsets, each.warning, 0})) << each.name;
  }
}

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
