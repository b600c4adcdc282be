// The interfaces of real namespaces and of crafted dumps, and the report on them.
#include <devfacts/net.h>
#include <gtest/gtest.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sched.h>
#include <sys/mount.h>

#include <cerrno>
#include <cstring>

#include "support/faults.h"
#include "support/netlink_bytes.h"
#include "support/process.h"

namespace {

using namespace test;

// The report without its counters, as `ip` would have it.
std::string report_by_ip() {
  return shell(R"(ip -j addr | jq -r '.[] |
    " <interface>", "  <name>\(.ifname)</name>", "  <status>\(if .flags | index("UP") then "up" else "down" end)</status>",
    (if .link then "  <master>\(.link)</master>" else empty end), "  <hwaddr>\(.address | ascii_upcase)</hwaddr>",
    (.addr_info[] | (if .family == "inet" then "ipv4" else "ipv6" end) as $e | "  <\($e)>\(.local)</\($e)>"),
    " </interface>"')");
}

std::string without_counters(const std::string &report) {
  std::string kept;
  for (size_t start = 0, end = 0; (end = report.find('\n', start)) != std::string::npos; start = end + 1) {
    const std::string line = report.substr(start, end + 1 - start);
    if (line.find("_") == std::string::npos && line.find("<multicast>") == std::string::npos &&
        line.find("<collisions>") == std::string::npos && line.find("netstats>") == std::string::npos) {
      kept += line;
    }
  }
  return kept;
}

std::string report_of_this_namespace() {
  const outcome result = in_child([] {
    ifi_get_all_ip();
    ifi_dump_all(nullptr);
    ifi_free_all();
  });
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.err, emulated ? result.err : "");
  return result.out;
}

TEST(inventory, matches_what_ip_says) {
  shell(R"(
    ip link set lo up
    ip link add first type veth peer name second; ip link add bridge0 type bridge
    ip link add link first name first.5 type vlan id 5 2>/dev/null || true
    ip link add 'a<b&c' type bridge
    ip addr add 192.0.2.1/24 broadcast + dev first; ip addr add 192.0.2.2/24 dev first
    ip addr add 2001:db8::1/64 dev first nodad; ip addr add 198.51.100.1/32 dev bridge0
    ip link set first up; ip link set bridge0 up)");
  const std::string expected = report_by_ip();
  EXPECT_EQ(without_counters(report_of_this_namespace()), expected);
  EXPECT_NE(expected.find("<master>second<"), std::string::npos);
}

TEST(inventory, a_dump_of_several_datagrams) {
  shell(
      "for i in $(seq 150); do echo link add v$i type veth peer name w$i; done | ip -batch -; ip addr add 192.0.2.1/24 "
      "dev w150");
  EXPECT_EQ(without_counters(report_of_this_namespace()), report_by_ip());
}

TEST(inventory, is_a_cache_until_it_is_freed) {
  shell("ip link set lo up");
  const outcome result = in_child([] {
    const long blocks = live_blocks();
    EXPECT_EQ(ifi_get_all(), &interfaces);
    fail("socket", 1, EMFILE);
    ifi_get_all_ip();
    ifi_entry *lo = ifi_find_by_name("lo");
    ASSERT_NE(lo, nullptr);
    EXPECT_EQ(ifi_find_by_index(lo->index), lo);
    EXPECT_EQ(lo->addrs.next, &lo->addrs);
    EXPECT_EQ(lo->type, 772);
    ifi_free_all();
    ifi_free_all();
    EXPECT_EQ(ifi_find_by_name("lo"), nullptr);
    EXPECT_EQ(live_blocks(), blocks);
    fail("", 0, 0);
    ifi_get_all_ip();
    EXPECT_NE(ifi_find_by_name("lo")->addrs.next, &ifi_find_by_name("lo")->addrs);
    ifi_free(ifi_find_by_name("lo"));
    ifi_free(ifi_alloc());
    ifi_free_all();
    EXPECT_EQ(live_blocks(), blocks);
  });
  EXPECT_EQ(result.status, 0) << result.out << result.err;
}

TEST(inventory, parents_come_from_files_where_the_kernel_gives_no_link) {
  shell("for i in 0 1 2 3 4; do ip link add ra$i type bridge; done");
  const auto body = [](const char *failing_call) {
    unshare(CLONE_NEWNS);
    mount("none", "/proc/sys/net", "tmpfs", 0, nullptr);
    shell(R"(cd /proc/sys/net; mkdir ra1 ra2 ra3 ra4; printf 'ra0 \t\nra2' >ra1/%parent; printf nobody >ra2/%parent
             >ra3/%parent; printf '  \nra0' >ra4/%parent)");
    fail(failing_call, 1, EMFILE);
    ifi_get_all();
    const unsigned masters[] = {0, if_nametoindex("ra0"), 0, 0, 0};
    for (int i = 0; i < 5; ++i) {
      const char name[] = {'r', 'a', static_cast<char>('0' + i), '\0'};
      EXPECT_EQ(ifi_find_by_name(name)->master, static_cast<int>(masters[i])) << name;
    }
    char parent[17] = "kept";
    EXPECT_EQ(iw_parent_name("ra0", parent, sizeof parent), -1);
    EXPECT_EQ(iw_parent_name("ra3", parent, sizeof parent), -1);
    EXPECT_EQ(iw_parent_name(nullptr, parent, sizeof parent), -1);
    EXPECT_EQ(iw_parent_name(std::string(500, 'x').c_str(), parent, sizeof parent), -1);
    EXPECT_EQ(iw_parent_name("ra1", parent, 0), -1);
    EXPECT_STREQ(parent, "kept");
    EXPECT_EQ(iw_parent_name("ra4", parent, sizeof parent), 0);
    EXPECT_STREQ(parent, "");
    EXPECT_EQ(iw_parent_name("ra1", parent, 3), 0);
    EXPECT_STREQ(parent, "ra");
    shell("printf 12345678901234567890 >/proc/sys/net/ra1/%parent");
    EXPECT_EQ(iw_parent_name("ra1", parent, sizeof parent), 0);
    EXPECT_STREQ(parent, "1234567890123456");
  };
  for (const char *failing_call : {"", "opendir"}) {
    const outcome result = in_child([&] { body(failing_call); });
    EXPECT_EQ(result.status, 0) << failing_call << result.out << result.err;
  }
}

const std::string counters = [] {
  std::string words;
  for (uint32_t i = 0; i < 23; ++i) words += bytes_of(0xffffff00 + i);
  return words;
}();
const in6_addr v6 = {{{0x20, 1, 0xd, 0xb8, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1}}};
const std::string full_link =
    link(7, IFF_UP,
         attribute(IFLA_IFNAME, std::string("ra<0\0", 5)) + attribute(IFLA_LINK, bytes_of(7)) +
             attribute(IFLA_ADDRESS, "\x02\xfc\x01\xab") + attribute(IFLA_BROADCAST, "12345678") +
             attribute(IFLA_TXQLEN, bytes_of(1000)) + attribute(IFLA_STATS, counters));

// Fills the list from these messages in the kernel's place, then looks at it; leaks nothing.
void with_dump(const std::string &links, const std::string &addresses, const std::function<void()> &look) {
  const long blocks = live_blocks();
  receive_instead({links + done(), addresses + done()});
  ifi_get_all_ip();
  look();
  ifi_free_all();
  EXPECT_EQ(live_blocks(), blocks);
}

const ipi_entry *nth_address(const ifi_entry *entry, int n) {
  list_link *link = entry->addrs.next;
  while (n-- > 0) link = link->next;
  return reinterpret_cast<ipi_entry *>(link);
}

TEST(crafted_dump, every_field_and_what_is_missing) {
  const std::string lame = link(8, 0, attribute(IFLA_STATS, counters.substr(0, 6)));
  const std::string empty_stats = link(9, 0, attribute(IFLA_IFNAME, "open") + attribute(IFLA_STATS, ""));
  const std::string addresses = address(8, AF_INET, attribute(IFA_LOCAL, "abcd")) +
                                address(7, AF_INET, attribute(IFA_LOCAL, "abcd") + attribute(IFA_ADDRESS, "efgh")) +
                                address(99, AF_INET, attribute(IFA_ADDRESS, "lost")) +
                                address(7, AF_INET6, attribute(IFA_ADDRESS, "ab")) +
                                address(7, AF_INET, attribute(IFA_BROADCAST, "ijkl"));
  expect_clean([&] {
    with_dump(full_link + lame + empty_stats, addresses, [] {
      const ifi_entry *full = ifi_find_by_name("ra<0");
      ASSERT_NE(full, nullptr);
      EXPECT_EQ(std::string(reinterpret_cast<const char *>(full->hwaddr), 6), std::string("\x02\xfc\x01\xab\0\0", 6));
      EXPECT_EQ(std::string(reinterpret_cast<const char *>(full->broadcast), 6), "123456");
      EXPECT_EQ(full->type, 1);
      EXPECT_EQ(full->txqlen, 1000U);
      EXPECT_EQ(full->master, 7);
      EXPECT_STREQ(reinterpret_cast<char *>(nth_address(full, 0)->addr), "efgh");
      EXPECT_EQ(nth_address(full, 0)->prefixlen, 24);
      EXPECT_EQ(std::string(reinterpret_cast<char *>(nth_address(full, 1)->addr), 17), "ab" + std::string(15, '\0'));
      EXPECT_EQ(nth_address(full, 2)->addr, nullptr);
      EXPECT_STREQ(reinterpret_cast<char *>(nth_address(full, 2)->broadcast), "ijkl");
      EXPECT_EQ(&nth_address(full, 3)->list, &full->addrs);

      const ifi_entry *nameless = ifi_find_by_index(8);
      EXPECT_EQ(nameless->name, nullptr);
      EXPECT_STREQ(reinterpret_cast<char *>(nth_address(nameless, 0)->addr), "abcd");
      EXPECT_EQ(bytes_of(*nameless->stats).substr(0, 92), counters.substr(0, 6) + std::string(86, '\0'));
      EXPECT_EQ(ifi_find_by_name("open")->stats, nullptr);  // a name without its NUL
      EXPECT_EQ(ifi_find_by_name(""), nullptr);
    });
  });
}

TEST(crafted_dump, owners_are_those_that_a_search_finds) {
  expect_clean([] {
    std::string links;
    std::string addresses;
    for (const int index : {5, 3, 9, 3, 65536 + 5}) links += link(index, 0, "");
    for (const uint32_t index : {9, 3, 5, 4, 65536 + 5, 65536 + 9}) addresses += address(index, AF_INET, "");
    with_dump(links, addresses, [] {
      std::string owners;
      for (list_link *each = interfaces.next; each != &interfaces; each = each->next) {
        auto *entry = reinterpret_cast<ifi_entry *>(each);
        owners += entry->addrs.next != &entry->addrs ? 'x' : '-';
      }
      EXPECT_EQ(owners, "xxx-x");
    });
  });
}

TEST(crafted_dump, a_message_too_short_for_its_record_reads_as_zero) {
  const outcome result = in_child([] {
    with_dump(message(RTM_NEWLINK, "") + message(RTM_NEWLINK, "123456"), message(RTM_NEWADDR, ""), [] {
      const auto *entry = reinterpret_cast<ifi_entry *>(interfaces.next);
      EXPECT_EQ(entry->index, 0);
      EXPECT_EQ(nth_address(entry, 0)->family, 0);
    });
  });
  EXPECT_EQ(result.status, 0) << result.out;
  EXPECT_EQ(result.err, "!!!Deficit -16, rta_len=0\n!!!Deficit -10, rta_len=0\n!!!Deficit -8, rta_len=0\n");
}

TEST(crafted_dump, each_failing_allocation_costs_its_own_field_alone) {
  const std::string owned = address(7, AF_INET, attribute(IFA_ADDRESS, "abcd") + attribute(IFA_BROADCAST, "efgh"));
  expect_death([&] { fail("allocation", 1, ENOMEM), with_dump(full_link, owned, [] {}); },
               "out of memory, Cannot allocate memory\n");
  for (int nth = 2; nth <= 7; ++nth) {
    expect_clean([&] {
      fail("allocation", nth, ENOMEM);
      with_dump(full_link, owned, [&] {
        const ifi_entry *entry = ifi_find_by_index(7);
        const ipi_entry *first = nth_address(entry, 0);
        EXPECT_EQ(entry->name == nullptr, nth == 2);
        EXPECT_EQ(entry->stats == nullptr, nth == 3);
        EXPECT_EQ(&first->list == &entry->addrs, nth == 4);
        if (nth == 4) return;
        EXPECT_EQ(first->addr == nullptr, nth == 5);
        EXPECT_EQ(first->broadcast == nullptr, nth == 6);
        EXPECT_EQ(calls_seen(), 6);
      });
    });
  }
}

TEST(report, is_the_same_to_the_byte) {
  const std::string addresses = address(7, AF_INET6, attribute(IFA_ADDRESS, bytes_of(v6))) + address(7, AF_INET, "") +
                                address(7, AF_INET, attribute(IFA_ADDRESS, "\xc0\xa8\x01\x02")) +
                                address(7, AF_PACKET, attribute(IFA_ADDRESS, "abcd"));
  const std::string one =
      " <interface>\n  <name>ra<0</name>\n  <status>up</status>\n"
      "  <hwaddr>02:FC:01:AB:00:00</hwaddr>\n  <ipv6>2001:db8::1</ipv6>\n  <ipv4>192.168.1.2</ipv4>\n"
      "  <rx_packets>4294967040</rx_packets>\n  <tx_packets>4294967041</tx_packets>\n  "
      "<rx_bytes>4294967042</rx_bytes>\n"
      "  <tx_bytes>4294967043</tx_bytes>\n  <rx_errors>4294967044</rx_errors>\n  <tx_errors>4294967045</tx_errors>\n"
      "  <rx_dropped>4294967046</rx_dropped>\n  <tx_dropped>4294967047</tx_dropped>\n  "
      "<multicast>4294967048</multicast>\n"
      "  <collisions>4294967049</collisions>\n  <rx_length_errors>4294967050</rx_length_errors>\n"
      "  <rx_over_errors>4294967051</rx_over_errors>\n  <rx_crc_errors>4294967052</rx_crc_errors>\n"
      "  <rx_frame_errors>4294967053</rx_frame_errors>\n  <rx_fifo_errors>4294967054</rx_fifo_errors>\n"
      "  <rx_missed_errors>4294967055</rx_missed_errors>\n  <tx_aborted_errors>4294967056</tx_aborted_errors>\n"
      "  <tx_carrier_errors>4294967057</tx_carrier_errors>\n  <tx_fifo_errors>4294967058</tx_fifo_errors>\n"
      "  <tx_heartbeat_errors>4294967059</tx_heartbeat_errors>\n  <tx_window_errors>4294967060</tx_window_errors>\n"
      "  <rx_compressed>4294967061</rx_compressed>\n  <tx_compressed>4294967062</tx_compressed>\n </interface>\n";
  const std::string bare =
      " <interface>\n  <status>down</status>\n  <hwaddr>00:00:00:00:00:00</hwaddr>\n </interface>\n";
  const struct {
    const char *filter;
    std::string interfaces;
  } rows[] = {{nullptr, one + bare}, {"ra<0", one}, {"ra", ""}, {"", ""}};
  for (const auto &row : rows) {
    const outcome result =
        in_child([&] { with_dump(full_link + link(8, 0, ""), addresses, [&] { ifi_dump_all(row.filter); }); });
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, "<netstats>\n" + row.interfaces + "</netstats>\n");
  }
}

TEST(report, printers_and_formatters_at_their_edges) {
  const outcome result = in_child([] {
    ifi_xml_str_item(nullptr, "x");
    ifi_xml_str_item("a", nullptr);
    ifi_xml_str_item("a", "");
    ifi_xml_int_item("b", UINT32_MAX);
  });
  EXPECT_EQ(result.out, "  <a></a>\n  <b>4294967295</b>\n");
  const uint8_t mac[] = {1, 2, 3, 4, 5, 6};
  char room[6] = "?????";
  EXPECT_STREQ(ifi_mac_ntop(room, 4, mac), "01:");
  EXPECT_EQ(room[4], '?');
  ipi_entry none{};
  EXPECT_EQ(ifi_ip_ntop(room, sizeof room, nullptr), nullptr);
  EXPECT_EQ(ifi_ip_ntop(room, sizeof room, &none), nullptr);
}

}  // namespace
