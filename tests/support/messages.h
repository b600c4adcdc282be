// Netlink messages and attributes, made byte by byte; they can lie about their length.
#pragma once

#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include <cstdint>
#include <string>
#include <vector>

#include "process.h"

namespace test {

inline constexpr int64_t true_length = -1;

std::string message(uint16_t type, const std::string &payload, int64_t claimed = true_length);
std::string attribute(uint16_t type, const std::string &payload, int64_t claimed = true_length);
std::string link(int index, uint32_t flags, const std::string &attributes);
std::string address(uint32_t index, uint8_t family, const std::string &attributes);
std::string done();

// The 23 counters of an interface, each the same in either order of bytes.
std::string counters();

// Interface 7 with everything that a link message can have.
std::string full_link();

// The library's recvmsg returns these datagrams, one a call, before it asks the kernel again.
void receive_instead(const std::vector<std::string> &datagrams);

}  // namespace test
