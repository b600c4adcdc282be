// Netlink messages and attributes made byte by byte, so that they can lie.
#pragma once

#include <linux/netlink.h>
#include <linux/rtnetlink.h>

#include <cstdint>
#include <string>

namespace test {

template <class T>
std::string bytes_of(const T &record) {
  return {reinterpret_cast<const char *>(&record), sizeof record};
}

inline std::string padded(std::string bytes) { return bytes.append(-bytes.size() % 4, '\0'); }

inline constexpr int64_t honest = -1;

inline std::string message(uint16_t type, const std::string &payload, int64_t claimed = honest) {
  nlmsghdr header{};
  header.nlmsg_len = static_cast<uint32_t>(claimed == honest ? int64_t(sizeof header + payload.size()) : claimed);
  header.nlmsg_type = type;
  return padded(bytes_of(header) + payload);
}

inline std::string attribute(uint16_t type, const std::string &payload, int64_t claimed = honest) {
  rtattr header{};
  header.rta_len = static_cast<uint16_t>(claimed == honest ? int64_t(sizeof header + payload.size()) : claimed);
  header.rta_type = type;
  return padded(bytes_of(header) + payload);
}

inline std::string link(int index, uint32_t flags, const std::string &attributes) {
  ifinfomsg record{};
  record.ifi_type = 1;
  record.ifi_index = index;
  record.ifi_flags = flags;
  return message(RTM_NEWLINK, bytes_of(record) + attributes);
}

inline std::string address(uint32_t index, uint8_t family, const std::string &attributes) {
  ifaddrmsg record{};
  record.ifa_family = family;
  record.ifa_prefixlen = 24;
  record.ifa_index = index;
  return message(RTM_NEWADDR, bytes_of(record) + attributes);
}

inline std::string done() { return message(NLMSG_DONE, ""); }

}  // namespace test
