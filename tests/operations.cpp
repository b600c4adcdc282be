#include "operations.h"

#include <devfacts/core.h>
#include <devfacts/ethernet.h>
#include <devfacts/net.h>
#include <devfacts/product.h>
#include <devfacts/store.h>
#include <devfacts/transport.h>
#include <devfacts/wireless.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <iostream>

#include "store/record_table.h"
#include "support/configuration.h"
#include "support/driver.h"
#include "support/faults.h"
#include "support/log.h"
#include "support/messages.h"
#include "support/process.h"
#include "tools/command.h"

using namespace test;
namespace tool = devfacts::tool;

constexpr char store_file[] = "/var/cfg/.eeprom";
constexpr char flash_device[] = "/dev/mtdblock0";

// One line: the values, with a blank after each.
static void say(const auto &...values) {
  ((std::cout << values << " "), ...);
  std::cout << "\n";
}

static auto command(std::vector<std::string> arguments) {
  return [=]() mutable {
    std::vector<char *> pointers(arguments.size() + 1);
    std::transform(arguments.begin(), arguments.end(), pointers.begin(), [](auto &each) { return each.data(); });
    say("status", tool::run(static_cast<int>(arguments.size()), pointers.data()));
  };
}

// With a driver; prints what this and the configuration store were asked.
static auto driven(const std::function<void()> &act) {
  return [=] {
    const driver device;
    act();
    std::cout << device.log << asked();
  };
}

static void set_flags() {
  int ends[2];  // of a pipe, which can have any flag
  if (pipe(ends) != 0) return;
  fcntl(ends[1], F_SETFL, O_APPEND);
  const int before = fcntl(ends[1], F_GETFL);
  for (const auto set : {set_coe, set_nio, set_bio}) {
    const int result = set(ends[1]);
    const int changed = fcntl(ends[1], F_GETFL) ^ before;
    say(result, fcntl(ends[1], F_GETFD), changed == O_NONBLOCK ? "non-blocking" : changed == 0 ? "as before" : "other");
  }
  for (const int each : ends) close(each);
}

static void collect_values() {
  keyval_list list{reinterpret_cast<keyval_entry *>(8), 77};
  keyvalue("/missing", nullptr, &list);
  keyval_destroy(&list);
  say(list.count, list.rows == reinterpret_cast<keyval_entry *>(8));
  keyvalue("/f", nullptr, nullptr);
  keyvalue("/f", "a", &list);
  for (int i = 0; i < list.count; ++i) say(list.rows[i].value, list.rows[i].length);
  keyval_destroy(nullptr);
  for (int i = 0; i < 2; ++i) keyval_destroy(&list);
  say(list.count, list.rows == nullptr);
}

static void answer_dumps() {
  write_file("/proc/sys/net/ra<1/%parent", "lo");
  const std::string addresses = attribute(IFA_ADDRESS, "abcd") + attribute(IFA_BROADCAST, "efgh");
  const std::string links =
      full_link() + link(8, 0, attribute(IFLA_IFNAME, "ra<1")) + link(9, 0, attribute(IFLA_IFNAME, "ra2"));
  receive_instead({links, done(), address(7, AF_INET, addresses), done()});
}

// As a program may that walks over the kernel's messages itself.
static void collect_alone() {
  std::string message = link(9, 0, attribute(IFLA_IFNAME, "ra<1"));
  nl_collect_interface(reinterpret_cast<nlmsghdr *>(message.data()));
  say(ifi_find_by_index(9)->master);
  ifi_free_all();
}

static void ask_about_link() {
  eth_status status;
  const int result = eth_info(&status, "eth0");
  say(result, status.speed, +status.duplex, +status.link, status.supported, shown(status.perm_addr, 6));
  const int read = eth_perm_addr(status.perm_addr, "eth0");
  say(read, shown(status.perm_addr, 6));
  say(eth_capable("eth0"));
  say(eth_capable("eth1"));
}

static void load_capabilities() {
  say(product_caps_get() == &product_caps);
  if (product_caps.radio_count == 0) return;
  const caps_radio &radio = *product_caps.radios;
  say(listed(product_caps.loaded, product_caps.name.present, radio.antenna_gain.present, radio.ignore_crr.present,
             radio.ignore_crr.value));
}

// What a file returns that is written over and over, with the configuration store's part in it.
static auto answers_of(const char *path, auto open, auto close, auto context, auto get) {
  const auto ask = [=](const char *file, const char *key) {
    write_file(path, file);
    const int opened = open();
    const std::string value = text_or_none(get(key));
    std::cout << asked();
    say(opened, value, context() == nullptr ? "closed" : "open");
  };
  return [=] {
    ask("no entry\n", "a.b");
    for (const char *key : {"a.b", "none", "%n%s"}) ask("a.b=1\n", key);
    for (int i = 0; i < 2; ++i) close();
    ask("a.b=2\nproduct.name=\nproduct.enterprise-name=\n", "a.b");
  };
}

static void receive(int fd) {
  if (fd < 0) return;
  fd_set set;
  FD_ZERO(&set);
  FD_SET(fd, &set);
  const auto print = [](const void *bytes, uint32_t length) {
    say("received:", shown(bytes, length));
    return 0;
  };
  socket_read(fd, &set, print);
  std::cout << logged();
}

static void send(const std::string &text, const char *path) {
  say("sent", socket_write(text.data(), static_cast<uint32_t>(text.size()), path));
  std::cout << logged();
}

// To a receiver that is there, that is gone, and that is back.
static void send_and_receive() {
  say("sent", socket_write(nullptr, 1, "/s"));
  send("", "/s");
  int fd = socket_input_init("/s");
  send("first", "/s");
  send("to the same", "/none");
  receive(fd);
  receive(fd);
  socket_input_shutdown(fd, "/s");
  for (const char *path : {"/s", "/none"}) send("lost", path);
  fd = socket_input_init("/s");
  send("last", "/s");  // this connection stays
  socket_input_shutdown(fd, "/s");
}

static void replace_record() {
  const void *payload = nullptr;
  uint32_t count = 0;
  for (const char *each : {"old", "new"}) {
    say(eeprom_update(5, each, 4));
    eeprom_get(5, &payload, &count);
    say(shown(payload, 4), count, devfacts::eeprom_table.capacity);
  }
  const devfacts::record_table forgotten = devfacts::eeprom_table;
  say(eeprom_init());
  say(devfacts::eeprom_table.capacity, live_blocks());
  if (forgotten.slots == nullptr) return;
  test_free(forgotten.slots[5]);
  test_free(forgotten.slots);
}

// The store, with its image at this offset after a hole: the only partition if that is there, or else a file.
static auto stored_in(const std::string &path, off_t offset) {
  return [=] {
    std::remove(flash_device);
    write_file(path, std::string(65536, '\0'));
    for (const int id : {1, 90}) eeprom_update(id, "old", 3);
    eeprom_write();
    eeprom_free();
    const std::string image = read_file(path).substr(4096, 1000);
    write_file(path, "");
    chmod(path.c_str(), 0600);
    std::ofstream(path, std::ios::in | std::ios::binary).seekp(offset) << image;
  };
}

const auto ask_settings = answers_of("/tmp/system.cfg", sysconf_open, sysconf_close, sysconf_get_ctx, sysconf_get);
const auto describe_radios = [] { write_file("/etc/product", read_file("/radios")); };
const auto print_records = command({"records"});
const auto import_records = command({"records", "import", store_file, "--write"});
const auto set_record = command({"records", "set", "1", "6e6577", "--write"});

const std::vector<operation> test::operations = {
    {"flags", {}, set_flags, {}},
    {"values", {}, collect_values, {}},
    {"interfaces", answer_dumps, command({"net"}), collect_alone},
    {"wireless", describe_radios, driven(command({"wireless", "radio0"})), {}},
    {"peers", {}, command({"peers"}), {}},
    {"link", {}, driven(ask_about_link), {}},
    {"capabilities", {}, load_capabilities, command({"product"})},
    {"configuration", {}, ask_settings, {}},
    {"messages", {}, send_and_receive, {}},
    {"messages_over_many", use_up_descriptors, send_and_receive, {}, "messages"},
    {"table", {}, replace_record, {}},
    {"records_from_a_file", stored_in(store_file, 0), import_records, print_records},
    {"records_into_a_hole", stored_in(store_file, 16384), set_record, print_records},
    {"records_into_flash", stored_in(flash_device, 4096), set_record, print_records},
    {"text", {}, command({"translate", "/po", "c", "plain"}), {}},
};
