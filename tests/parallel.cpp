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
#include <cstring>
#include <string>
#include <thread>
#include <vector>

static std::string own_path() { return "/tmp/" + std::to_string(gettid()); }

static void receive(int fd) {
  fd_set set;
  FD_ZERO(&set);
  FD_SET(fd, &set);
  socket_read(fd, &set, [](const void *, uint32_t) { return 0; });
}

static constexpr struct {
  const char *family;
  void (*use)();
} uses[] = {
    {"net", [] { ifi_get_all_ip(), ifi_find_by_name("lo"), ifi_free_all(); }},
    {"netlink",
     [] {
       nl_handle handle;
       nl_open(&handle, 0, 0), nl_dump(&handle, RTM_GETLINK);
       nl_recv(&handle, [](nlmsghdr *) { return 0; }), nl_close(&handle);
     }},
    {"ethernet",
     [] {
       eth_status status;
       eth_info(&status, "lo");
     }},
    {"wireless",
     [] {
       iw_status status;
       iw_info(&status, "ra0");
     }},
    {"counters",
     [] {
       iw_status status{};
       status.ifname = "ra0";
       iw_tx_total(&status, "ra0"), iw_read_states(&status), iw_link_established();
     }},
    {"peers",
     [] {
       iw_peers_list list{};
       iw_peers(&list, "ra0"), iw_peers_free(&list);
     }},
    {"product", [] { product_name(), prod_spec_close(), sysconf_get("a"), sysconf_close(), product_caps_get(); }},
    {"chip", [] { cpu_detect(CPU_RT3052); }},
    {"scanner",
     [] {
       keyval_list list{};
       keyvalue("/proc/net/ra0/peers", nullptr, &list), keyval_destroy(&list);
     }},
    {"records", [] { eeprom_init(), eeprom_delete(1), eeprom_write(), eeprom_free(); }},
    {"partitions", [] { mtd_block_find("Factory"); }},
    {"receiver",
     [] {
       const std::string path = own_path();
       const int fd = socket_input_init(path.c_str());
       receive(fd), socket_input_shutdown(fd, path.c_str());
     }},
    {"sender",
     [] {
       const std::string path = own_path();
       const int fd = socket_input_init(path.c_str());
       socket_write("message", 7, path.c_str());
       receive(fd), socket_input_shutdown(fd, path.c_str());
     }},
    {"texts", [] { set_po_access_path("status", "/usr/share/po"), gettext("Signal"); }},
};

int main(int count, char **words) {
  if (count < 3 || chroot(words[1]) != 0) return std::perror(words[0]), 2;
  std::vector<std::thread> threads;
  for (int i = 2; i < count; ++i) {
    for (const auto &each : uses) {
      if (std::strcmp(each.family, words[i]) != 0) continue;
      threads.emplace_back([&each] {
        for (int times = 0; times < 200; ++times) each.use();
      });
    }
  }
  for (auto &each : threads) each.join();
  return threads.size() == static_cast<size_t>(count) - 2 ? 0 : 2;
}
