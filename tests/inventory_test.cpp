// The interfaces of real namespaces and of crafted dumps, and the report on them.
#include <devfacts/net.h>
#include <net/if.h>
#include <netinet/in.h>
#include <sched.h>
#include <sys/mount.h>

#include <regex>

#include "support/test.h"

using namespace test;

// The report without its counters, as `ip` would have it.
constexpr const char *report_by_ip = R"(ip -j addr | jq -r '"<netstats>", (.[] |
    " <interface>", "  <name>\(.ifname)</name>", "  <status>\(if .flags | index("UP") then "up" else "down" end)</status>",
    (if .link then "  <master>\(.link)</master>" else empty end), "  <hwaddr>\(.address | ascii_upcase)</hwaddr>",
    (.addr_info[] | (if .family == "inet" then "ipv4" else "ipv6" end) as $e | "  <\($e)>\(.local)</\($e)>"),
    " </interface>"), "</netstats>"')";

void hush_where_emulated() {
  if (emulated) stderr = std::tmpfile();
}

TEST(inventory, is_what_ip_says_in_several_datagrams) {
  shell(R"(ip link set lo up
    ip link add first type veth peer name second; ip link add bridge0 type bridge; ip link add 'a<b&c' type bridge
    ip link add link first name first.5 type vlan id 5 2>/dev/null || true  # not every kernel has it
    for i in $(seq 150); do echo link add v$i type veth peer name w$i; done | ip -batch -
    for it in 192.0.2.1/24 192.0.2.2/24 2001:db8::1/64; do ip addr add $it dev first; done; ip link set first up
    ip addr add 198.51.100.1/32 dev bridge0; ip addr add 203.0.113.1/24 dev w150; ip link set bridge0 up)");
  const std::string report =
      run([] { hush_where_emulated(), ifi_get_all_ip(), ifi_dump_all(nullptr), ifi_free_all(); });
  const std::regex counter("  <(multicast|collisions|[rt]x_[a-z_]+)>[0-9]+</\\1>\n");
  EXPECT_EQ(std::regex_replace(report, counter, ""), shell(report_by_ip) + "||0");
}

TEST(inventory, is_a_cache_until_it_is_freed) {
  shell("ip link set lo up");
  expect_run("||0", [] {
    hush_where_emulated();
    EXPECT_EQ(ifi_get_all(), &interfaces);
    fail("socket", 1, EMFILE);
    ifi_get_all_ip();
    const ifi_entry *lo = ifi_find_by_name("lo");
    EXPECT_EQ(ifi_find_by_index(lo->index), lo);
    EXPECT_EQ(lo->addrs.next, &lo->addrs);
    for (int i = 0; i < 2; ++i) ifi_free_all();
    EXPECT_EQ(ifi_find_by_name("lo"), nullptr);
    fail("", 0, 0);
    ifi_get_all_ip();
    EXPECT_NE(ifi_find_by_name("lo")->addrs.next, &ifi_find_by_name("lo")->addrs);
    for (ifi_entry *each : {ifi_find_by_name("lo"), ifi_alloc()}) ifi_free(each);
    ifi_free_all();
    EXPECT_EQ(live_blocks(), 0);
  });
}

TEST(inventory, parents_come_from_files_where_the_kernel_gives_no_link) {
  const auto masters = [](const char *failing_call) {
    hush_where_emulated();
    unshare(CLONE_NEWNS);
    mount("none", "/proc/sys/net", "tmpfs", 0, nullptr);
    shell(R"(cd /proc/sys/net; mkdir lo ra1 ra2 ra3 ra4; printf 'lo' >lo/%parent; printf 'lo \t\nra2' >ra1/%parent
             printf nobody >ra2/%parent; >ra3/%parent; printf '  \nlo' >ra4/%parent)");
    fail(failing_call, 1, EMFILE);
    ifi_get_all();
    for (const list_link *link = interfaces.next; link != &interfaces; link = link->next) {
      std::printf("%d ", reinterpret_cast<const ifi_entry *>(link)->master);
    }
    std::string outside = link(9, 0, attribute(IFLA_IFNAME, "ra1"));  // a program may collect by itself
    nl_collect_interface(reinterpret_cast<nlmsghdr *>(outside.data()));
    EXPECT_EQ(reinterpret_cast<const ifi_entry *>(interfaces.prev)->master, 1);
  };
  expect_run("1 ||0", [&] { masters(""); });
  shell("for i in 0 1 2 3 4; do ip link add ra$i type bridge; done");
  for (const char *failing_call : {"", "open", "syscall"}) {
    expect_run("1 0 1 0 0 0 ||0", [&] { masters(failing_call); });
  }
}

TEST(inventory, parent_names_are_the_first_line_of_their_file) {
  unshare(CLONE_NEWNS);
  mount("none", "/proc/sys/net", "tmpfs", 0, nullptr);
  shell(
      "cd /proc/sys/net; mkdir a b c; printf 12345678901234567890 >a/%parent; printf ' \\nra0' >b/%parent; >c/%parent");
  char parent[17] = "kept";
  const std::string long_name(500, 'x');
  for (const char *name : {static_cast<const char *>(nullptr), "c", "d", long_name.c_str()}) {
    EXPECT_EQ(iw_parent_name(name, parent, sizeof parent), -1);
  }
  EXPECT_EQ(iw_parent_name("a", parent, 0), -1);
  EXPECT_STREQ(parent, "kept");
  EXPECT_EQ(iw_parent_name("b", parent, sizeof parent), 0);
  EXPECT_STREQ(parent, "");
  EXPECT_EQ(iw_parent_name("a", parent, sizeof parent), 0);
  EXPECT_STREQ(parent, "1234567890123456");
}

const std::string counters =  // the same words in either order of bytes
    "AAAABBBBCCCCDDDDEEEEFFFFGGGGHHHHIIIIJJJJKKKKLLLLMMMMNNNNOOOOPPPPQQQQRRRRSSSSTTTTUUUUVVVVWWWW";

// Interface 7 with all that a link message can have.
const std::string full_link =
    link(7, IFF_UP,
         attribute(IFLA_IFNAME, std::string("ra<0\0", 5)) + attribute(IFLA_LINK, bytes_of(7)) +
             attribute(IFLA_ADDRESS, "\x02\xfc\x01\xab") + attribute(IFLA_BROADCAST, "12345678") +
             attribute(IFLA_TXQLEN, bytes_of(1000)) + attribute(IFLA_STATS, counters));

void print_interface(const ifi_entry *entry) {
  const char *name = entry->name == nullptr ? "-" : entry->name;
  std::printf("%d %s %d %u %d %u", entry->index, name, entry->type, entry->flags, entry->master, entry->txqlen);
  std::printf(" %s %s", shown(entry->hwaddr, 6).c_str(), shown(entry->broadcast, 6).c_str());
  if (entry->stats != nullptr) std::printf(" %u %u", entry->stats->rx_packets, entry->stats->tx_compressed);
  for (const list_link *link = entry->addrs.next; link != &entry->addrs; link = link->next) {
    const auto *each = reinterpret_cast<const ipi_entry *>(link);
    const std::string address = shown(each->addr, 17), broadcast = shown(each->broadcast, 17);
    std::printf("\n  %d/%d %s %s", each->family, each->prefixlen, address.c_str(), broadcast.c_str());
  }
  std::printf("\n");
}

void print_list() {
  for (list_link *link = interfaces.next; link != &interfaces; link = link->next) {
    print_interface(reinterpret_cast<ifi_entry *>(link));
  }
}

int lowest_free_descriptor() {
  const int fd = dup(STDIN_FILENO);
  close(fd);
  return fd;
}

// Fills the list from these messages in the kernel's place, then looks at it; leaks nothing.
void with_dump(const std::string &links, const std::string &addresses, const std::function<void()> &look) {
  const int free_descriptor = lowest_free_descriptor();
  receive_instead({links + done(), addresses + done()});
  ifi_get_all_ip();
  look();
  EXPECT_EQ(ifi_find_by_name(""), nullptr);
  ifi_free_all();
  EXPECT_EQ(live_blocks(), 0);
  EXPECT_EQ(lowest_free_descriptor(), free_descriptor);
}

TEST(crafted_dump, every_field_and_what_is_missing) {
  const std::string nameless = link(8, 0, attribute(IFLA_STATS, counters.substr(0, 4)));
  const std::string bare = link(9, 0, attribute(IFLA_IFNAME, "no-nul") + attribute(IFLA_STATS, ""));
  const std::string addresses = address(8, AF_INET, attribute(IFA_LOCAL, "abcd")) +
                                address(7, AF_INET, attribute(IFA_LOCAL, "abcd") + attribute(IFA_ADDRESS, "efgh")) +
                                address(99, AF_INET, attribute(IFA_ADDRESS, "lost")) +
                                address(7, AF_INET6, attribute(IFA_ADDRESS, "ab")) +
                                address(7, AF_INET, attribute(IFA_BROADCAST, "ijkl"));
  expect_run(data("fields"), [&] { with_dump(full_link + nameless + bare, addresses, print_list); });
}

TEST(crafted_dump, owners_are_those_that_a_search_finds) {
  const struct {
    std::vector<int> links;
    std::string owners;  // of an address each
  } rows[] = {{{5, 3, 9, 3, 65536 + 5}, "xxx-x"}, {{5, 3, 9, 65536 + 6}, "xxx-"}};
  std::string addresses;
  for (const uint32_t index : {9, 3, 5, 4, 65536 + 5, 65536 + 9}) addresses += address(index, AF_INET, "");
  const auto print_owners = [] {
    for (const list_link *link = interfaces.next; link != &interfaces; link = link->next) {
      const auto *entry = reinterpret_cast<const ifi_entry *>(link);
      std::printf("%s", entry->index >= 100 && entry->index < 1000 ? ""
                        : entry->addrs.next != &entry->addrs       ? "x"
                                                                   : "-");
    }
  };
  for (const auto &row : rows) {
    for (const int others : {0, 28, 100}) {  // before and behind; the many have a table, unless memory for it is out
      std::string links, behind;
      for (int i = 0; i < others; ++i) links += link(100 + i, 0, ""), behind += link(300 + i, 0, "");
      for (const int index : row.links) links += link(index, 0, "");
      for (const int failing : {0, 33}) {
        expect_run(row.owners + "||0", [&] {
          fail("allocation", failing, ENOMEM);
          with_dump(links + behind, addresses, print_owners);
        });
      }
    }
  }
}

TEST(crafted_dump, a_message_too_short_for_its_record_reads_as_zero) {
  const std::string links = message(RTM_NEWLINK, "") + message(RTM_NEWLINK, std::string(6, '\0'));
  expect_run(data("short"), [&] { with_dump(links, message(RTM_NEWADDR, ""), print_list); });
}

TEST(crafted_dump, each_failing_allocation_costs_its_own_field_alone) {
  const std::string owned = address(7, AF_INET, attribute(IFA_ADDRESS, "abcd") + attribute(IFA_BROADCAST, "efgh"));
  std::string ends;
  for (int nth = 1; nth <= 7; ++nth) {
    ends += run([&] { fail("allocation", nth, ENOMEM), with_dump(full_link, owned, print_list); });
  }
  EXPECT_EQ(ends, data("allocations"));
}

TEST(report, is_the_same_to_the_byte) {
  const std::string addresses = address(7, AF_INET6, attribute(IFA_ADDRESS, std::string(15, '\0') + '\x01')) +
                                address(7, AF_INET, "") +
                                address(7, AF_INET, attribute(IFA_ADDRESS, "\xc0\xa8\x01\x02")) +
                                address(7, AF_PACKET, attribute(IFA_ADDRESS, "abcd"));
  const auto print_reports = [] {
    for (const char *filter : {static_cast<const char *>(nullptr), "ra<0", "ra", ""}) ifi_dump_all(filter);
  };
  expect_run(data("reports.xml") + "||0", [&] { with_dump(full_link + link(8, 0, ""), addresses, print_reports); });
}
