#include "messages.h"

#include "faults.h"

static std::vector<std::string> waiting;

std::string test::message(uint16_t type, const std::string &payload, int64_t claimed) {
  const size_t length = sizeof(nlmsghdr) + payload.size();
  const nlmsghdr header{static_cast<uint32_t>(claimed < 0 ? length : claimed), type, 0, 0, 0};
  return padded(bytes_of(header) + payload);
}

std::string test::attribute(uint16_t type, const std::string &payload, int64_t claimed) {
  const size_t length = sizeof(rtattr) + payload.size();
  const rtattr header{static_cast<uint16_t>(claimed < 0 ? length : claimed), type};
  return padded(bytes_of(header) + payload);
}

std::string test::link(int index, uint32_t flags, const std::string &attributes) {
  return message(RTM_NEWLINK, bytes_of(ifinfomsg{AF_UNSPEC, 0, 1, index, flags, 0}) + attributes);
}

std::string test::address(uint32_t index, uint8_t family, const std::string &attributes) {
  return message(RTM_NEWADDR, bytes_of(ifaddrmsg{family, 24, 0, 0, index}) + attributes);
}

std::string test::done() { return message(NLMSG_DONE, ""); }

std::string test::counters() {
  std::string words;
  for (char letter = 'A'; letter <= 'W'; ++letter) words.append(4, letter);
  return words;
}

std::string test::full_link() {
  return link(7, 1,
              attribute(IFLA_IFNAME, std::string("ra<0\0", 5)) + attribute(IFLA_LINK, bytes_of(7)) +
                  attribute(IFLA_ADDRESS, "\x02\xfc\x01\xab") + attribute(IFLA_BROADCAST, "12345678") +
                  attribute(IFLA_TXQLEN, bytes_of(1000)) + attribute(IFLA_STATS, counters()));
}

void test::receive_instead(const std::vector<std::string> &datagrams) { waiting = datagrams; }

extern "C" ssize_t test_recvmsg(int fd, msghdr *message, int flags) {
  if (test::strikes("recvmsg")) return test::failed_result();
  if (waiting.empty()) return recvmsg(fd, message, flags);
  const std::string datagram = waiting.front();
  waiting.erase(waiting.begin());
  const iovec &buffer = *message->msg_iov;
  message->msg_flags = datagram.size() > buffer.iov_len ? MSG_TRUNC : 0;
  return static_cast<ssize_t>(datagram.copy(static_cast<char *>(buffer.iov_base), buffer.iov_len));
}
