// The rtnetlink client against crafted and hostile messages.
#include <devfacts/net.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "support/test.h"

using namespace test;

int print_message(nlmsghdr *message) { return std::printf("%d:%u ", message->nlmsg_type, message->nlmsg_len); }

// A handle whose kernel is the other end of a socket pair; its wait is bounded.
nl_handle handle_on(int (&ends)[2]) {
  EXPECT_EQ(socketpair(AF_UNIX, SOCK_DGRAM, 0, ends), 0);
  const timeval wait{0, 20000};
  setsockopt(ends[0], SOL_SOCKET, SO_RCVTIMEO, &wait, sizeof wait);
  nl_handle handle{};
  handle.fd = ends[0];
  return handle;
}

std::string receive(const std::vector<std::string> &datagrams, nl_callback callback) {
  return run([&] {
    int ends[2];
    nl_handle handle = handle_on(ends);
    for (const std::string &each : datagrams) send(ends[1], each.data(), each.size(), 0);
    errno = 0;
    nl_recv(&handle, callback);
    std::printf("end");
  });
}

std::string remains(int bytes) {
  return "|netlink packet remains " + std::to_string(bytes) + " bytes, not parsed.\n|1";
}

TEST(netlink, what_it_makes_of_datagrams) {
  const std::string noop = message(NLMSG_NOOP, ""), rest_of_error(16, '\0');
  const std::string refusal = message(NLMSG_ERROR, bytes_of(-EPERM) + rest_of_error);
  const std::string least_error = "|netlink error (-2147483648), Unknown error -2147483648\n|1";
  const std::string full = message(20, std::string(static_cast<size_t>(getpagesize()) * 4 - 16, 'x'));
  const std::string full_seen = "20:" + std::to_string(full.size()) + " ";
  const struct {
    const char *name;
    std::vector<std::string> datagrams;
    std::string outcome;
  } rows[] = {
      {"nothing before the time is over", {}, "end||0"},
      {"a time-out in the middle", {noop}, "1:16 end||0"},
      {"several datagrams", {noop + noop, message(4, "abcd"), done()}, "1:16 1:16 4:20 end||0"},
      {"done in front of others", {done() + noop, noop}, "end||0"},
      {"shorter than a header", {"abc"}, remains(3)},
      {"bytes behind the last", {noop + "12345678"}, "1:16 " + remains(8)},
      {"no room for the padding", {message(9, "xy").substr(0, 18)}, "9:18 " + remains(-2)},
      {"claims less than a header", {message(9, "", 15)}, remains(16)},
      {"claims nothing", {message(9, "", 0)}, remains(16)},
      {"claims one byte too many", {message(9, "", 17)}, remains(16)},
      {"claims everything", {noop + message(9, "", UINT32_MAX)}, "1:16 " + remains(16)},
      {"an empty one", {""}, "|EOF on netlink, Success\n|1"},
      {"an error cut short", {message(NLMSG_ERROR, "abc" + rest_of_error)}, "|netlink error message truncated.\n|1"},
      {"the least error", {message(NLMSG_ERROR, bytes_of(INT32_MIN) + rest_of_error)}, least_error},
      {"an error", {noop + refusal}, "1:16 |netlink error (1), Operation not permitted\n|1"},
      {"an acknowledgement",
       {message(NLMSG_ERROR, bytes_of(0) + rest_of_error)},
       "|netlink communication error ...\n|1"},
      {"a datagram too long", {full + noop, noop, done()}, full_seen + "1:16 end|truncated message ?\n|0"},
      {"a message too long", {message(9, full), done()}, "end|truncated message ?\n|0"},
  };
  for (const auto &row : rows) EXPECT_EQ(receive(row.datagrams, print_message), row.outcome) << row.name;
}

// The kernel hands the length of the sender's address back, which the next receive must not take for its room.
TEST(netlink, a_sender_with_a_long_address_writes_nothing_behind_its_room) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the sanitizer takes the sender's length for what was written";
#endif
  if (emulated) GTEST_SKIP() << "the emulator writes all of the address behind the room for it";
  expect_run("1:16 1:16 1:16 |recvmsg() failed|1", [] {
    int ends[2];
    nl_handle handle = handle_on(ends);
    sockaddr_un name{AF_UNIX, {}};
    std::fill_n(name.sun_path + 1, 100, 'x');
    bind(ends[1], reinterpret_cast<sockaddr *>(&name), sizeof name);
    for (int i = 0; i < 3; ++i) send(ends[1], message(1, "").data(), 16, 0);
    fail("recvmsg", 4, EIO);
    nl_recv(&handle, print_message);
  });
}

TEST(netlink, a_callback_that_changes_the_length_cannot_lead_the_walk_astray) {
  static uint32_t claimed;
  for (const uint32_t length : {0U, 0xfffffff0U, 0xffffffffU, 0x80000000U}) {
    claimed = length;
    const auto change_length = [](nlmsghdr *message) { return std::printf("!"), message->nlmsg_len = claimed, 0; };
    EXPECT_EQ(receive({message(1, "") + message(1, "")}, change_length).substr(0, 9), "!|netlink") << length;
  }
}

TEST(netlink, requests_have_twenty_bytes_and_the_next_sequence_number) {
  int ends[2];
  nl_handle handle = handle_on(ends);
  handle.seq = UINT32_MAX - 1;
  for (const uint32_t sequence : {UINT32_MAX, 0U}) {
    fail("send", 1, EINTR);
    EXPECT_EQ(nl_dump(&handle, RTM_GETADDR), 20);
    char received[32];
    ASSERT_EQ(recv(ends[1], received, sizeof received, 0), 20);
    const nlmsghdr header{20, RTM_GETADDR, 0x301, sequence, static_cast<uint32_t>(getpid())};
    EXPECT_EQ(std::string(received, 20), bytes_of(header) + std::string(4, '\0'));
    EXPECT_EQ(handle.dump, sequence);
  }
  send(ends[1], done().data(), done().size(), 0);
  fail("recvmsg", 1, EINTR);
  nl_recv(&handle, print_message);
  EXPECT_EQ(calls_seen(), 2);
}

TEST(netlink, opening_fills_the_handle) {
  nl_handle handle;
  memset(&handle, 0xff, sizeof handle);
  const auto before = static_cast<uint32_t>(time(nullptr));
  nl_open(&handle, NETLINK_ROUTE, RTMGRP_LINK);
  EXPECT_EQ(handle.local.nl_groups, static_cast<uint32_t>(RTMGRP_LINK));
  EXPECT_NE(handle.local.nl_pid, 0U);
  EXPECT_EQ(bytes_of(handle.peer), std::string(12, '\0'));
  EXPECT_LE(handle.seq - before, 1U);
  EXPECT_EQ(handle.dump, 0U);
  nl_close(&handle);
  EXPECT_EQ(handle.fd, -1);
}

TEST(netlink, each_failing_call_has_its_words) {
  const struct {
    const char *call;
    int nth, error;
    const char *words;
  } rows[] = {
      {"socket", 1, EMFILE, "Failed to create netlink socket: Too many open files\n"},
      {"setsockopt", 1, EPERM, "can't change SO_SNDBUF, Operation not permitted\n"},
      {"setsockopt", 2, EPERM, "can't change SO_RCVBUF, Operation not permitted\n"},
      {"bind", 1, EADDRINUSE, "Failed to bind netlink socket: Address already in use\n"},
      {"getsockname", 1, ENOBUFS, "can't getsockname(), No buffer space available\n"},
      {"getsockname", 1, 0, "whatever ...\n"},
      {"send", 1, ENOBUFS, "cannot send netlink request, No buffer space available\n"},
      {"recvmsg", 1, EBADF, "recvmsg() failed"},
  };
  for (const auto &[call, nth, error, words] : rows) {
    EXPECT_EQ(run([&] { fail(call, nth, error), ifi_get_all(); }), std::string("|") + words + "|1");
  }
}

// Where in the block the attributes of types 0 to 2 are found, -1 for nowhere.
std::string walked(const std::string &bytes, int length) {
  return run([&] {
    const std::vector<char> block(bytes.begin(), bytes.end());  // the sanitizer watches its end
    auto *first = reinterpret_cast<rtattr *>(const_cast<char *>(block.data()));
    rtattr *table[3] = {first, first, first};
    EXPECT_EQ(nl_parse_rtattr(table, 2, first, length), 0);
    for (const rtattr *found : table) {
      std::printf("%d ", found == nullptr ? -1 : int(reinterpret_cast<const char *>(found) - block.data()));
    }
  });
}

TEST(attributes, the_walk_stays_inside_the_block) {
  const std::string one = attribute(1, "abcd"), empty = attribute(2, "");
  const struct {
    const char *name;
    std::string block;
    int length;
    const char *end;
  } rows[] = {
      {"empty", "", 0, "-1 -1 -1 ||0"},
      {"negative", "", -16, "-1 -1 -1 |!!!Deficit -16, rta_len=0\n|0"},
      {"in order", empty + one, 12, "-1 4 0 ||0"},
      {"the last of a type counts", one + one, 16, "-1 8 -1 ||0"},
      {"types above the table", attribute(3, "") + attribute(0x8001, "") + one, 16, "-1 8 -1 ||0"},
      {"bytes left over", one + "\x07\x07\x07", 11, "-1 0 -1 |!!!Deficit 3, rta_len=1799\n|0"},
      {"one byte left over", one + "x", 9, "-1 0 -1 |!!!Deficit 1, rta_len=0\n|0"},
      {"claims less than a header", one + attribute(2, "", 3), 12, "-1 0 -1 |!!!Deficit 4, rta_len=3\n|0"},
      {"claims too much", one + attribute(2, "", 5), 12, "-1 0 -1 |!!!Deficit 4, rta_len=5\n|0"},
      {"no room for the padding", attribute(2, "x").substr(0, 5), 5, "-1 -1 0 |!!!Deficit -3, rta_len=0\n|0"},
  };
  for (const auto &row : rows) EXPECT_EQ(walked(row.block, row.length), row.end) << row.name;
}

TEST(attributes, payloads_are_copied_within_their_length) {
  const std::string bytes = attribute(1, "ab");
  const std::vector<char> block(bytes.begin(), bytes.begin() + 6);
  const auto *attribute = reinterpret_cast<const rtattr *>(block.data());
  EXPECT_EQ(nla_data(attribute), block.data() + 4);
  char room[3] = "??", *copy = static_cast<char *>(nla_memdup(attribute)), *text = nla_strdup(attribute);
  EXPECT_EQ(nla_memcpy(room, attribute, 2), room);
  for (const char *each : {copy, text, room}) EXPECT_STREQ(each, "ab");
  free(copy), free(text);
  EXPECT_EQ(nla_get_u32(attribute), big_endian ? 0x61620000U : 0x6261U);
  for (const int claimed : {4, 3, 0}) {
    const std::string empty = test::attribute(1, "", claimed);
    EXPECT_EQ(nla_memdup(reinterpret_cast<const rtattr *>(empty.data())), nullptr) << claimed;
    EXPECT_EQ(nla_length(reinterpret_cast<const rtattr *>(empty.data())), claimed - 4);
  }
}
