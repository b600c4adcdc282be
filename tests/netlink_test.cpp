// The rtnetlink client against crafted and hostile messages.
#include <devfacts/net.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "support/faults.h"
#include "support/netlink_bytes.h"
#include "support/process.h"

namespace {

using namespace test;

int print_message(nlmsghdr *message) {
  std::printf("%d:%u ", message->nlmsg_type, message->nlmsg_len);
  return -1;
}

// A handle whose kernel is the other end of a socket pair.
nl_handle handle_on(int (&ends)[2]) {
  EXPECT_EQ(socketpair(AF_UNIX, SOCK_DGRAM, 0, ends), 0);
  nl_handle handle{};
  handle.fd = ends[0];
  return handle;
}

outcome receive(const std::vector<std::string> &datagrams, nl_callback callback) {
  return in_child([&] {
    int ends[2];
    nl_handle handle = handle_on(ends);
    for (const std::string &each : datagrams) send(ends[1], each.data(), each.size(), 0);
    const timeval wait{0, 20000};
    setsockopt(handle.fd, SOL_SOCKET, SO_RCVTIMEO, &wait, sizeof wait);
    errno = 0;
    nl_recv(&handle, callback);
    std::printf("end");
  });
}

std::string error_message(int error) {
  nlmsgerr record{};
  record.error = error;
  return message(NLMSG_ERROR, bytes_of(record));
}

TEST(nl_recv, what_it_makes_of_datagrams) {
  const std::string noop = message(NLMSG_NOOP, "");
  const std::string full = message(20, std::string(static_cast<size_t>(getpagesize()) * 4 - 16, 'x'));
  const std::string full_seen = "20:" + std::to_string(full.size()) + " ";
  const struct {
    const char *name;
    std::vector<std::string> datagrams;
    int status;
    std::string out;
    const char *err;
  } rows[] = {
      {"nothing before the time is over", {}, 0, "end", ""},
      {"a time-out in the middle", {noop}, 0, "1:16 end", ""},
      {"several datagrams", {noop + noop, message(4, "abcd"), done()}, 0, "1:16 1:16 4:20 end", ""},
      {"done in front of others", {done() + noop, noop}, 0, "end", ""},
      {"shorter than a header", {"abc"}, 1, "", "netlink packet remains 3 bytes, not parsed.\n"},
      {"bytes behind the last", {noop + "12345678"}, 1, "1:16 ", "netlink packet remains 8 bytes, not parsed.\n"},
      {"no room for the padding",
       {message(9, "xy").substr(0, 18)},
       1,
       "9:18 ",
       "netlink packet remains -2 bytes, not parsed.\n"},
      {"claims less than a header", {message(9, "", 15)}, 1, "", "netlink packet remains 16 bytes, not parsed.\n"},
      {"claims nothing", {message(9, "", 0)}, 1, "", "netlink packet remains 16 bytes, not parsed.\n"},
      {"claims one byte too many", {message(9, "", 17)}, 1, "", "netlink packet remains 16 bytes, not parsed.\n"},
      {"claims everything",
       {noop + message(9, "", UINT32_MAX)},
       1,
       "1:16 ",
       "netlink packet remains 16 bytes, not parsed.\n"},
      {"an empty one", {""}, 1, "", "EOF on netlink, Success\n"},
      {"an error cut short",
       {message(NLMSG_ERROR, std::string(19, '\0'))},
       1,
       "",
       "netlink error message truncated.\n"},
      {"an error", {noop + error_message(-EPERM)}, 1, "1:16 ", "netlink error (1), Operation not permitted\n"},
      {"an acknowledgement", {error_message(0)}, 1, "", "netlink communication error ...\n"},
      {"a datagram too long", {full + noop, noop, done()}, 0, full_seen + "1:16 end", "truncated message ?\n"},
      {"a message too long", {message(9, std::string(full.size(), 'x')), done()}, 0, "end", "truncated message ?\n"},
  };
  for (const auto &row : rows) {
    const outcome result = receive(row.datagrams, print_message);
    EXPECT_EQ(result.status, row.status) << row.name;
    EXPECT_EQ(result.out, row.out) << row.name;
    EXPECT_EQ(result.err, row.err) << row.name;
  }
}

TEST(nl_recv, a_callback_that_changes_the_length_cannot_lead_it_astray) {
  for (const uint32_t length : {0U, 0xfffffff0U, 0xffffffffU, 0x80000000U}) {
    static uint32_t claimed;
    claimed = length;
    const auto result = receive({message(1, "") + message(1, "")}, [](nlmsghdr *message) {
      std::printf("called ");
      message->nlmsg_len = claimed;
      return 0;
    });
    EXPECT_EQ(result.status, 1) << length;
    EXPECT_EQ(result.out, "called ") << length;
  }
}

TEST(nl_recv, interruptions_are_retried_and_other_failures_end_the_process) {
  expect_clean([] {
    int ends[2];
    nl_handle handle = handle_on(ends);
    send(ends[1], done().data(), done().size(), 0);
    fail("recvmsg", 1, EINTR);
    nl_recv(&handle, print_message);
    EXPECT_EQ(calls_seen(), 2);
  });
  expect_death(
      [] {
        nl_handle handle{};
        handle.fd = -1;
        nl_recv(&handle, print_message);
      },
      "recvmsg() failed");
}

TEST(nl_dump, sends_twenty_bytes_with_the_next_sequence_number) {
  int ends[2];
  nl_handle handle = handle_on(ends);
  handle.seq = UINT32_MAX - 1;
  for (const uint32_t sequence : {UINT32_MAX, 0U}) {
    fail("send", 1, EINTR);
    EXPECT_EQ(nl_dump(&handle, RTM_GETADDR), 20);
    struct {
      nlmsghdr header{20, RTM_GETADDR, 0x301, 0, static_cast<uint32_t>(getpid())};
      uint32_t family = 0;
    } expected;
    expected.header.nlmsg_seq = sequence;
    char received[32];
    ASSERT_EQ(recv(ends[1], received, sizeof received, 0), 20);
    EXPECT_EQ(std::string(received, 20), bytes_of(expected));
    EXPECT_EQ(handle.dump, sequence);
  }
  expect_death([&] { fail("send", 1, ENOBUFS), nl_send(&handle, "x", 1); },
               "cannot send netlink request, No buffer space available\n");
}

TEST(nl_open, fills_the_handle_and_dies_of_each_failing_call) {
  nl_handle handle;
  memset(&handle, 0xff, sizeof handle);
  const auto before = static_cast<uint32_t>(time(nullptr));
  nl_open(&handle, NETLINK_ROUTE, RTMGRP_LINK);
  EXPECT_EQ(handle.local.nl_family, AF_NETLINK);
  EXPECT_EQ(handle.local.nl_groups, static_cast<uint32_t>(RTMGRP_LINK));
  EXPECT_NE(handle.local.nl_pid, 0U);
  EXPECT_EQ(bytes_of(handle.peer), std::string(12, '\0'));
  EXPECT_LE(handle.seq - before, 1U);
  EXPECT_EQ(handle.dump, 0U);
  nl_close(&handle);
  EXPECT_EQ(handle.fd, -1);

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
  };
  for (const auto &row : rows) {
    expect_death([&] { fail(row.call, row.nth, row.error), nl_open(&handle, 0, 0); }, row.words);
  }
}

TEST(attributes, the_walk_stays_inside_the_block) {
  const std::string one = attribute(1, "abcd");
  const struct {
    const char *name;
    std::string block;
    int length;
    int slots[3];  // where in the block, -1: nowhere
    const char *err;
  } rows[] = {
      {"empty", "", 0, {-1, -1, -1}, ""},
      {"negative", "", -16, {-1, -1, -1}, "!!!Deficit -16, rta_len=0\n"},
      {"in order", attribute(2, "") + one, 12, {-1, 4, 0}, ""},
      {"the last of a type counts", one + one, 16, {-1, 8, -1}, ""},
      {"types above the table", attribute(3, "") + attribute(0x8001, "") + one, 16, {-1, 8, -1}, ""},
      {"bytes left over", one + std::string("\x07\x07\x07", 3), 11, {-1, 0, -1}, "!!!Deficit 3, rta_len=1799\n"},
      {"one byte left over", one + "x", 9, {-1, 0, -1}, "!!!Deficit 1, rta_len=0\n"},
      {"claims less than a header", one + attribute(2, "", 3), 12, {-1, 0, -1}, "!!!Deficit 4, rta_len=3\n"},
      {"claims too much", one + attribute(2, "", 5), 12, {-1, 0, -1}, "!!!Deficit 4, rta_len=5\n"},
      {"no room for the padding", attribute(2, "x").substr(0, 5), 5, {-1, -1, 0}, "!!!Deficit -3, rta_len=0\n"},
  };
  for (const auto &row : rows) {
    const outcome result = in_child([&] {
      const std::unique_ptr<char[]> block{
          new char[row.block.size()]};  // exactly as long: the sanitizer watches its end
      memcpy(block.get(), row.block.data(), row.block.size());
      auto *first = reinterpret_cast<rtattr *>(block.get());
      rtattr *table[3] = {first, first, first};
      EXPECT_EQ(nl_parse_rtattr(table, 2, first, row.length), 0);
      for (int slot = 0; slot < 3; ++slot) {
        const auto *at = reinterpret_cast<const char *>(table[slot]);
        EXPECT_EQ(at, row.slots[slot] < 0 ? nullptr : block.get() + row.slots[slot]) << slot;
      }
    });
    EXPECT_EQ(result.status, 0) << row.name << result.out;
    EXPECT_EQ(result.err, row.err) << row.name;
  }
}

TEST(attributes, payloads_are_copied_within_their_length) {
  const std::string bytes = attribute(1, "ab");
  const std::unique_ptr<char[]> block{new char[6]};
  memcpy(block.get(), bytes.data(), 6);
  auto *short_one = reinterpret_cast<rtattr *>(block.get());
  EXPECT_EQ(nla_data(short_one), block.get() + 4);
  EXPECT_EQ(nla_length(short_one), 2);
  const std::unique_ptr<void, decltype(&free)> copy{nla_memdup(short_one), free};
  const std::unique_ptr<char, decltype(&free)> text{nla_strdup(short_one), free};
  EXPECT_STREQ(static_cast<char *>(copy.get()), "ab");
  EXPECT_STREQ(text.get(), "ab");
  EXPECT_EQ(nla_get_u32(short_one), emulated ? 0x61620000U : 0x6261U);
  char room[2];
  EXPECT_EQ(nla_memcpy(room, short_one, 2), room);
  EXPECT_EQ(std::string(room, 2), "ab");

  for (const int claimed : {4, 3, 0}) {
    const std::string empty = attribute(1, "", claimed);
    const auto *attribute = reinterpret_cast<const rtattr *>(empty.data());
    EXPECT_EQ(nla_length(attribute), claimed - 4);
    EXPECT_EQ(nla_memdup(attribute), nullptr);
  }
  fail("allocation", 1, ENOMEM);
  EXPECT_EQ(nla_memdup(short_one), nullptr);
  fail("allocation", 1, ENOMEM);
  EXPECT_EQ(nla_strdup(short_one), nullptr);
}

}  // namespace
