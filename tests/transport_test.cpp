// The datagram transport over real sockets, and what it says of each failure.
#include <devfacts/transport.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <regex>
#include <utility>

#include "platform/log.h"
#include "support/test.h"

using namespace test;

int write_text(const std::string &text, const std::string &path) {
  return socket_write(text.data(), uint32_t(text.size()), path.c_str());
}

// The messages that one reading gives, long ones by their length, and what was logged; another descriptor may be the
// one in the set.
std::string drained(int fd, int in_set = -1) {
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

// Each row: what it is; what two readings give; the datagrams, each a text behind the length that it claims or "-".
TEST(receiver, what_it_makes_of_datagrams) {
  const std::regex bad("2 Corrupted input from socket!!!\n");
  for (const auto &row : rows("datagrams")) {
    on_device([&] {
      const int fd = socket_input_init("/s");
      const sockaddr_un address{AF_UNIX, "/s"};
      for (size_t i = 2; i < row.size(); ++i) {
        const size_t blank = row[i].find(' ');
        const bool has_length = row[i][0] != '-';
        std::string datagram = has_length ? bytes_of(static_cast<uint32_t>(std::stoull(row[i]))) : "";
        datagram += row[i].substr(blank + 1);
        sendto(fd, datagram.data(), datagram.size(), 0, reinterpret_cast<const sockaddr *>(&address), sizeof address);
      }
      const std::string first = drained(fd), all = first + "/ " + drained(fd);
      EXPECT_EQ(std::regex_replace(all, bad, "BAD "), row[1]) << row[0];
    });
  }
}

TEST(receiver, looks_only_at_the_bytes_received_and_at_what_is_in_the_set) {
  for (const uint32_t size : {0U, 1U, 3U, 4U, 5U}) {
    const std::vector<char> unaligned(size + 1, '\0');  // the sanitizer watches its end
    for (const char *datagram : {static_cast<const char *>(nullptr), &unaligned[1]}) {
      uint32_t length = 7;
      EXPECT_EQ(socket_input_extract(datagram, size, &length), nullptr);
      EXPECT_EQ(length, 0U);
    }
  }
  fail("recv", 1, EIO);
  for (const auto &[fd, in_set] : {std::pair{5, 6}, {-1, 63}, {FD_SETSIZE, 0}, {100000, 0}}) drained(fd, in_set);
  EXPECT_EQ(calls_seen(), "");
  EXPECT_EQ(socket_input_read_single(-1, nullptr, 0), 0);
  EXPECT_EQ(logged(), "EIO 4 Failed recieving data from the socket\n");
}

// One path is taken over and given back; others that are refused stay as they are.
TEST(transport, paths) {
  const std::string path = "/" + std::string(106, 'p'), too_long = path + "p";
  const auto body = [=] {
    write_file(path, ""), write_file(too_long, ""), close(STDIN_FILENO);
    const int fd = socket_input_init(path.c_str());
    EXPECT_EQ(fd, STDIN_FILENO);
    EXPECT_EQ(socket_input_init(too_long.c_str()) + socket_input_init("/none/s"), -2);
    EXPECT_EQ(logged(), "ENAMETOOLONG 1 Cannot create '" + too_long + "' UNIX socket.\n" +
                            "ENOENT 1 Cannot create '/none/s' UNIX socket.\n");
    EXPECT_EQ(write_text("lost", too_long) + write_text("hello", path), 0);
    fail("recv", 1, EIO);
    EXPECT_EQ(drained(fd), "EIO 4 Failed recieving data from the socket\n");
    EXPECT_EQ(drained(fd), "hello ");
    socket_input_shutdown(-1, path.c_str()), socket_input_shutdown(fd, nullptr);
    EXPECT_TRUE(access(path.c_str(), F_OK) == 0 && fcntl(fd, F_GETFL) == O_RDWR);
    socket_input_shutdown(fd, path.c_str());
    EXPECT_TRUE(access(path.c_str(), F_OK) == -1 && fcntl(fd, F_GETFL) == -1 && access(too_long.c_str(), F_OK) == 0);
  };
  on_device(body, "|Socket write error: File name too long\n|0");
}

TEST(sender, a_size_that_does_not_fit_beside_its_head_is_not_asked_for) {
  fail("allocation", 1, ENOMEM);
  EXPECT_EQ(socket_write("x", UINT32_MAX - 3, "/s"), -1);
  EXPECT_EQ(calls_seen(), sizeof(size_t) == 4 ? "" : "allocation ");
}

TEST(sender, waits_two_seconds_for_room_and_keeps_the_connection) {
  for (const bool high : {false, true}) {
    on_device([high] {
      if (high) use_up_descriptors();
      const int fd = socket_input_init("/s");
      if (high || !emulated) interrupt_every(20000);  // the emulated select waits its whole time anew
      std::string sent;
      auto start = std::chrono::steady_clock::now();
      for (; write_text("x", "/s") == 0; start = std::chrono::steady_clock::now()) sent += "x ";
      const auto waited = std::chrono::steady_clock::now() - start;
      EXPECT_TRUE(waited > std::chrono::milliseconds(1990) && waited < std::chrono::milliseconds(2600));
      EXPECT_EQ(drained(fd), sent + "1 Failed writing to socket\n");
      EXPECT_EQ(write_text("room", "/none"), 0);
      EXPECT_EQ(drained(fd), "room ");
    });
  }
}

TEST(transport, two_processes_lose_no_message_and_keep_their_order) {
  const int count = big_endian ? 10000 : 100000;
  on_device([=] {
    const int fd = socket_input_init("/s");
    const pid_t sender = fork();
    interrupt_every(sender == 0 ? 1000 : 1700);
    std::string wanted, got;
    for (int i = 0; i < count; ++i) {
      const std::string text = i % 2 == 0 ? std::to_string(i) : std::string(static_cast<size_t>(9 + i % 1588), 'x');
      EXPECT_TRUE(sender != 0 || write_text(text, "/s") == 0);
      wanted += (i % 2 == 0 ? text : std::to_string(text.size())) + " ";
    }
    if (sender == 0) _exit(testing::Test::HasFailure() ? 99 : 0);
    for (pollfd slot{fd, POLLIN, 0}; got.size() < wanted.size() && poll(&slot, 1, 10000) != 0;) got += drained(fd);
    EXPECT_TRUE(got == wanted);
    int status = -1;
    TEMP_FAILURE_RETRY(waitpid(sender, &status, 0));
    EXPECT_EQ(status, 0);
  });
}

TEST(log, goes_to_syslog_with_a_priority_for_its_level) {
  const auto body = [] {
    write_file("/dev/log", "");
    const int fd = socket_input_init("/dev/log");
    for (const int level : {-1, 0, 1, 2, 3, 4, 5, 99}) log_message(level, level < 0 ? "" : "%d of %s\n\n", level, "us");
    log_message(1, "%*d\n", 2000, 1);
    errno = ENOENT;
    log_message_errno(4, "%*d\n", 9, 1);
    char line[2000];
    for (int length = 0; (length = socket_input_read_single(fd, line, sizeof line)) > 0;) {
      const std::string text(line, static_cast<size_t>(length)), words = text.substr(text.find(": ") + 2);
      std::printf("%.4s%s|", line, words.size() < 99 ? words.c_str() : std::to_string(words.size()).c_str());
    }
  };
  on_device(body, data("priorities") + "||0");
}
