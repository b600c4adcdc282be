// The rtnetlink client against crafted and hostile messages.
#include <devfacts/net.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

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
      {"a timeout in the middle", {noop}, {"1:16 end", "", 0}},
      {"several", {noop + noop, message(4, "four"), done()}, {"1:16 1:16 4:20 end", "", 0}},
      {"shorter than a header", {noop.substr(0, 3)}, {"", remains(3), 1}},
      {"bytes after the last", {noop + noop.substr(0, 8)}, {"1:16 ", remains(8), 1}},
      {"no padding", {message(9, "xx").substr(0, 18)}, {"9:18 ", remains(-2), 1}},
      {"claims less than a header", {message(9, "", 15)}, {"", remains(16), 1}},
      {"claims one byte too many", {message(9, "", 17)}, {"", remains(16), 1}},
      {"claims everything", {noop + message(9, "", UINT32_MAX)}, {"1:16 ", remains(16), 1}},
      {"an empty one", {""}, {"", "EOF on netlink, Resource temporarily unavailable\n", 1}},
      {"an error cut short", {error(-1, 19)}, {"", "netlink error message truncated.\n", 1}},
      {"an error", {noop + error(-1, 20)}, {"1:16 ", "netlink error (1), Operation not permitted\n", 1}},
      {"the least", {error(INT32_MIN, 20)}, {"", "netlink error (-2147483648), Unknown error -2147483648\n", 1}},
      {"an acknowledgement", {error(0, 20)}, {"", "netlink communication error ...\n", 1}},
      {"too long", {full + noop, noop, done()}, {"20:" + full_length + " 1:16 end", "truncated message ?\n", 0}},
      {"one message too long", {message(9, full), done()}, {"end", "truncated message ?\n", 0}},
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
      {"claims too much", empty + attribute(2, "", 5), "-1 0 -1 ", "!!!Deficit 4, rta_len=5\n"},
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
