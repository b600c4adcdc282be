// Each call that an operation makes over the library's boundary fails once in turn, in each way that it can.
#include <devfacts/core.h>
#include <devfacts/ethernet.h>
#include <devfacts/net.h>
#include <devfacts/product.h>
#include <devfacts/store.h>
#include <devfacts/transport.h>
#include <devfacts/wireless.h>
#include <fcntl.h>
#include <linux/ethtool.h>
#include <linux/sockios.h>
#include <linux/wireless.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iostream>
#include <regex>
#include <sstream>

#include "support/test.h"
#include "tools/command.h"

using namespace test;
namespace tool = devfacts::tool;

static void say(const auto &...values) { ((std::cout << values << " "), ...) << "\n"; }

static auto with(tool::exit_status (*command)(char **), std::vector<std::string> arguments) {
  return [=]() mutable {
    std::vector<char *> pointers;
    for (std::string &each : arguments) pointers.push_back(each.data());
    pointers.push_back(nullptr);
    say("status", command(pointers.data()));
  };
}

// A driver that fills with ones what it is given: a record of ethtool's behind its command, else the room and the
// request.
static int answer(unsigned long number, void *record) {
  auto &u = static_cast<iwreq *>(record)->u;
  const bool is_ethtool = number == SIOCETHTOOL;
  auto *room = static_cast<char *>(u.data.pointer) + (is_ethtool ? 4 : 0);
  std::fill_n(room, !is_ethtool ? u.data.length : room[-1] + room[-4] == ETHTOOL_GLINK ? 4 : 12, '1');
  if (!is_ethtool) std::memset(&u, '1', 16);
  return 0;
}

static void query_driver() {
  int nth = 0;
  for (const auto ask : {iw_ieee_name, iw_essid, iw_operation_mode, iw_freq_channel, iw_ap_addr, iw_current_bit_rate,
                         iw_bitrates, iw_rssi, iw_encoding_flags, iw_txpower}) {
    iw_status status;
    std::memset(&status, 0x5a, sizeof status);
    const int result = ask(&status, "radio0");
    say(++nth, result, bytes_of(status) == std::string(sizeof status, 0x5a) ? "as it was" : "written");
  }
}

static void ask_about_link() {
  eth_status status;
  const int result = eth_info(&status, "eth0");
  say(result, status.speed, +status.duplex, +status.link, status.supported, shown(status.perm_addr, 6));
  const int read = eth_perm_addr(status.perm_addr, "eth0");
  say(read, shown(status.perm_addr, 6)), say(eth_capable("eth0"));
}

static void answer_dumps() {
  const std::string addresses = attribute(IFA_ADDRESS, "abcd") + attribute(IFA_BROADCAST, "efgh");
  receive_instead({full_link + link(8, 0, attribute(IFLA_IFNAME, "ra<1")) + link(9, 0, attribute(IFLA_IFNAME, "ra2")),
                   done(), address(7, AF_INET, addresses), done()});
}

static void set_flags() {
  int ends[2];
  pipe(ends);
  for (const auto set : {set_coe, set_nio, set_bio}) say(set(ends[0]));
  close(ends[0]), close(ends[1]);
}

static void copy_texts() {
  std::string value = attribute(1, "ab");
  const auto *bytes = reinterpret_cast<const rtattr *>(value.data());
  first_match_string slot{};
  __return_first_match_in_string(&slot, nullptr, value.data());
  void *copies[] = {nla_memdup(bytes), nla_strdup(bytes), escape_xml("<", nullptr), slot.value};
  for (void *each : copies) say(each != nullptr), test_free(each);
}

static void collect_values() {
  keyval_list list{};
  keyvalue("/f", nullptr, &list);
  say(list.count), keyval_destroy(&list);
}

static void send_and_receive() {
  const int fd = socket_input_init("/s");
  for (const char *path : {"/s", "/none"}) say("sent", socket_write(path, 2, path));
  fd_set set;
  FD_ZERO(&set);
  for (int i = 0; i < 2 && fd >= 0; ++i) {
    FD_SET(fd, &set), say("received");
    socket_read(fd, &set, [](const void *payload, uint32_t length) { return say(shown(payload, length)), 0; });
  }
  std::cout << logged();
}

constexpr char file[] = "/var/cfg/.eeprom", flash[] = "/dev/mtdblock0";

// The store, with its image at this place behind a hole: the only partition if that is there, or else a file.
static auto stored_in(const std::string &path, off_t place) {
  return [=] {
    std::remove(flash), write_file(path, std::string(65536, '\0'));
    for (const int id : {1, 2, 90}) eeprom_update(id, "old", 3);
    eeprom_write(), eeprom_free();
    std::ifstream stream(path, std::ios::binary);
    const std::string image = std::string(std::istreambuf_iterator<char>(stream), {}).substr(4096, 1000);
    write_file(path, "");
    std::ofstream(path, std::ios::in | std::ios::binary).seekp(place) << image;
  };
}

static std::string radios;
const auto print_records = with(tool::records, {}), set_record = with(tool::records, {"set", "1", "6e6577", "--write"});

const struct {
  const char *name;
  std::function<void()> prepare, ask, rest;
} operations[] = {
    {"flags", {}, set_flags, {}},
    {"control", {}, [] { say(ioctl_socket() == ioctl_socket()); }, {}},
    {"copies", {}, copy_texts, {}},
    {"values", {}, collect_values, {}},
    {"interfaces", answer_dumps, with(tool::net, {}), {}},
    {"queries", {}, query_driver, {}},
    {"wireless", [] { write_file("/etc/product", radios); }, with(tool::wireless, {"radio0"}), {}},
    {"peers", {}, with(tool::peers, {}), {}},
    {"link", {}, ask_about_link, {}},
    {"capabilities", {}, [] { say(product_caps_get() != nullptr); }, with(tool::product, {})},
    {"identity", {}, with(tool::product, {"product.name"}), {}},
    {"configuration", {}, with(tool::config, {"a.b"}), {}},
    {"messages", {}, send_and_receive, {}},
    {"messages over many", use_up_descriptors, send_and_receive, {}},
    {"records in a file", stored_in(file, 4096), print_records, {}},
    {"records into a file", stored_in(file, 4096), set_record, print_records},
    {"records into a hole", stored_in(file, 16384), set_record, print_records},
    {"records into flash", stored_in(flash, 4096), set_record, print_records},
    {"text", {}, with(tool::translate, {"/po", "c", "plain"}), {}},
};

// A non-blocking one counts as eleven.
static int open_descriptors() {
  int count = 0;
  for (int fd = 0, flags = 0; fd < FD_SETSIZE + 9; ++fd)
    if ((flags = fcntl(fd, F_GETFL)) >= 0) count += (flags & O_NONBLOCK) != 0 ? 11 : 1;
  return count;
}

constexpr int most_shown = 5;

static std::string lines_not_in(const std::string &other, const std::string &text, char mark) {
  std::istringstream lines(text);
  std::string found;
  int count = 0;
  for (std::string line; std::getline(lines, line);)
    if (("\n" + other + "\n").find("\n" + line + "\n") == other.npos && ++count <= most_shown)
      found += mark + line + "\n";
  return count > most_shown ? found + mark + " and " + std::to_string(count - most_shown) + " more\n" : found;
}

const struct {
  int error;
  const char *calls;
} faults[] = {
    {ENOMEM, ""},
    {EINTR, "connect select poll send recv recvmsg read pread posix_fallocate"},
    {EAGAIN, "send recv recvmsg"},
    {ENOSPC, "posix_fallocate"},
    {0, "select poll send recv recvmsg read pread getsockname"},
};

// One of each kind of block is enough here.
static std::string without_many(const std::string &product) {
  return std::regex_replace(product, std::regex("(^|\n)[^\n]*(limits.13|radio.13.f|led.*13).*"), "");
}

// What each operation does, and what is different, or all there is, with each fault.
TEST(faults, each_costs_what_it_must) {
  radios = data("radios");
  const auto outcome = [product = without_many(data("product"))](const auto &operation, const char *calls, int nth,
                                                                 int error) {
    return run([&] {
      write_file("/etc/product", product);
      if (operation.prepare) operation.prepare();
      const int before = open_descriptors();
      fail(calls, nth, error), operation.ask();
      if (nth == 0) write_file("/calls", calls_seen());
      fail("none", 0, 0);
      if (operation.rest) operation.rest();
      ioctl_close(), prod_spec_close(), sysconf_close(), eeprom_free();
      say(live_blocks(), "blocks and", open_descriptors() - before, "descriptors remain");
      leave();
    });
  };
  const auto tell = [](int error, const std::string &faults, const std::string &cost) {
    std::cout << "-- " << strerrorname_np(error) << ":" << faults << "\n" << cost;
  };
  const auto difference = [](const std::string &end, const std::string &whole) {
    const bool is_whole = end.find("descriptors remain") != end.npos;
    return is_whole ? lines_not_in(end, whole, '-') + lines_not_in(whole, end, '+') : end + "\n";
  };
  const auto sweep = [&](const auto &operation, const auto &fault) {
    const std::string whole = outcome(operation, fault.calls, 0, fault.error);
    if (fault.error == ENOMEM) say("==", operation.name), say(whole);
    std::ifstream calls("/calls");
    std::string name, faults, last;
    for (int nth = 1; calls >> name; ++nth) {
      const std::string cost = difference(outcome(operation, fault.calls, nth, fault.error), whole);
      if (nth > 1 && cost != last) tell(fault.error, faults, last), faults.clear();
      faults.append(" ").append(std::to_string(nth)).append(".").append(name), last = cost;
    }
    if (!faults.empty()) tell(fault.error, faults, last);
  };
  const auto body = [&, peers = data("peers"), po = data("catalogue.po")] {
    mkdir("/var", 0755), mkdir("/var/cfg", 0755);
    mount("", "/var/cfg", "tmpfs", 0, "");  // holes and blocks the same everywhere
    write_file("/proc/mtd", "dev:\nmtd0: 0 0 \"Factory\"\n"), write_file("/f", "a=1\nb=2\n"),
        write_file("/proc/net/ra0/peers", peers);
    write_file("/etc/lang", "de"), write_file("/po/de/c.po", po), write_file("/tmp/system.cfg", "a.b=c\n");
    write_file("/proc/sys/net/ra<1/%parent", "lo"), write_file("/etc/serial-no", "1234\n");
    write_file("/usr/lib/version", "v1.rt3052\n"), write_file("/proc/net/madwifi/radio0/state_cnt", "INIT: 1 msecs");
    for (const char *file : {"rxstats", "txstats"})
      write_file(std::string("/proc/net/radio0/") + file, "Packets: 1\nRetried: 2\nDropped: 3\n");
    drive(answer);
    for (const auto &operation : operations)
      for (const auto &fault : faults) sweep(operation, fault);
    umount2("/var/cfg", MNT_DETACH);
  };
  on_device(body, data("faults") + "||0");
}
