// The rtnetlink client against crafted and hostile messages.
#include <devfacts/net.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <sstream>

#include "support/test.h"

using namespace test;

int print_message(nlmsghdr *message) { return std::printf("%d:%u ", message->nlmsg_type, message->nlmsg_len); }

// The messages or attributes of a text: for each its type, its bytes, the length it claims, the word behind its header.
template <class Make>
std::string crafted(const std::string &row, Make make) {
  std::istringstream numbers(row);
  std::string bytes;
  int64_t type = 0, size = 0, claimed = 0, word = 0;
  while (numbers >> type >> size >> claimed >> word) {
    const std::string payload = bytes_of(static_cast<int32_t>(word)) + std::string(size, '\0');
    bytes += make(static_cast<uint16_t>(type), payload, claimed).substr(0, size);
  }
  return bytes;
}

// A handle whose kernel is the other end of a socket pair; its wait is bounded.
nl_handle handle_on(int (&ends)[2]) {
  EXPECT_EQ(socketpair(AF_UNIX, SOCK_DGRAM, 0, ends), 0);
#ifndef __SANITIZE_ADDRESS__  // which takes the length of the sender's long address for what was written
  const sockaddr_un sender{AF_UNIX, {}};
  EXPECT_TRUE(emulated || bind(ends[1], reinterpret_cast<const sockaddr *>(&sender), sizeof sender) == 0);
#endif
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
    errno = EAGAIN;  // of an earlier call
    nl_recv(&handle, callback);
    std::printf("end");
  });
}

TEST(netlink, what_it_makes_of_datagrams) {
  for (const auto &row : rows("netlink")) {  // a name, what becomes of them, the datagrams
    std::vector<std::string> datagrams;
    for (size_t i = 4; i < row.size(); ++i) datagrams.push_back(crafted(row[i], message));
    EXPECT_EQ(receive(datagrams, print_message), row[1] + "|" + row[2] + "|" + row[3]) << row[0];
  }
  const std::string noop = message(NLMSG_NOOP, ""), full = message(20, std::string(getpagesize() * 4 - 16, 'x'));
  EXPECT_EQ(receive({full + noop, noop, done()}, print_message),
            "20:" + std::to_string(full.size()) + " 1:16 end|truncated message ?\n|0");
  EXPECT_EQ(receive({message(9, full), done()}, print_message), "end|truncated message ?\n|0");
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
    EXPECT_EQ(nl_dump(&handle, RTM_GETADDR), 20);
    char received[32];
    ASSERT_EQ(recv(ends[1], received, sizeof received, 0), 20);
    const nlmsghdr header{20, RTM_GETADDR, 0x301, sequence, static_cast<uint32_t>(getpid())};
    EXPECT_EQ(std::string(received, 20), bytes_of(header) + std::string(4, '\0'));
    EXPECT_EQ(handle.dump, sequence);
  }
}

TEST(netlink, opening_fills_the_handle) {
  nl_handle handle;
  memset(&handle, 0xff, sizeof handle);
  const auto before = static_cast<uint32_t>(time(nullptr));
  nl_open(&handle, NETLINK_ROUTE, RTMGRP_LINK);
  EXPECT_EQ(listed(handle.local.nl_groups, handle.local.nl_pid != 0, handle.seq - before <= 1, handle.dump), "1 1 1 0");
  EXPECT_EQ(bytes_of(handle.peer), std::string(12, '\0'));
  for (const auto &[option, wanted] : {std::pair{SO_SNDBUF, 65536}, {SO_RCVBUF, 65536}, {SO_TYPE, int{SOCK_RAW}}}) {
    int value = 0;  // the kernel doubles the buffers
    socklen_t size = sizeof value;
    getsockopt(handle.fd, SOL_SOCKET, option, &value, &size);
    EXPECT_EQ(value, wanted) << option;
  }
  nl_close(&handle);
  EXPECT_EQ(handle.fd, -1);
}

// Prints where in the block the attributes of types 0 to 2 are found, -1 for nowhere.
void print_places(const std::string &bytes) {
  const std::vector<char> block(bytes.begin(), bytes.end());  // the sanitizer watches its end
  auto *first = reinterpret_cast<rtattr *>(const_cast<char *>(block.data()));
  rtattr *table[3] = {first, first, first};
  EXPECT_EQ(nl_parse_rtattr(table, 2, first, static_cast<int>(block.size())), 0);
  for (const rtattr *found : table) {
    std::printf("%d ", found == nullptr ? -1 : int(reinterpret_cast<const char *>(found) - block.data()));
  }
}

TEST(attributes, the_walk_stays_inside_the_block) {
  for (const auto &row : rows("attributes")) {  // a name, the places, the message, the block
    EXPECT_EQ(run([&] { print_places(crafted(row[3], attribute)); }), row[1] + "|" + row[2] + "|0") << row[0];
  }
}
