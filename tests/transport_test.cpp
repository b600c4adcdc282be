// The datagram transport over real sockets, and what it says of each failure.
#include <devfacts/transport.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <utility>

#include "support/faults.h"
#include "support/log.h"
#include "support/process.h"

using namespace test;

static int write_text(const std::string &text, const std::string &path) {
  return socket_write(text.data(), static_cast<uint32_t>(text.size()), path.c_str());
}

// One reading: the messages, long ones by their length, and what was logged. Another descriptor may be in the set.
static std::string drained(int fd, int in_set = -1) {
  static std::string seen;
  fd_set set;
  FD_ZERO(&set);
  FD_SET(in_set < 0 ? fd : in_set, &set);
  const auto note = [](const void *payload, uint32_t length) {
    seen += (length < 9 ? shown(payload, length) : std::to_string(length)) + " ";
    return -1;
  };
  EXPECT_EQ(socket_read(fd, &set, note), 0);
  return std::exchange(seen, "") + logged();
}

TEST(receiver, what_it_makes_of_datagrams) {
  const auto claiming = [](uint32_t length, const std::string &payload) { return bytes_of(length) + payload; };
  const std::string one = claiming(3, "one");
  const std::string longest(1596, 'x');
  const std::string bad = "2 Corrupted input from socket!!!\n";
  const struct {
    const char *name;
    std::vector<std::string> datagrams;
    std::string first, second;  // reading
  } cases[] = {
      {"no message", {one, claiming(0, ""), claiming(0, "x")}, "one " + bad + bad, ""},
      {"cut short", {"ab", claiming(1, ""), claiming(3, "ab")}, bad + bad + bad, ""},
      {"lengths beyond all", {claiming(UINT32_MAX, "ab"), claiming(UINT32_MAX - 3, "ab")}, bad + bad, ""},
      {"bytes after them", {claiming(3, "abcd"), claiming(1, "abcd")}, "abc a ", ""},
      {"the longest", {claiming(1596, longest), claiming(1596, longest + "yyy")}, "1596 1596 ", ""},
      {"too long", {claiming(1597, longest + "x")}, bad, ""},
      {"an empty one ends the reading", {one, "", one}, "one ", "one "},
  };
  for (const auto &each : cases) {
    on_device([&] {
      const int fd = socket_input_init("/s");
      const sockaddr_un address{AF_UNIX, "/s"};
      for (const std::string &datagram : each.datagrams)
        sendto(fd, datagram.data(), datagram.size(), 0, reinterpret_cast<const sockaddr *>(&address), sizeof address);
      EXPECT_EQ(drained(fd), each.first) << each.name;
      EXPECT_EQ(drained(fd), each.second) << each.name;
    });
  }
}

TEST(receiver, looks_only_at_the_bytes_received_and_at_what_is_in_the_set) {
  const std::vector<char> zeros(5, '\0');
  for (const uint32_t size : {0U, 1U, 3U, 4U, 5U}) {
    uint32_t length = 7;
    EXPECT_EQ(socket_input_extract(zeros.data() + 5 - size, size, &length), nullptr);  // the sanitizer watches the end
    EXPECT_EQ(length, 0U);
  }
  fail("recv", 1, EIO);
  constexpr int sets[][2] = {{5, 6}, {-1, 63}, {FD_SETSIZE, 0}, {100000, 0}};
  for (const auto &[fd, in_set] : sets) drained(fd, in_set);
  EXPECT_EQ(calls_seen(), "");
  EXPECT_EQ(socket_input_read_single(-1, nullptr, 0), 0);
  EXPECT_EQ(logged(), "EIO 4 Failed recieving data from the socket\n");
}

// A path is taken over and given back; one that is too long stays as it is.
TEST(transport, paths) {
  const std::string path = "/" + std::string(106, 'p');
  const std::string too_long = path + "p";
  const auto body = [&] {
    for (const std::string &each : {path, too_long}) write_file(each, "");
    close(STDIN_FILENO);
    const int fd = socket_input_init(path.c_str());
    EXPECT_EQ(fd, STDIN_FILENO);
    EXPECT_EQ(socket_input_init(too_long.c_str()), -1);
    EXPECT_EQ(logged(), "ENAMETOOLONG 1 Cannot create '" + too_long + "' UNIX socket.\n");
    for (const std::string &each : {too_long, path}) EXPECT_EQ(write_text("hello", each), 0);
    EXPECT_EQ(drained(fd), "hello ");
    socket_input_shutdown(-1, path.c_str());
    socket_input_shutdown(fd, nullptr);
    EXPECT_EQ(fcntl(fd, F_GETFL), O_RDWR);
    EXPECT_EQ(access(path.c_str(), F_OK), 0);
    socket_input_shutdown(fd, path.c_str());
    EXPECT_EQ(fcntl(fd, F_GETFL), -1);
    EXPECT_EQ(access(path.c_str(), F_OK), -1);
    EXPECT_EQ(access(too_long.c_str(), F_OK), 0);
  };
  on_device(body, "", "Socket write error: File name too long\n");
}

TEST(sender, waits_two_seconds_and_keeps_the_connection) {
  for (const bool is_high : {false, true}) {
    on_device([=] {
      if (is_high) use_up_descriptors();
      const int fd = socket_input_init("/s");
      if (is_high || !is_emulated) interrupt_every(20000);  // the emulated select waits its whole time anew
      std::string sent;
      auto start = std::chrono::steady_clock::now();
      while (write_text("x", "/s") == 0) {
        sent += "x ";
        start = std::chrono::steady_clock::now();
      }
      const auto waited = std::chrono::steady_clock::now() - start;
      EXPECT_GT(waited, std::chrono::milliseconds(1990));
      EXPECT_LT(waited, std::chrono::milliseconds(2600));
      EXPECT_EQ(drained(fd), sent + "1 Failed writing to socket\n");
      EXPECT_EQ(write_text("kept", "/none"), 0);
      EXPECT_EQ(drained(fd), "kept ");
    });
  }
}
