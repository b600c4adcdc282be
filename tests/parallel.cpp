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

#include <map>
#include <string>
#include <thread>
#include <vector>

static void collect() {
  ifi_get_all_ip();
  ifi_find_by_name("lo");
  ifi_free_all();
}

static void dump_links() {
  nl_handle handle;
  nl_open(&handle, 0, 0);
  nl_dump(&handle, RTM_GETLINK);
  nl_recv(&handle, [](nlmsghdr *) { return 0; });
  nl_close(&handle);
}

static void ask_link() {
  eth_status status;
  eth_info(&status, "lo");
}

static void ask_radio() {
  iw_status status;
  iw_info(&status, "ra0");
}

static void load_product() {
  prod_spec_get("a");
  prod_spec_close();
  sysconf_get("a");
  sysconf_close();
  product_caps_get();
}

static void change_records() {
  eeprom_init();
  eeprom_delete(1);
  eeprom_write();
  eeprom_free();
}

static void send_and_receive() {
  const std::string path = "/tmp/" + std::to_string(gettid());
  const int fd = socket_input_init(path.c_str());
  socket_write("message", 7, path.c_str());
  fd_set set;
  FD_ZERO(&set);
  FD_SET(fd, &set);
  socket_read(fd, &set, [](const void *, uint32_t) { return 0; });
  socket_input_shutdown(fd, path.c_str());
}

static void translate() {
  set_po_access_path("status", "/usr/share/po");
  gettext("Signal");
}

static void read_files() {
  iw_peers_list peers{};
  iw_status status{};
  keyval_list values;
  status.ifname = "ra0";
  iw_read_states(&status);
  iw_peers(&peers, "ra0");
  iw_peers_free(&peers);
  keyvalue("/proc/net/ra0/peers", nullptr, &values);
  keyval_destroy(&values);
  cpu_detect(CPU_RT3052);
  mtd_block_find("Factory");
}

static const std::map<std::string, void (*)()> uses = {
    {"net", collect},          {"netlink", dump_links},     {"ethernet", ask_link},       {"wireless", ask_radio},
    {"product", load_product}, {"records", change_records}, {"sender", send_and_receive}, {"texts", translate},
    {"files", read_files},
};

int main(int count, char **arguments) {
  if (count < 3 || chroot(arguments[1]) != 0) return 2;
  std::vector<std::thread> threads;
  for (int i = 2; i < count; ++i) {
    threads.emplace_back([use = uses.at(arguments[i])] {
      for (int times = 0; times < 200; ++times) use();
    });
  }
  for (auto &each : threads) each.join();
}
