// Families at the same time, each on a thread of its own, on the sample device, for ThreadSanitizer to look at:
// parallel DEVICE FAMILY...
#include <devfacts/core.h>
#include <devfacts/ethernet.h>
#include <devfacts/i18n.h>
#include <devfacts/net.h>
#include <devfacts/product.h>
#include <devfacts/store.h>
#include <devfacts/transport.h>
#include <devfacts/wireless.h>
#include <unistd.h>

#include <cstdio>
#include <functional>
#include <map>
#include <string>
#include <thread>
#include <vector>

// Calls the function with a record of its own, which begins as all zero.
template <class Record>
static auto on_own(void (*use)(Record &)) {
  return [=] {
    Record record{};
    use(record);
  };
}

static void receive(const std::string &path, bool sends) {
  const int fd = socket_input_init(path.c_str());
  if (sends) socket_write("message", 7, path.c_str());
  fd_set set;
  FD_ZERO(&set);
  FD_SET(fd, &set);
  socket_read(fd, &set, [](const void *, uint32_t) { return 0; });
  socket_input_shutdown(fd, path.c_str());
}

static std::string own_path() { return "/tmp/" + std::to_string(gettid()); }

static void dump_links(nl_handle &handle) {
  nl_open(&handle, 0, 0), nl_dump(&handle, RTM_GETLINK);
  nl_recv(&handle, [](nlmsghdr *) { return 0; }), nl_close(&handle);
}

static void count(iw_status &status) {
  status.ifname = "ra0";
  iw_tx_total(&status, "ra0"), iw_read_states(&status), iw_link_established();
}

static void scan(keyval_list &list) { keyvalue("/proc/net/ra0/peers", nullptr, &list), keyval_destroy(&list); }

static void identify() {
  char text[64];
  cpu_detect(CPU_RT3052), read_serial_no(text, sizeof text), read_firmware_version(text, sizeof text);
}

static const std::map<std::string, std::function<void()>> uses = {
    {"net", [] { ifi_get_all_ip(), ifi_find_by_name("lo"), ifi_free_all(); }},
    {"netlink", on_own<nl_handle>(dump_links)},
    {"ethernet", on_own<eth_status>([](auto &status) { eth_info(&status, "lo"); })},
    {"wireless", on_own<iw_status>([](auto &status) { iw_info(&status, "ra0"); })},
    {"counters", on_own<iw_status>(count)},
    {"peers", on_own<iw_peers_list>([](auto &list) { iw_peers(&list, "ra0"), iw_peers_free(&list); })},
    {"product", [] { product_name(), prod_spec_close(), sysconf_get("a"), sysconf_close(), product_caps_get(); }},
    {"identity", identify},
    {"scanner", on_own<keyval_list>(scan)},
    {"records", [] { eeprom_init(), eeprom_delete(1), eeprom_write(), eeprom_free(); }},
    {"partitions", [] { mtd_block_find("Factory"); }},
    {"receiver", [] { receive(own_path(), false); }},
    {"sender", [] { receive(own_path(), true); }},
    {"texts", [] { set_po_access_path("status", "/usr/share/po"), gettext("Signal"); }},
};

int main(int count, char **words) {
  if (count < 3 || chroot(words[1]) != 0) return std::perror(words[0]), 2;
  std::vector<std::thread> threads;
  for (int i = 2; i < count; ++i) {
    threads.emplace_back([&use = uses.at(words[i])] {
      for (int times = 0; times < 200; ++times) use();
    });
  }
  for (auto &each : threads) each.join();
}
