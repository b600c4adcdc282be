/* Associates wlan0 with an open access point that it makes of wlan1, both simulated radios, so that the station's
 * driver has an answer to every request. The access point stays behind: the kernel sends its beacons.
 *
 * The access point is set up through nl80211, and the two questions of a station are answered here; the station asks
 * through Wireless Extensions. Frames are little-endian whatever the machine. */
#define _GNU_SOURCE
#include <errno.h>
#include <linux/genetlink.h>
#include <linux/if_ether.h>
#include <linux/nl80211.h>
#include <linux/wireless.h>
#include <poll.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#define NETWORK "board"
enum { channel = 6, frequency = 2437, beacon_interval = 20, header_size = 24 };
enum frame_type { association_request = 0x00, association_response = 0x10, beacon = 0x80, authentication = 0xb0 };

static struct {
  struct nlmsghdr header;
  struct genlmsghdr generic;
  unsigned char attributes[1024];
} message;
static unsigned char reply[8192];
static uint16_t nl80211;
static uint32_t index_of_point;
static unsigned char address_of_point[ETH_ALEN];

static void check(int result, const char *what) {
  if (result >= 0) return;
  printf("%s: %s\n", what, strerror(errno));
  exit(1);
}

static void begin(uint16_t type, uint8_t command) {
  memset(&message, 0, sizeof message);
  message.header.nlmsg_len = NLMSG_LENGTH(GENL_HDRLEN);
  message.header.nlmsg_type = type;
  message.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_ACK;
  message.generic.cmd = command;
  message.generic.version = 1;
}

static void put(uint16_t type, const void *value, size_t size) {
  struct nlattr *attribute = (struct nlattr *)((char *)&message + message.header.nlmsg_len);
  attribute->nla_type = type;
  attribute->nla_len = (uint16_t)(NLA_HDRLEN + size);
  memcpy(attribute + 1, value, size);
  message.header.nlmsg_len += NLA_ALIGN(attribute->nla_len);
}

static void put_u32(uint16_t type, uint32_t value) { put(type, &value, sizeof value); }

static void begin_for_point(uint8_t command) {
  begin(nl80211, command);
  put_u32(NL80211_ATTR_IFINDEX, index_of_point);
}

/* Sends the message and waits for its acknowledgement; an answer before that stays in reply. */
static void transact(int fd, const char *what) {
  static unsigned char answer[sizeof reply];
  check((int)send(fd, &message, message.header.nlmsg_len, 0), what);
  for (;;) {
    check((int)recv(fd, answer, sizeof answer, 0), what);
    const struct nlmsghdr *header = (const struct nlmsghdr *)answer;
    if (header->nlmsg_type == NLMSG_ERROR) {
      errno = -((const struct nlmsgerr *)NLMSG_DATA(header))->error;
      check(errno == 0 ? 0 : -1, what);
      return;
    }
    memcpy(reply, answer, sizeof reply);
  }
}

/* The attribute of that type in reply. */
static const struct nlattr *attribute_of(int type) {
  const struct nlmsghdr *header = (const struct nlmsghdr *)reply;
  size_t at = NLMSG_LENGTH(GENL_HDRLEN);
  while (at + NLA_HDRLEN <= header->nlmsg_len) {
    const struct nlattr *attribute = (const struct nlattr *)(reply + at);
    if ((attribute->nla_type & NLA_TYPE_MASK) == type) return attribute;
    at += NLA_ALIGN(attribute->nla_len);
  }
  return NULL;
}

/* The frame's header, from the access point. */
static size_t head(unsigned char *frame, enum frame_type type, const void *to) {
  memset(frame, 0, header_size);
  frame[0] = (unsigned char)type;
  memcpy(frame + 4, to, ETH_ALEN);
  memcpy(frame + 10, address_of_point, ETH_ALEN);
  memcpy(frame + 16, address_of_point, ETH_ALEN);
  return header_size;
}

static size_t append(unsigned char *frame, size_t size, const char *bytes, size_t count) {
  memcpy(frame + size, bytes, count);
  return size + count;
}
#define APPEND(frame, size, text) append(frame, size, text, sizeof(text) - 1)

static const char rates[] = "\x01\x08\x82\x84\x8b\x96\x0c\x12\x18\x24";

static void start_point(int fd) {
  static const uint16_t asked[] = {authentication, association_request};
  unsigned char frame[128];
  for (size_t i = 0; i < 2; ++i) {
    begin_for_point(NL80211_CMD_REGISTER_FRAME);
    put(NL80211_ATTR_FRAME_TYPE, &asked[i], sizeof asked[i]);
    put(NL80211_ATTR_FRAME_MATCH, "", 0);
    transact(fd, "registering for frames");
  }
  size_t size = head(frame, beacon, "\xff\xff\xff\xff\xff\xff");
  size = APPEND(frame, size, "\0\0\0\0\0\0\0\0\x14\0\x01\x04"); /* time, interval, an infrastructure network */
  size = APPEND(frame, size, "\0\x05" NETWORK);
  size = append(frame, size, rates, sizeof rates - 1);
  size = APPEND(frame, size, "\x03\x01\x06");
  begin_for_point(NL80211_CMD_START_AP);
  put(NL80211_ATTR_BEACON_HEAD, frame, size);
  put_u32(NL80211_ATTR_BEACON_INTERVAL, beacon_interval);
  put_u32(NL80211_ATTR_DTIM_PERIOD, 2);
  put(NL80211_ATTR_SSID, NETWORK, strlen(NETWORK));
  put_u32(NL80211_ATTR_WIPHY_FREQ, frequency);
  put_u32(NL80211_ATTR_WIPHY_CHANNEL_TYPE, NL80211_CHAN_NO_HT);
  transact(fd, "starting the access point");
}

static void add_station(int fd, const void *address) {
  const struct nl80211_sta_flag_update flags = {
      1 << NL80211_STA_FLAG_AUTHENTICATED | 1 << NL80211_STA_FLAG_ASSOCIATED | 1 << NL80211_STA_FLAG_AUTHORIZED,
      1 << NL80211_STA_FLAG_AUTHENTICATED | 1 << NL80211_STA_FLAG_ASSOCIATED | 1 << NL80211_STA_FLAG_AUTHORIZED};
  const uint16_t number = 1, interval = 10;
  begin_for_point(NL80211_CMD_NEW_STATION);
  put(NL80211_ATTR_MAC, address, ETH_ALEN);
  put(NL80211_ATTR_STA_AID, &number, sizeof number);
  put(NL80211_ATTR_STA_LISTEN_INTERVAL, &interval, sizeof interval);
  put(NL80211_ATTR_STA_SUPPORTED_RATES, rates + 2, sizeof rates - 3);
  put(NL80211_ATTR_STA_FLAGS2, &flags, sizeof flags);
  transact(fd, "adding the station");
}

static void answer(int fd, const unsigned char *question) {
  unsigned char frame[128], station[ETH_ALEN];
  size_t size = 0;
  memcpy(station, question + 10, ETH_ALEN);
  if (question[0] == authentication) {
    size =
        APPEND(frame, head(frame, authentication, station), "\0\0\x02\0\0\0"); /* open, the second message, success */
  } else {
    add_station(fd, station);
    size = APPEND(frame, head(frame, association_response, station), "\x01\x04\0\0\x01\xc0"); /* success, station 1 */
    size = append(frame, size, rates, sizeof rates - 1);
  }
  begin_for_point(NL80211_CMD_FRAME);
  put(NL80211_ATTR_FRAME, frame, size);
  transact(fd, "answering");
}

static void answer_event(int events, int fd) {
  struct pollfd readable = {events, POLLIN, 0};
  if (poll(&readable, 1, 100) <= 0) return;
  check((int)recv(events, reply, sizeof reply, 0), "waiting for the station");
  const struct nlmsghdr *header = (const struct nlmsghdr *)reply;
  const struct nlattr *frame = attribute_of(NL80211_ATTR_FRAME);
  if (header->nlmsg_type == nl80211 && ((const struct genlmsghdr *)NLMSG_DATA(header))->cmd == NL80211_CMD_FRAME &&
      frame)
    answer(fd, (const unsigned char *)(frame + 1));
}

static void bring_up(int control, const char *name) {
  struct ifreq request = {0};
  strncpy(request.ifr_name, name, IFNAMSIZ - 1);
  check(ioctl(control, SIOCGIFFLAGS, &request), name);
  request.ifr_flags |= IFF_UP;
  check(ioctl(control, SIOCSIFFLAGS, &request), name);
}

static void join(int control) {
  struct iwreq request = {.ifr_ifrn.ifrn_name = "wlan0", .u.essid = {NETWORK, sizeof NETWORK - 1, 1}};
  bring_up(control, "wlan0");
  check(ioctl(control, SIOCSIWESSID, &request), "SIOCSIWESSID");
}

static int is_associated(int control) {
  struct iwreq request = {.ifr_ifrn.ifrn_name = "wlan0"};
  check(ioctl(control, SIOCGIWAP, &request), "SIOCGIWAP");
  return memcmp(request.u.ap_addr.sa_data, address_of_point, ETH_ALEN) == 0;
}

static void make_point(int control, int events) {
  struct ifreq request = {.ifr_name = "wlan1"};
  check(ioctl(control, SIOCGIFHWADDR, &request), "wlan1");
  memcpy(address_of_point, request.ifr_hwaddr.sa_data, ETH_ALEN);
  check(ioctl(control, SIOCGIFINDEX, &request), "wlan1");
  index_of_point = (uint32_t)request.ifr_ifindex;
  begin(GENL_ID_CTRL, CTRL_CMD_GETFAMILY);
  put(CTRL_ATTR_FAMILY_NAME, "nl80211", sizeof "nl80211");
  transact(events, "nl80211");
  memcpy(&nl80211, attribute_of(CTRL_ATTR_FAMILY_ID) + 1, sizeof nl80211);
  begin_for_point(NL80211_CMD_SET_INTERFACE);
  put_u32(NL80211_ATTR_IFTYPE, NL80211_IFTYPE_AP);
  transact(events, "the access point's mode");
  bring_up(control, "wlan1");
  start_point(events);
}

int main(void) {
  int control = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  int events = socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_GENERIC);
  int requests = socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_GENERIC);
  make_point(control, events);
  join(control);
  for (int tenths = 0; tenths < 300 && !is_associated(control); ++tenths) answer_event(events, requests);
  check(is_associated(control) ? 0 : -1, "not associated");
}
