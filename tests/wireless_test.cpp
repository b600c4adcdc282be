#include <devfacts/core.h>
#include <devfacts/wireless.h>
#include <unistd.h>

#include "support/driver.h"
#include "support/faults.h"
#include "support/process.h"

using namespace test;

TEST(wireless, names_reach_the_driver_cut_and_a_word_with_the_private_request) {
  const driver device;
  const int control = ioctl_socket();
  uint32_t buffer[512]{};
  for (const char *name : {"", "radio0123456789", "radio0123456789 and more"}) EXPECT_EQ(iw_capable(name), 1);
  EXPECT_EQ(iw_get_channels("r", 0x12345678, buffer), 0);
  EXPECT_EQ(bytes_of(buffer), bytes_of(0x12345678) + std::string(2044, is_big_endian ? 0x12 : 0x78));
  EXPECT_EQ(device.log, "8b01  0 0\n8b01 radio0123456789 0 0\n8b01 radio0123456789  0 0\n8bed r 2048 0\n");
  fail("ioctl", 1, EPERM);
  EXPECT_EQ(iw_get_channels("r", 0x12345678, buffer), -1);
  for (const int failing : {1, 2}) {  // the frequency, the range
    iw_status status{};
    fail("ioctl", failing, EPERM);
    EXPECT_EQ(iw_freq_channel(&status, "r"), -1);
  }
  EXPECT_EQ(close(control), 0) << "the control socket was closed";
}

TEST(wireless, answers_of_any_size_stay_inside_their_fields) {
  constexpr struct {
    int mantissa, exponent, frequencies, rates, essid_length;
    const char *status;  // channel, first and last rate, frequency
    const char *texts;   // the length of the name, as told and of its text, flags, power
  } cases[] = {
      {2412, 6, 255, 31, 0, "1001 1500000 -1 2412000000.000000 ", "0 0 129 0 "},
      {2412, 6, 1, 32, 62, "-1 1500000 48000000 2412000000.000000 ", "62 62 129 0 "},
      {2407, 6, 1, 255, 63, "1000 1500000 48000000 2407000000.000000 ", "63 63 129 0 "},
      {367700, 4, 255, 0, 64, "1254 -1 -1 3677000000.000000 ", "64 63 129 0 "},
      {3677, 6, 254, 33, 65535, "-1 1500000 48000000 3677000000.000000 ", "65535 63 129 0 "},
      {24120, -1, 255, 0, 5, "77 -1 -1 2412.000000 ", "5 5 129 0 "},
      {2412, 32767, 255, 0, 5, "-1 -1 -1 inf ", "5 5 129 0 "},
  };
  for (const auto &each : cases) {
    driver device;
    device.essid_length = static_cast<uint16_t>(each.essid_length);
    device.txpower_disabled = 0x80;
    device.frequency = {each.mantissa, static_cast<int16_t>(each.exponent), 0, 0};
    device.range.num_frequency = static_cast<uint8_t>(each.frequencies);
    device.range.num_bitrates = static_cast<uint8_t>(each.rates);
    device.range.freq[7] = {2412, 0, {}, 77, {}};
    device.range.freq[8] = {24120, -1, {}, 78, {}};
    iw_status s;
    std::memset(&s, -1, sizeof s);
    for (const auto query : {iw_freq_channel, iw_bitrates, iw_essid, iw_txpower}) EXPECT_EQ(query(&s, "r"), 0);
    EXPECT_EQ(listed(s.channel, s.bit_rates[0], s.bit_rates[31], s.frequency), each.status);
    EXPECT_EQ(listed(s.essid_length, strnlen(s.essid, 64), s.essid_flags, s.txpower), each.texts);
  }
  const char odd[] = "x\xff\xff\xff\xff\0\3";  // at an odd address
  EXPECT_EQ(listed(iw_freq2double(odd + 1)), is_big_endian ? "-1000.000000 " : "-inf ");
}

TEST(wireless, words) {
  std::string words;
  for (const uint32_t mode : {0U, 1U, 2U, 3U, 4U, 5U, 6U, 7U}) words += text_or_none(iw_operation_mode2str(mode)) + " ";
  EXPECT_EQ(words, "Auto Ad-Hoc Managed Master Repeater Secondary Monitor (none) ");
  words.clear();
  for (const uint32_t flags : {0xE000, 0x6000, 0x2000, 0x1fff})
    words += text_or_none(iw_security_mode2str(flags)) + " ";
  EXPECT_EQ(words, "off restricted open (none) ");
  words.clear();
  for (const int32_t rate : {0, 1500000, 3000000, 6000000}) {
    iw_status status{};
    status.bit_rates[0] = rate;
    words += iw_bandwidth2str(&status) + std::string(" ");
    std::strcpy(status.ieee_name, rate == 0 ? "802.11T" : "802.11t");
    words += iw_bandwidth2str(&status) + std::string(" ");
  }
  EXPECT_EQ(words, "full turbo quarter quarter half half full full ");
}

TEST(counters, files_of_all_kinds) {
  constexpr struct {
    const char *file;
    const char *packets, *states;  // the result, the numbers; 7 is what was there before
  } cases[] = {
      {"Packets: 12\nPackets: 99", "0 12 ", "-1 7 7 7 7 7 "},
      {"Packets: x\nPackets: 1", "-1 7 ", "-1 7 7 7 7 7 "},
      {"Packetsize=5", "0 5 ", "-1 7 7 7 7 7 "},
      {"INIT: 1 msecs SCAN: 2 msecs AUTH: 3 msecs ASSOC: 4 msecs RUN: 5", "-1 7 ", "0 1 2 3 4 5 "},
      {" INIT:1 seconds", "-1 7 ", "-1 1 7 7 7 7 "},
  };
  on_device([&] {
    const std::string cut = std::string("r").append(4077, '/');  // all but the last letter of the path fits
    write_file("/proc/net/r/rxstat", "Packets: 1");
    write_file("/proc/net/(null)/rxstats", "Packets: 1");
    iw_status s{};
    for (const char *name : {static_cast<const char *>(nullptr), "none", cut.c_str()})
      EXPECT_EQ(iw_rx_total(&s, name), -1);
    for (const auto &each : cases) {
      write_file("/proc/net/r/rxstats", each.file);
      write_file("/proc/net/madwifi/r/state_cnt", each.file);
      s.ifname = "r";
      s.rx_total = s.state_init = s.state_scan = s.state_auth = s.state_assoc = s.state_run = 7;
      const int total = iw_rx_total(&s, "r");
      const int states = iw_read_states(&s);
      EXPECT_EQ(listed(total, s.rx_total), each.packets) << each.file;
      EXPECT_EQ(listed(states, s.state_init, s.state_scan, s.state_auth, s.state_assoc, s.state_run), each.states);
    }
  });
}

// The table itself is among the operations of the sweep.
