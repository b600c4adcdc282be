#include <devfacts/core.h>
#include <devfacts/product.h>
#include <unistd.h>

#include <cstring>

#include "support/driver.h"
#include "tools/command.h"

using namespace test;

TEST(wireless, records_are_cleared_before_they_are_filled) {
  const driver device;
  iw_status status, clean{};
  std::memset(&status, 0x5a, sizeof status);
  for (iw_status *each : {&status, &clean}) EXPECT_EQ(iw_info(each, "radio0"), 0);
  EXPECT_EQ(bytes_of(status), bytes_of(clean));
  iw_range_record range;
  std::memset(&range, 0x5a, sizeof range);
  fail("ioctl", 1, EPERM);
  EXPECT_EQ(get_range_info("radio0", &range), -1);
  EXPECT_EQ(bytes_of(range), std::string(sizeof range, 0x5a));
  drive([](unsigned long, void *) { return 0; });  // and writes nothing
  EXPECT_EQ(get_range_info("radio0", &range) + iw_ieee_name(&status, "radio0"), 0);
  EXPECT_EQ(bytes_of(range) + bytes_of(status.ieee_name), std::string(sizeof range + sizeof status.ieee_name, 0));
}

TEST(wireless, names_reach_the_driver_whole_or_cut_and_a_word_with_the_private_request) {
  const driver device;
  const int control = ioctl_socket();
  uint32_t room[512]{};
  for (const auto &row : rows("names")) EXPECT_EQ(iw_capable(row[0].c_str()), 1);
  EXPECT_EQ(iw_get_channels("r", 0x12345678, room), 0);
  EXPECT_EQ(bytes_of(room), bytes_of(0x12345678) + std::string(2044, big_endian ? 0x12 : 0x78));
  EXPECT_EQ(device.log, data("names.asked"));
  fail("ioctl", 1, EPERM);
  EXPECT_EQ(iw_get_channels("r", 0x12345678, room), -1);
  EXPECT_EQ(close(control), 0) << "the control socket was closed";
}

TEST(wireless, answers_of_any_size_stay_inside_their_fields) {
  for (const auto &row : rows("ranges")) {  // mantissa, exponent, frequencies, rates, a name's length; what they give
    driver device;
    device.essid_length = std::stoi(row[4]), device.disabled = 0x80;
    device.frequency = {std::stoi(row[0]), static_cast<int16_t>(std::stoi(row[1])), 0, 0};
    device.range.num_frequency = std::stoi(row[2]), device.range.num_bitrates = std::stoi(row[3]);
    device.range.freq[7] = {2412, 0, {}, 77, {}}, device.range.freq[8] = {24120, -1, {}, 78, {}};
    iw_status s;
    std::memset(&s, -1, sizeof s);
    for (const auto ask : {iw_freq_channel, iw_bitrates, iw_essid, iw_txpower}) EXPECT_EQ(ask(&s, "r"), 0);
    EXPECT_EQ(listed(s.channel, s.bit_rates[0], s.bit_rates[31], s.frequency), row[5]);
    EXPECT_EQ(listed(s.essid_length, strnlen(s.essid, 64), s.essid_flags, s.txpower), row[6]);
  }
  const char odd[] = "x\xff\xff\xff\xff\0\3";  // at an odd address
  EXPECT_EQ(listed(iw_freq2double(odd + 1)), big_endian ? "-1000.000000" : "-inf");
}

TEST(wireless, words) {
  std::string seen;
  const auto add = [&](const char *word) { seen += word == nullptr ? "-\n" : word + std::string("\n"); };
  for (const uint32_t mode : {0U, 1U, 2U, 3U, 4U, 5U, 6U, 7U, UINT32_MAX}) add(iw_operation_mode2str(mode));
  for (const uint32_t flags : {0xE000, 0x6000, 0x2000, 0x1fff, 0x10000}) add(iw_security_mode2str(flags));
  iw_status status{};
  for (const int32_t rate : {0, 1500000, 3000000, 6000000}) status.bit_rates[0] = rate, add(iw_bandwidth2str(&status));
  for (const char *name : {"802.11t", "802.11T"}) std::strcpy(status.ieee_name, name), add(iw_bandwidth2str(&status));
  EXPECT_EQ(seen, data("modes"));
}

TEST(counters, files_of_all_kinds) {
  on_device([table = rows("counters"), others = rows("counters.others")] {
    for (const auto &row : others) write_file(row[0], row[1]);
    const std::string cut = std::string("r").append(4077, '/');  // leaves room for all but the last letter
    iw_status s{};
    for (const char *name : {static_cast<const char *>(nullptr), "none", cut.c_str()})
      EXPECT_EQ(iw_rx_total(&s, name) + iw_read_states(&s), -2);
    s.ifname = "r";
    for (const auto &row : table) {
      write_file("/proc/net/r/rxstats", row[0]), write_file("/proc/net/madwifi/r/state_cnt", row[0]);
      s.rx_total = s.state_init = s.state_scan = s.state_auth = s.state_assoc = s.state_run = 7;
      EXPECT_EQ(listed(iw_rx_total(&s, "r"), s.rx_total, iw_read_states(&s)), row[1]) << row[0];
      EXPECT_EQ(listed(s.state_init, s.state_scan, s.state_auth, s.state_assoc, s.state_run), row[2]) << row[0];
    }
  });
}

// The table itself is among the operations whose calls fail in turn.
TEST(peers, names_are_whole_and_lists_are_freed) {
  on_device([file = data("peers")] {
    const std::string whole = std::string("ra0").append(236, '/'), cut = whole + "/";  // by its last letter
    write_file("/proc/net/ra0/peers", file), write_file("/proc/net/ra0/peer", file);
    iw_peers_list list{};
    for (const char *each : {static_cast<const char *>(nullptr), whole.c_str(), cut.c_str()}) iw_peers(&list, each);
    EXPECT_EQ(list.count, 6U);
    for (int i = 0; i < 2; ++i) iw_peers_free(&list), iw_peers_free(nullptr);
    EXPECT_TRUE(list.count == 0 && list.rows == nullptr && live_blocks() == 0);
    write_file("/proc/net/ra0/peers", "State\nPeer MAC address\nPeer MAC address of none:");
    EXPECT_EQ(iw_link_established(), 1);
  });
}

TEST(limits, the_first_call_settles_them) {
  for (const auto &row : rows("limits")) {  // the product file if it is another one, the name, the limits
    on_device([&, has_radios = row[0].empty(), radios = data("radios")] {
      write_file("/etc/product", has_radios ? radios : row[0]);
      iw_radio_limits_t l;
      EXPECT_EQ(iw_radio_limits(&l, row[1].c_str()), 0);
      EXPECT_EQ(asked().find("free iterator") != std::string::npos, has_radios) << row[1];
      prod_spec_close();
      write_file("/etc/product", "radio.0.master=bare\nradio.0.ieee-band=x");
      EXPECT_EQ(iw_radio_limits(&l, "bare"), 0);
      EXPECT_EQ(asked(), has_radios ? "destroy\n" : "");
      std::string seen;
      for (const auto &limit : {l.antenna_gain, l.txpower_offset, l.min_txpower, l.frequency_offset})
        seen += listed(limit.present, limit.value) + " ";
      EXPECT_EQ(seen + l.allowed_modulations + " " + l.ieee_band, row[2]) << row[1];
    });
  }
}
