#include <devfacts/core.h>
#include <devfacts/product.h>
#include <devfacts/wireless.h>
#include <linux/wireless.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <sstream>

#include "support/test.h"
#include "tools/command.h"

using namespace test;

// A driver whose answers a test may change, and what it was asked: number, name, length, flags and first word of the
// room.
struct radio {
  std::string ieee_name = "IEEE 802.11TURBO", essid = "net&5";
  uint16_t essid_length = 5;
  uint8_t disabled = 0;
  iw_freq frequency{241200000, 1, 7, 0xff};
  iw_range_record range{};
  std::string log;
  int refused = 0;

  radio() {
    range.num_bitrates = 3, range.num_frequency = 255;
    for (int i = 0; i < 32; ++i) range.bitrate[i] = 1500000 * (i + 1);
    for (int i = 0; i < 255; ++i) range.freq[i] = {2407 + 5 * i, 6, {0xff, 0xff}, 1000 + i, {}};
  }
  void start() {
    drive([this](unsigned long number, void *record) {
      return answer(static_cast<int>(number), *static_cast<iwreq *>(record)) ? 0 : (errno = EOPNOTSUPP, -1);
    });
  }
  void note(int number, const iwreq &request) {
    char line[80];
    std::snprintf(line, sizeof line, "%x %.16s %u %x\n", number, request.ifr_ifrn.ifrn_name, request.u.data.length,
                  request.u.data.flags);
    log += line;
    const bool has_room = request.u.data.length != 0;
    EXPECT_TRUE(has_room || shown(&request.u, sizeof request.u) == std::string(sizeof request.u, '.'));
  }
  template <class Answer>
  void fill(const iwreq &request, const Answer &answer) {
    std::memcpy(request.u.data.pointer, &answer, std::min<size_t>(sizeof answer, request.u.data.length));
  }
  bool answer(int number, iwreq &request) {
    note(number, request);
    auto &u = request.u;
    if (number == refused || refused < 0) return false;
    switch (number) {
      case 0x8B01: std::memcpy(u.name, ieee_name.data(), 16); break;
      case 0x8B1B:
        std::memcpy(u.essid.pointer, essid.data(), essid.size());
        u.essid.length = essid_length, u.essid.flags = 0x1281;
        break;
      case 0x8B07: u.mode = 6; break;
      case 0x8B05: u.freq = frequency; break;
      case 0x8B15: u.ap_addr = {1, {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14}}; break;
      case 0x8B21: u.bitrate = {-54000000, 1, 1, 0xffff}; break;
      case 0x8B0B: fill(request, range), u.data.length = sizeof range; break;
      case 0x8B0F: fill(request, iw_statistics{0xffff, {1, 0xc3, 0xa1, 0xff}, {}, {}}); break;
      case 0x8B2B:
        std::memset(u.data.pointer, 'k', u.data.length);
        u.data.length = 5, u.data.flags = 0xa802;
        break;
      case 0x8B27: u.txpower = {INT32_MIN, 1, disabled, 0xffff}; break;
      case 0x8BED: *static_cast<uint32_t *>(u.data.pointer) ^= 1; break;
      default: return false;
    }
    return true;
  }
};

std::string bytes(const iw_status &status) { return bytes_of(status); }

void print_status(const char *name) {
  char text[20];
  char *arguments[] = {std::strcpy(text, name), nullptr};
  EXPECT_EQ(devfacts::tool::wireless(arguments), devfacts::tool::done);
}

TEST(wireless, the_whole_record_comes_from_these_requests_and_files) {
  const auto body = [product = data("radios"), requests = data("requests"), calls = data("radios.calls")] {
    write_file("/etc/product", product);
    write_file("/proc/net/radio0/txstats", "Packets: 4294967295\nRetried\t= 7\n");
    write_file("/proc/net/radio0/rxstats", "Packets 4000000000 x\nPackets: 5\n Dropped last:9\n");
    write_file("/proc/net/madwifi/radio0/state_cnt",
               "INIT:1 msecs SCAN: -2 msecs AUTH:\n3\nmsecs\nASSOC: 4 msecs\nRUN: 9223372036854775807");
    radio driver;
    driver.start();
    print_status("radio0");
    EXPECT_EQ(driver.log, "8b01 radio0 0 0\n" + requests);
    EXPECT_EQ(asked(), calls);
    const int control = ioctl_socket();
    iw_status status, again;
    std::memset(&status, 0x5a, sizeof status), std::memset(&again, 0, sizeof again);
    for (iw_status *each : {&status, &again}) EXPECT_EQ(iw_info(each, "radio0"), 0);
    EXPECT_EQ(asked(), "");
    EXPECT_EQ(bytes(status), bytes(again));
    EXPECT_EQ(status.ieee_name + std::string(1, status.ap_addr.sa_data[13]), "IEEE 802.11TURBO\x0e");
    EXPECT_EQ(status.ap_addr.sa_family, 1);
    EXPECT_EQ(close(control), -1) << "the control socket was left open";
    driver.refused = -1, driver.log.clear();
    std::memset(&again, 0, sizeof again);
    again.ifname = "none", again.vendor = cpu_vendor(), again.limits = status.limits;
    EXPECT_EQ(iw_info(&status, again.ifname), 0);
    EXPECT_EQ(bytes(status), bytes(again)) << "a query that is refused stopped another";
    EXPECT_EQ(std::count(driver.log.begin(), driver.log.end(), '\n'), 10);
  };
  on_device(body, data("wireless.xml") + "||0");
}

TEST(wireless, a_query_that_is_refused_writes_nothing) {
  radio driver;
  driver.start();
  driver.refused = 0x8B0B;
  iw_status status{};
  status.channel = 9;
  EXPECT_EQ(iw_freq_channel(&status, "radio0"), -1);
  EXPECT_EQ(status.frequency + status.channel, 2412000009.0);
  iw_range_record range;
  std::memset(&range, 0x5a, sizeof range);
  EXPECT_EQ(get_range_info("radio0", &range), -1);
  EXPECT_EQ(bytes_of(range), std::string(sizeof range, 0x5a));
  drive([](unsigned long, void *) { return 0; });  // and writes nothing
  EXPECT_EQ(get_range_info("radio0", &range), 0);
  EXPECT_EQ(bytes_of(range), std::string(sizeof range, 0));
  std::strcpy(status.ieee_name, "IEEE 802.11");
  EXPECT_EQ(iw_ieee_name(&status, "radio0"), 0);
  EXPECT_EQ(shown(status.ieee_name, 17), std::string(17, '.'));
}

TEST(wireless, names_reach_the_driver_whole_or_cut) {
  radio driver;
  driver.start();
  const int control = ioctl_socket();
  for (const char *name :
       {"", "radio0123456789", "radio01234567890", "radio01234567890 and so on to behind the record's end"})
    EXPECT_EQ(iw_capable(name), 1);
  driver.refused = 0x8B01;
  EXPECT_EQ(iw_capable("x"), 0);
  EXPECT_EQ(driver.log,
            "8b01  0 0\n8b01 radio0123456789 0 0\n8b01 radio01234567890 0 0\n8b01 radio01234567890 0 0\n8b01 x 0 0\n");
  EXPECT_EQ(close(control), 0) << "the control socket was closed";
}

TEST(wireless, network_names_of_any_length_end_inside_their_field) {
  for (const uint16_t length : {0, 62, 63, 64, 65535}) {
    radio driver;
    driver.essid = std::string(63, 'x'), driver.essid_length = length, driver.disabled = 1;
    driver.start();
    iw_status status;
    std::memset(&status, 'y', sizeof status);
    EXPECT_EQ(iw_essid(&status, "r") + iw_txpower(&status, "r"), 0);
    EXPECT_EQ(status.txpower, 0);
    EXPECT_EQ(status.essid_length, length);
    EXPECT_EQ(strnlen(status.essid, 64), std::min<size_t>(length, 63));
    EXPECT_EQ(status.essid_flags, 0x81);
  }
}

TEST(wireless, rates_and_channels_stay_inside_their_tables) {
  for (const auto &row : rows("ranges")) {
    radio driver;
    int m = 0, e = 0, frequencies = 0, rates = 0;
    std::istringstream(row[0]) >> m >> e >> frequencies >> rates;
    driver.frequency = {m, static_cast<int16_t>(e), 0, 0};
    driver.range.num_frequency = frequencies, driver.range.num_bitrates = rates;
    driver.range.freq[7] = {2412, 0, {}, 77, {}}, driver.range.freq[8] = {24120, -1, {}, 78, {}};
    driver.start();
    iw_status status;
    std::memset(&status, -1, sizeof status);
    EXPECT_EQ(iw_freq_channel(&status, "r") + iw_bitrates(&status, "r"), 0);
    std::ostringstream seen;
    seen << status.channel << " " << status.bit_rates[0] << " " << status.bit_rates[31];
    EXPECT_EQ(seen.str(), row[1]) << row[0];
    EXPECT_EQ(status.frequency, m * std::pow(10.0, e));
  }
  const char odd[] = "x\xff\xff\xff\xff\0\3";  // at an odd address
  EXPECT_EQ(iw_freq2double(odd + 1), __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__ ? -1000.0 : -INFINITY);
}

TEST(wireless, the_private_request_carries_a_word) {
  radio driver;
  driver.start();
  uint32_t room[512]{};
  EXPECT_EQ(iw_get_channels("r", 0x12345678, room), 0);
  EXPECT_EQ(room[0], 0x12345679U);
  driver.refused = 0x8BED;
  EXPECT_EQ(iw_get_channels("r", 0xfeedface, room), -1);
  EXPECT_EQ(room[0], 0xfeedface);
  EXPECT_EQ(driver.log, "8bed r 2048 0\n8bed r 2048 0\n");
}

TEST(wireless, words) {
  std::string seen;
  const auto add = [&](const char *word) { seen += word == nullptr ? "- " : word + std::string(" "); };
  for (const uint32_t mode : {0U, 1U, 2U, 3U, 4U, 5U, 6U, 7U, UINT32_MAX}) add(iw_operation_mode2str(mode));
  for (const uint32_t flags : {0xE000, 0x6000, 0x2000, 0x1fff, 0x10000}) add(iw_security_mode2str(flags));
  iw_status status{};
  for (const int32_t rate : {0, 1500000, 3000000, 6000000}) status.bit_rates[0] = rate, add(iw_bandwidth2str(&status));
  for (const char *name : {"802.11t", "802.11T"}) std::strcpy(status.ieee_name, name), add(iw_bandwidth2str(&status));
  EXPECT_EQ(seen,
            "Auto Ad-Hoc Managed Master Repeater Secondary Monitor - - off restricted open - - "
            "full quarter half full full turbo ");
}

TEST(counters, files_of_all_kinds) {
  on_device([table = rows("counters")] {
    iw_status none{};
    EXPECT_EQ(iw_read_states(&none), -1);
    for (const auto &row : table) {
      write_file("/proc/net/r/rxstats", row[0]), write_file("/proc/net/madwifi/r/state_cnt", row[0]);
      iw_status s{};
      s.ifname = "r", s.rx_total = s.state_init = s.state_scan = s.state_auth = s.state_assoc = s.state_run = 7;
      std::ostringstream seen;
      seen << iw_rx_total(&s, "r") << " " << s.rx_total << " " << iw_read_states(&s) << " " << s.state_init << " "
           << s.state_scan << " " << s.state_auth << " " << s.state_assoc << " " << s.state_run;
      EXPECT_EQ(seen.str(), row[1]) << row[0];
    }
    std::string cut(4078, '/');  // leaves room for all but the last letter
    cut[0] = 'r';
    for (const char *other : {"r/rxstat", "(null)/rxstats"})
      write_file(std::string("/proc/net/") + other, "Packets: 1");
    for (const char *name : {static_cast<const char *>(nullptr), "none", cut.c_str()})
      EXPECT_EQ(iw_rx_total(&none, name), -1);
  });
}

TEST(peers, rows_are_added_in_the_order_of_the_file) {
  const auto body = [file = data("peers")] {
    char name[] = "ra0", *named[] = {name, nullptr}, *unnamed[] = {nullptr};
    EXPECT_EQ(devfacts::tool::peers(named), 0);
    write_file("/proc/net/ra0/peers", file);
    for (char **arguments : {named, unnamed}) EXPECT_EQ(devfacts::tool::peers(arguments), 0);
    iw_peers_list list{};
    const std::string cut = "ra0" + std::string(237, '/');  // leaves room for all but the last letter
    write_file("/proc/net/ra0/peer", file);
    for (const char *each : {"ra0", static_cast<const char *>(nullptr), cut.c_str()}) iw_peers(&list, each);
    EXPECT_EQ(list.count, 6U);
    for (int i = 0; i < 2; ++i) iw_peers_free(&list), iw_peers_free(nullptr);
    EXPECT_TRUE(list.count == 0 && list.rows == nullptr && live_blocks() == 0);
    write_file("/proc/net/ra0/peers", "State\nPeer MAC address\nPeer MAC address of none:");
    EXPECT_EQ(iw_link_established(), 1);
  };
  on_device(body, data("peers.xml") + "||0");
}

std::string limits_of(const char *name) {
  iw_radio_limits_t limits;
  EXPECT_EQ(iw_radio_limits(&limits, name), 0);
  std::ostringstream seen;
  for (const auto &limit : {limits.antenna_gain, limits.txpower_offset, limits.min_txpower, limits.frequency_offset})
    seen << +limit.present << " " << limit.value << " ";
  seen << limits.allowed_modulations << " " << limits.ieee_band;
  return seen.str();
}

TEST(limits, the_first_call_settles_them) {
  for (const auto &row : rows("limits")) {  // the name, the limits, the iterator
    on_device([&, file = data("radios")] {
      write_file("/etc/product", file);
      EXPECT_EQ(iw_countrycode_limits(), std::string("DE"));
      limits_of(row[0].c_str());
      EXPECT_NE(asked().find("free " + row[2]), std::string::npos) << row[0];
      prod_spec_close();
      EXPECT_EQ(limits_of("bare"), row[1]) << row[0];
      EXPECT_EQ(asked(), "destroy\n");
    });
  }
  on_device([] {
    write_file("/etc/product", "damaged");
    for (int i = 0; i < 2; ++i) {
      EXPECT_EQ(limits_of("radio0"), "0 0 0 0 0 0 0 0 OFDM 5GHz");
      EXPECT_EQ(iw_countrycode_limits(), nullptr);
      write_file("/etc/product", "radio.0.master=radio0\nradio.0.ieee-band=x");
    }
  });
}
