// The interfaces of real namespaces and of crafted dumps, and the report on them.
#include <devfacts/net.h>
#include <gtest/gtest.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sched.h>
#include <sys/mount.h>

#include <cerrno>
#include <regex>

#include "support/faults.h"
#include "support/netlink_bytes.h"
#include "support/process.h"

namespace {

using namespace test;

// The report without its counters, as `ip` would have it.
constexpr const char *report_by_ip = R"(ip -j addr | jq -r '"<netstats>", (.[] |
    " <interface>", "  <name>\(.ifname)</name>", "  <status>\(if .flags | index("UP") then "up" else "down" end)</status>",
    (if .link then "  <master>\(.link)</master>" else empty end), "  <hwaddr>\(.address | ascii_upcase)</hwaddr>",
    (.addr_info[] | (if .family == "inet" then "ipv4" else "ipv6" end) as $e | "  <\($e)>\(.local)</\($e)>"),
    " </interface>"), "</netstats>"')";

void expect_report_as_by_ip() {
  const outcome result = in_child([] { ifi_get_all_ip(), ifi_dump_all(nullptr), ifi_free_all(); });
  const std::regex counter("  <(multicast|collisions|[rt]x_[a-z_]+)>[0-9]+</\\1>\n");
  EXPECT_EQ(std::regex_replace(result.out, counter, ""), shell(report_by_ip));
  EXPECT_EQ(result.err, emulated ? result.err : "");
}

TEST(inventory, matches_what_ip_says) {
  shell(R"(ip link set lo up
    ip link add first type veth peer name second; ip link add bridge0 type bridge; ip link add 'a<b&c' type bridge
    ip link add link first name first.5 type vlan id 5 2>/dev/null || true  # not every kernel has it
    ip addr add 192.0.2.1/24 broadcast + dev first; ip addr add 192.0.2.2/24 dev first
    ip addr add 2001:db8::1/64 dev first nodad; ip addr add 198.51.100.1/32 dev bridge0
    ip link set first up; ip link set bridge0 up)");
  expect_report_as_by_ip();
}

TEST(inventory, a_dump_of_several_datagrams) {
  shell("for i in $(seq 150); do echo link add v$i type veth peer name w$i; done | ip -batch -");
  shell("ip addr add 192.0.2.1/24 dev w150");
  expect_report_as_by_ip();
}

TEST(inventory, is_a_cache_until_it_is_freed) {
  shell("ip link set lo up");
  const outcome result = in_child([] {
    EXPECT_EQ(ifi_get_all(), &interfaces);
    fail("socket", 1, EMFILE);
    ifi_get_all_ip();
    const ifi_entry *lo = ifi_find_by_name("lo");
    ASSERT_NE(lo, nullptr);
    EXPECT_EQ(ifi_find_by_index(lo->index), lo);
    EXPECT_EQ(lo->addrs.next, &lo->addrs);
    ifi_free_all();
    ifi_free_all();
    EXPECT_EQ(ifi_find_by_name("lo"), nullptr);
    fail("", 0, 0);
    ifi_get_all_ip();
    EXPECT_NE(ifi_find_by_name("lo")->addrs.next, &ifi_find_by_name("lo")->addrs);
    ifi_free(ifi_find_by_name("lo"));
    ifi_free(ifi_alloc());
    ifi_free_all();
    EXPECT_EQ(live_blocks(), 0);
  });
  EXPECT_EQ(result.status, 0) << result.all();
}

TEST(inventory, parents_come_from_files_where_the_kernel_gives_no_link) {
  shell("for i in 0 1 2 3 4; do ip link add ra$i type bridge; done");
  for (const char *failing_call : {"", "open", "syscall"}) {
    const outcome result = in_child([=] {
      unshare(CLONE_NEWNS);
      mount("none", "/proc/sys/net", "tmpfs", 0, nullptr);
      shell(R"(cd /proc/sys/net; mkdir ra1 ra2 ra3 ra4; printf 'ra0 \t\nra2' >ra1/%parent; printf nobody >ra2/%parent
               >ra3/%parent; printf '  \nra0' >ra4/%parent)");
      fail(failing_call, 1, EMFILE);
      ifi_get_all();
      for (int i = 0; i < 5; ++i) {
        const unsigned master = i == 1 ? if_nametoindex("ra0") : 0;
        EXPECT_EQ(ifi_find_by_name(("ra" + std::to_string(i)).c_str())->master, static_cast<int>(master)) << i;
      }
      char parent[17] = "kept";
      const std::string long_name(500, 'x');
      for (const char *name : {static_cast<const char *>(nullptr), "ra0", "ra3", long_name.c_str()}) {
        EXPECT_EQ(iw_parent_name(name, parent, sizeof parent), -1);
      }
      EXPECT_EQ(iw_parent_name("ra1", parent, 0), -1);
      EXPECT_STREQ(parent, "kept");
      EXPECT_EQ(iw_parent_name("ra4", parent, sizeof parent), 0);
      EXPECT_STREQ(parent, "");
      shell("printf 12345678901234567890 >/proc/sys/net/ra1/%parent");
      EXPECT_EQ(iw_parent_name("ra1", parent, sizeof parent), 0);
      EXPECT_STREQ(parent, "1234567890123456");
    });
    EXPECT_EQ(result.status, 0) << failing_call << result.all();
  }
}

const std::string counters = [] {
  std::string words;
  for (uint32_t i = 0; i < 23; ++i) words += bytes_of(0xffffff00 + i);
  return words;
}();

// Interface 7 with all that a link message can have.
const std::string full_link =
    link(7, IFF_UP,
         attribute(IFLA_IFNAME, std::string("ra<0\0", 5)) + attribute(IFLA_LINK, bytes_of(7)) +
             attribute(IFLA_ADDRESS, "\x02\xfc\x01\xab") + attribute(IFLA_BROADCAST, "12345678") +
             attribute(IFLA_TXQLEN, bytes_of(1000)) + attribute(IFLA_STATS, counters));

// Fills the list from these messages in the kernel's place, then looks at it; leaks nothing.
void with_dump(const std::string &links, const std::string &addresses, const std::function<void()> &look) {
  receive_instead({links + done(), addresses + done()});
  ifi_get_all_ip();
  look();
  ifi_free_all();
  EXPECT_EQ(live_blocks(), 0);
}

const ipi_entry *nth_address(const ifi_entry *entry, int n) {
  list_link *link = entry->addrs.next;
  while (n-- > 0) link = link->next;
  return reinterpret_cast<ipi_entry *>(link);
}

std::string text(const void *bytes, size_t count) { return {static_cast<const char *>(bytes), count}; }

TEST(crafted_dump, every_field_and_what_is_missing) {
  const std::string nameless = link(8, 0, attribute(IFLA_STATS, counters.substr(0, 6)));
  const std::string bare = link(9, 0, attribute(IFLA_IFNAME, "no-nul") + attribute(IFLA_STATS, ""));
  const std::string addresses = address(8, AF_INET, attribute(IFA_LOCAL, "abcd")) +
                                address(7, AF_INET, attribute(IFA_LOCAL, "abcd") + attribute(IFA_ADDRESS, "efgh")) +
                                address(99, AF_INET, attribute(IFA_ADDRESS, "lost")) +
                                address(7, AF_INET6, attribute(IFA_ADDRESS, "ab")) +
                                address(7, AF_INET, attribute(IFA_BROADCAST, "ijkl"));
  const auto look = [] {
    const ifi_entry *full = ifi_find_by_name("ra<0");
    ASSERT_NE(full, nullptr);
    EXPECT_EQ(text(full->hwaddr, 12), std::string("\x02\xfc\x01\xab\0\0", 6) + "123456");
    EXPECT_EQ(full->type, 1);
    EXPECT_EQ(full->txqlen, 1000U);
    EXPECT_EQ(full->master, 7);
    EXPECT_EQ(text(nth_address(full, 0)->addr, 5), std::string("efgh\0", 5));
    EXPECT_EQ(nth_address(full, 0)->prefixlen, 24);
    EXPECT_EQ(text(nth_address(full, 1)->addr, 17), "ab" + std::string(15, '\0'));
    EXPECT_EQ(nth_address(full, 2)->addr, nullptr);
    EXPECT_EQ(text(nth_address(full, 2)->broadcast, 5), std::string("ijkl\0", 5));
    EXPECT_EQ(&nth_address(full, 3)->list, &full->addrs);
    EXPECT_EQ(ifi_find_by_index(8)->name, nullptr);
    EXPECT_EQ(text(nth_address(ifi_find_by_index(8), 0)->addr, 4), "abcd");
    EXPECT_EQ(text(ifi_find_by_index(8)->stats, 92), counters.substr(0, 6) + std::string(86, '\0'));
    EXPECT_EQ(ifi_find_by_name("no-nul")->stats, nullptr);
    EXPECT_EQ(ifi_find_by_name(""), nullptr);
  };
  expect_clean([&] { with_dump(full_link + nameless + bare, addresses, look); });
}

TEST(crafted_dump, owners_are_those_that_a_search_finds) {
  const struct {
    std::vector<int> links;
    const char *owners;
  } rows[] = {{{5, 3, 9, 3, 65536 + 5}, "xxx-x"}, {{5, 3, 9, 65536 + 6}, "xxx-"}};
  std::string addresses;
  for (const uint32_t index : {9, 3, 5, 4, 65536 + 5, 65536 + 9}) addresses += address(index, AF_INET, "");
  for (const auto &row : rows) {
    for (const int others : {0, 28, 100}) {  // interfaces without addresses, before and behind
      std::string links;
      for (int i = 0; i < others; ++i) links += link(100 + i, 0, "");
      for (const int index : row.links) links += link(index, 0, "");
      for (int i = 0; i < others; ++i) links += link(300 + i, 0, "");
      const auto look = [&] {
        std::string owners;
        for (const list_link *each = interfaces.next; each != &interfaces; each = each->next) {
          const auto *entry = reinterpret_cast<const ifi_entry *>(each);
          owners += entry->addrs.next != &entry->addrs ? 'x' : '-';
        }
        EXPECT_EQ(owners, std::string(others, '-') + row.owners + std::string(others, '-')) << others;
      };
      expect_clean([&] { with_dump(links, addresses, look); });
    }
  }
}

TEST(crafted_dump, a_message_too_short_for_its_record_reads_as_zero) {
  const auto body = [] {
    with_dump(message(RTM_NEWLINK, "") + message(RTM_NEWLINK, "123456"), message(RTM_NEWADDR, ""), [] {
      const auto *entry = reinterpret_cast<ifi_entry *>(interfaces.next);
      EXPECT_EQ(entry->index, 0);
      EXPECT_EQ(nth_address(entry, 0)->family, 0);
    });
  };
  expect_clean(body, "!!!Deficit -16, rta_len=0\n!!!Deficit -10, rta_len=0\n!!!Deficit -8, rta_len=0\n");
}

TEST(crafted_dump, each_failing_allocation_costs_its_own_field_alone) {
  const std::string owned = address(7, AF_INET, attribute(IFA_ADDRESS, "abcd") + attribute(IFA_BROADCAST, "efgh"));
  enum { record = 1, name, stats, address_record, addr, broadcast, none };
  const auto body = [&](int nth) {
    fail("allocation", nth, ENOMEM);
    with_dump(full_link, owned, [&] {
      const ifi_entry *entry = ifi_find_by_index(7);
      EXPECT_EQ(entry->name == nullptr, nth == name);
      EXPECT_EQ(entry->stats == nullptr, nth == stats);
      ASSERT_EQ(entry->addrs.next == &entry->addrs, nth == address_record);
      if (nth == address_record) return;
      EXPECT_EQ(nth_address(entry, 0)->addr == nullptr, nth == addr);
      EXPECT_EQ(nth_address(entry, 0)->broadcast == nullptr, nth == broadcast);
      EXPECT_EQ(calls_seen(), none - 1);
    });
  };
  for (int nth = record; nth <= none; ++nth) {
    if (nth == record) {
      expect_death("out of memory, Cannot allocate memory\n", [&] { body(nth); });
    } else {
      expect_clean([&] { body(nth); });
    }
  }
}

TEST(report, is_the_same_to_the_byte) {
  const std::string addresses = address(7, AF_INET6, attribute(IFA_ADDRESS, std::string(15, '\0') + '\x01')) +
                                address(7, AF_INET, "") +
                                address(7, AF_INET, attribute(IFA_ADDRESS, "\xc0\xa8\x01\x02")) +
                                address(7, AF_PACKET, attribute(IFA_ADDRESS, "abcd"));
  std::string one =
      " <interface>\n  <name>ra<0</name>\n  <status>up</status>\n  <hwaddr>02:FC:01:AB:00:00</hwaddr>\n"
      "  <ipv6>::1</ipv6>\n  <ipv4>192.168.1.2</ipv4>\n";
  uint32_t value = 0xffffff00;
  for (const char *name :
       {"rx_packets",       "tx_packets",        "rx_bytes",          "tx_bytes",        "rx_errors",
        "tx_errors",        "rx_dropped",        "tx_dropped",        "multicast",       "collisions",
        "rx_length_errors", "rx_over_errors",    "rx_crc_errors",     "rx_frame_errors", "rx_fifo_errors",
        "rx_missed_errors", "tx_aborted_errors", "tx_carrier_errors", "tx_fifo_errors",  "tx_heartbeat_errors",
        "tx_window_errors", "rx_compressed",     "tx_compressed"}) {
    one += "  <" + std::string(name) + ">" + std::to_string(value++) + "</" + name + ">\n";
  }
  one += " </interface>\n";
  const std::string bare =
      " <interface>\n  <status>down</status>\n  <hwaddr>00:00:00:00:00:00</hwaddr>\n </interface>\n";
  const struct {
    const char *filter;
    std::string interfaces;
  } rows[] = {{nullptr, one + bare}, {"ra<0", one}, {"ra", ""}, {"", ""}};
  for (const auto &row : rows) {
    const auto print = [&] { ifi_dump_all(row.filter); };
    const outcome result = in_child([&] { with_dump(full_link + link(8, 0, ""), addresses, print); });
    EXPECT_EQ(result.all(), "<netstats>\n" + row.interfaces + "</netstats>\n||0");
  }
}

TEST(report, printers_and_formatters_at_their_edges) {
  const outcome result = in_child([] {
    ifi_xml_str_item(nullptr, "x");
    ifi_xml_str_item("a", nullptr);
    ifi_xml_str_item("a", "");
    ifi_xml_int_item("b", UINT32_MAX);
  });
  EXPECT_EQ(result.all(), "  <a></a>\n  <b>4294967295</b>\n||0");
  const uint8_t mac[] = {1, 2, 3, 4, 5, 6};
  char room[6] = "?????";
  const ipi_entry none{};
  EXPECT_STREQ(ifi_mac_ntop(room, 4, mac), "01:");
  EXPECT_EQ(room[4], '?');
  EXPECT_EQ(ifi_ip_ntop(room, sizeof room, nullptr), nullptr);
  EXPECT_EQ(ifi_ip_ntop(room, sizeof room, &none), nullptr);
}

}  // namespace
