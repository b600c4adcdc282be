// What the tests share: fresh processes, faults at the library's boundary, messages made byte by byte.
#pragma once

#include <gtest/gtest.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

namespace test {

// The library keeps state for as long as its process lives, so cases run in a forked child that ends by itself within a
// minute. Gives "OUT|ERR|STATUS": what the body wrote, and the exit status, or 128 and the signal. Expectations that
// fail in the body give status 99, with their text in OUT.
std::string run(const std::function<void()> &body);
void expect_run(const std::string &end, const std::function<void()> &body);

// Ends a body at once: without /proc the leak checker could not look. Blocks of the library are counted in the cases.
[[noreturn]] void leave();

// The same on a device of its own, whose root holds just what the body writes there.
void on_device(const std::function<void()> &body, const std::string &end = "||0");

// A timer interrupts every call that waits, again and again.
void interrupt_every(int microseconds);

// Leaves one number free that a set of descriptors has room for.
void use_up_descriptors();

// Puts a file in the place of whatever stood there; folders on the way are made.
void write_file(const std::string &path, const std::string &text);

// What a file holds; names without a path are those of tests/data.
std::string data(const std::string &name);

// The lines of such a file, each cut at its "|"; "\n" in them is a newline, "\t" a tab, "\9x" nine times x.
std::vector<std::vector<std::string>> rows(const std::string &name);

// The bytes, each NUL as a dot; "-" for null.
std::string shown(const void *bytes, size_t count);

// Numbers in decimal, with a blank between them.
template <class... Numbers>
std::string listed(const Numbers &...numbers) {
  std::string text;
  ((text += std::to_string(numbers), text += ' '), ...);
  text.pop_back();
  return text;
}

// Big-endian is the device: a whole board, or the emulation of its user space. Under the latter the kernel's own link
// messages come through with their last empty attribute unswapped, which the attribute walk rightly warns of.
inline constexpr bool big_endian = __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__;
inline const bool emulated = big_endian && std::getenv("BOARD") == nullptr;

// In the copy of the library that the tests link, the n-th of these calls (from 1) from now on fails with this errno:
// of all calls, or of those whose names are in the text, where "allocation" stands for malloc and its kin. An error of
// 0 makes the call give 0: select a limit passed, send a count too short, getsockname no address.
void fail(const std::string &calls, int nth, int error);

// Is this call of that name the one that fails? The names of all that could have been, since fail().
bool strikes(const char *call);
std::string calls_seen();

// What the library gave is freed and counted by this one.
extern "C" void test_free(void *block);

// Blocks that the library has allocated and not freed, and the size of the newest one.
long live_blocks();
size_t newest_size();

// This answers the library's requests from now on, in a driver's place: their number and record, as ioctl has them.
void drive(const std::function<int(unsigned long, void *)> &answer);

// This sees each mapping that the library makes before it is used.
void on_mapping(const std::function<void(void *, size_t)> &look);

// The library's read and pread of this place and what lies behind it fail, or give what lies in front; -1 ends that.
void break_store(off_t place, bool cuts);

// Files are as those that the kernel makes up: they claim to be empty, and a read gives no more than this at once.
void read_at_most(size_t count);

// The library's recvmsg gives these datagrams, one a call, before it asks the kernel again.
void receive_instead(const std::vector<std::string> &datagrams);

// The calls of the store since this was asked last, a line each: the operation without its "cfg_", and its key or path.
std::string asked();

// What the library logged since this was asked last: for each message the errno's name where it is told, the level, the
// text.
std::string logged();

template <class T>
std::string bytes_of(const T &record) {
  return {reinterpret_cast<const char *>(&record), sizeof record};
}

inline std::string padded(std::string bytes) { return bytes.append(-bytes.size() % 4, '\0'); }

// Messages and attributes can lie about their length.
inline std::string message(uint16_t type, const std::string &payload, int64_t claimed = -1) {
  const nlmsghdr header{static_cast<uint32_t>(claimed < 0 ? 16 + payload.size() : claimed), type, 0, 0, 0};
  return padded(bytes_of(header) + payload);
}

inline std::string attribute(uint16_t type, const std::string &payload, int64_t claimed = -1) {
  const rtattr header{static_cast<uint16_t>(claimed < 0 ? 4 + payload.size() : claimed), type};
  return padded(bytes_of(header) + payload);
}

inline std::string link(int index, uint32_t flags, const std::string &attributes) {
  return message(RTM_NEWLINK, bytes_of(ifinfomsg{AF_UNSPEC, 0, 1, index, flags, 0}) + attributes);
}

inline std::string address(uint32_t index, uint8_t family, const std::string &attributes) {
  return message(RTM_NEWADDR, bytes_of(ifaddrmsg{family, 24, 0, 0, index}) + attributes);
}

// Each word the same in either order of bytes.
inline const std::string counters =
    "AAAABBBBCCCCDDDDEEEEFFFFGGGGHHHHIIIIJJJJKKKKLLLLMMMMNNNNOOOOPPPPQQQQRRRRSSSSTTTTUUUUVVVVWWWW";

// Interface 7 with all that a link message can have.
inline const std::string full_link =
    link(7, 1,
         attribute(IFLA_IFNAME, std::string("ra<0\0", 5)) + attribute(IFLA_LINK, bytes_of(7)) +
             attribute(IFLA_ADDRESS, "\x02\xfc\x01\xab") + attribute(IFLA_BROADCAST, "12345678") +
             attribute(IFLA_TXQLEN, bytes_of(1000)) + attribute(IFLA_STATS, counters));

inline std::string done() { return message(NLMSG_DONE, ""); }

}  // namespace test
