/** @defgroup wireless Wireless interfaces
 * The status of a wireless interface and the table of its peers.
 *
 * Facts come from the Wireless Extensions ioctls, from the driver's files under /proc and from the product description.
 * Nothing here prints or logs, except for the fatal exit of ioctl_socket(). Use queries and limits from one thread at a
 * time: the control socket, the limits and the product description are process-wide.
 *
 * Interface names must not be null, unless it says so. The kernel gets the first 15 characters of a name: a longer one
 * can address another interface. In the path of a file under /proc a name is used whole, and "../x" is another folder.
 * @{ */
#ifndef DEVFACTS_WIRELESS_H
#define DEVFACTS_WIRELESS_H

#include <devfacts/api.h>
#include <devfacts/range_record.h>
#include <stdint.h>
#include <sys/socket.h>

DEVFACTS_BEGIN_DECLS

/** @defgroup iw_whole The whole status
 * @ingroup wireless
 * One record with all that is known about a wireless interface.
 * @{ */

/** A number that the product description may lack. It is the decimal number at the start of the key's value: white
 * space and a sign are allowed, text after it is ignored ("3dBi" is 3). */
typedef struct iw_limit_value {
  uint8_t present; /**< 1 if the key has a number that an int32_t holds */
  int32_t value;   /**< the number; means nothing while present is 0 */
} iw_limit_value;

/** What the product description says about a radio. It states no units. */
typedef struct iw_radio_limits_t {
  iw_limit_value antenna_gain;     /**< radio.N.antenna-gain */
  iw_limit_value txpower_offset;   /**< radio.N.txpower-offset */
  iw_limit_value min_txpower;      /**< radio.N.min-txpower */
  iw_limit_value frequency_offset; /**< radio.N.frequency-offset */
  const char *allowed_modulations; /**< radio.N.allowed-modulations, else "OFDM"; not null, not to be freed */
  const char *ieee_band;           /**< radio.N.ieee-band, else "5GHz"; not null, not to be freed */
} iw_radio_limits_t;

/** All that is known about a wireless interface. The record is the caller's and owns no memory.
 * The access point's address is the first six bytes of ap_addr.sa_data; all 00, and from some drivers all FF or all 44,
 * means "not associated". From most drivers (int8_t)signal_level is the signal in dBm; others report a relative level.
 * Warning: limits are those of the first interface that the process asked for, whatever ifname is; see
 * iw_radio_limits(). */
typedef struct iw_status {
  const char *ifname;       /**< the interface name: the pointer that was passed to iw_info() */
  const char *vendor;       /**< cpu_vendor() */
  char ieee_name[17];       /**< name of the protocol, NUL-terminated */
  char essid[64];           /**< network name: bytes, also NUL; their number is in essid_length. A NUL follows */
  uint32_t essid_length;    /**< length that the driver reports; of more than 63 bytes essid has the first 63 */
  uint8_t essid_flags;      /**< low byte of the flags of the network name */
  uint32_t mode;            /**< operation mode, see iw_operation_mode2str() */
  struct sockaddr ap_addr;  /**< access point, see above */
  int32_t bit_rate;         /**< current bit rate in bit/s */
  int32_t bit_rates[32];    /**< the driver's rates in bit/s, in its order, up to the first 0 after iw_info() */
  double frequency;         /**< current frequency in Hz, or a channel number if the driver reports one */
  int32_t channel;          /**< current channel */
  uint8_t signal_level;     /**< signal, the raw byte: see above */
  uint8_t noise_level;      /**< noise, the raw byte in the same form */
  uint32_t encoding_flags;  /**< IW_ENCODE_ flags, see iw_security_mode2str() */
  int32_t txpower;          /**< transmit power in the driver's unit; 0 while it is off */
  uint32_t tx_total;        /**< transmitted packets */
  uint32_t tx_retry;        /**< retried packets */
  uint32_t rx_total;        /**< received packets */
  uint32_t rx_errors;       /**< dropped received packets */
  int64_t state_init;       /**< milliseconds in the state INIT */
  int64_t state_scan;       /**< milliseconds in the state SCAN */
  int64_t state_auth;       /**< milliseconds in the state AUTH */
  int64_t state_assoc;      /**< milliseconds in the state ASSOC */
  int64_t state_run;        /**< milliseconds in the state RUN */
  iw_radio_limits_t limits; /**< limits of a radio, maybe of another one: see above */
} iw_status;

/** Fills a whole record: clears it, sets each field by its query, and closes the control socket.
 * A query that fails leaves its fields zero, as if zero were the answer: to know, make the single query. Only
 * iw_freq_channel() and iw_read_states() may have set some of theirs. The values are read one after the other, so
 * counters are not of one moment.
 * Warning: the first call in the process, even with a wrong name, decides the limits for all later ones; see
 * iw_radio_limits(). The call takes 9 KiB of stack.
 * @param[out] status the record.
 * @param name the interface. The record has the pointer, so the text must stay.
 * @return always 0; if no socket can be opened, the process ends as ioctl_socket() says.
 * @par Example
 * @code
 * iw_status status;
 * iw_info(&status, "ra0");
 * printf("%s, channel %d, %d dBm\n", status.essid, (int)status.channel, (int8_t)status.signal_level);
 * @endcode */
DEVFACTS_API int iw_info(iw_status *status, const char *name);

/** @} */

/** @defgroup iw_query Single queries
 * @ingroup wireless
 * One ioctl each, through the control socket.
 *
 * A query sets its fields of the caller's record and returns 0. If the driver or the kernel refuses, it returns -1,
 * writes nothing and leaves the ioctl's errno: ENODEV if there is no such interface, ENOTTY if the kernel has no
 * Wireless Extensions. It clears nothing else in the record, and leaves the control socket open: call ioctl_close() at
 * the end. If the socket cannot be opened, the process ends as ioctl_socket() says.
 * @{ */

/** Checks whether an interface is a wireless one: whether it answers SIOCGIWNAME.
 * @param name the interface.
 * @return 1 if it is, 0 if not, with the ioctl's errno. */
DEVFACTS_API int iw_capable(const char *name);

/** Sets ieee_name (SIOCGIWNAME). @param status,name the record, the interface. @return 0 or -1. */
DEVFACTS_API int iw_ieee_name(iw_status *status, const char *name);

/** Sets essid, essid_length and essid_flags (SIOCGIWESSID). The rest of essid stays as it was.
 * @param status,name the record, the interface.
 * @return 0 or -1. */
DEVFACTS_API int iw_essid(iw_status *status, const char *name);

/** Sets mode (SIOCGIWMODE). @param status,name the record, the interface. @return 0 or -1. */
DEVFACTS_API int iw_operation_mode(iw_status *status, const char *name);

/** Sets ap_addr (SIOCGIWAP). @param status,name the record, the interface. @return 0 or -1. */
DEVFACTS_API int iw_ap_addr(iw_status *status, const char *name);

/** Sets bit_rate (SIOCGIWRATE). @param status,name the record, the interface. @return 0 or -1. */
DEVFACTS_API int iw_current_bit_rate(iw_status *status, const char *name);

/** Sets signal_level and noise_level (SIOCGIWSTATS). @param status,name the record, the interface. @return 0 or -1. */
DEVFACTS_API int iw_rssi(iw_status *status, const char *name);

/** Sets encoding_flags (SIOCGIWENCODE). @param status,name the record, the interface. @return 0 or -1. */
DEVFACTS_API int iw_encoding_flags(iw_status *status, const char *name);

/** Sets txpower (SIOCGIWTXPOW): 0 if it is disabled. @param status,name the record, the interface. @return 0 or -1. */
DEVFACTS_API int iw_txpower(iw_status *status, const char *name);

/** @} */

/** @defgroup iw_range Range, frequency and channel
 * @ingroup wireless
 * Queries that need the driver's range record, ::iw_range_record. They fail as @ref iw_query do.
 * @{ */

/** Reads the range record (SIOCGIWRANGE); what a shorter answer lacks is zero.
 * Only the device's driver has this layout: from another driver the frequencies mean nothing.
 * @param name the interface.
 * @param[out] range the record.
 * @return 0 or -1. */
DEVFACTS_API int get_range_info(const char *name, iw_range_record *range);

/** Computes mantissa times ten to the exponent.
 * @param freq a struct iw_freq of the kernel or an ::iw_range_freq: an int32_t, then an int16_t, at any address.
 * @return the number. */
DEVFACTS_API double iw_freq2double(const void *freq);

/** Sets frequency (SIOCGIWFREQ) and channel (SIOCGIWRANGE).
 * channel is that of the first row of the range record with exactly this frequency. Without such a row it stays as it
 * was, and the result is 0: clear it first. The call takes 9 KiB of stack.
 * @param status,name the record, the interface.
 * @return 0 or -1. If only the second request fails, frequency is set. */
DEVFACTS_API int iw_freq_channel(iw_status *status, const char *name);

/** Sets the start of bit_rates to the rates of the range record, at most 32.
 * Their number is its num_bitrates (get_range_info()), or 32 if that is more. Rates after them stay as they were: clear
 * bit_rates first. The call takes 9 KiB of stack.
 * @param status,name the record, the interface.
 * @return 0 or -1. */
DEVFACTS_API int iw_bitrates(iw_status *status, const char *name);

/** Sends the driver's private request for its channel list (0x8BED).
 * @param name the interface.
 * @param first_word the request, for the driver: it is put into the first four bytes of @p buffer, even on failure.
 * @param buffer 2048 bytes, which the driver fills in a form of its own.
 * @return 0 or -1. */
DEVFACTS_API int iw_get_channels(const char *name, uint32_t first_word, void *buffer);

/** @} */

/** @defgroup iw_counters Counters and states
 * @ingroup wireless
 * Numbers from the driver's files txstats and rxstats in /proc/net/NAME, which each call reads anew.
 *
 * The first line that begins with the key counts. The result is -1, and the field stays as it was, if the name is null
 * or too long for a path of 4095 characters, if there is no such file or line, or if its value is not a 32-bit number.
 * No control socket is needed; with a record for each thread several may run at once. A call takes 9 KiB of stack.
 * @{ */

/** Sets tx_retry ("Retried" in txstats). @param status,name the record, the interface. @return 0 or -1. */
DEVFACTS_API int iw_tx_retry(iw_status *status, const char *name);

/** Sets tx_total ("Packets" in txstats). @param status,name the record, the interface. @return 0 or -1. */
DEVFACTS_API int iw_tx_total(iw_status *status, const char *name);

/** Sets rx_errors ("Dropped" in rxstats). @param status,name the record, the interface. @return 0 or -1. */
DEVFACTS_API int iw_rx_errors(iw_status *status, const char *name);

/** Sets rx_total ("Packets" in rxstats). @param status,name the record, the interface. @return 0 or -1. */
DEVFACTS_API int iw_rx_total(iw_status *status, const char *name);

/** Sets the five state times from /proc/net/madwifi/NAME/state_cnt: "INIT: 12 msecs", then SCAN, AUTH, ASSOC and RUN.
 * The numbers have 64 bits. The C library reads all digits of a longer one into memory, and it is no failure.
 * @param status the record; its ifname is the interface, and null is a failure.
 * @return 0; -1 at the first that cannot be read: those before it are set. */
DEVFACTS_API int iw_read_states(iw_status *status);

/** @} */

/** @defgroup iw_limits Limits
 * @ingroup wireless
 * What the product description says about the radio and the country.
 *
 * Both functions open the product description, if it is not open; a missing one stays missing for the process, see
 * @ref product_config.
 * @{ */

/** Returns the limits of a radio: of the first one whose radio.N.master is the interface.
 * Warning: the first call in the process, here or by iw_info(), decides for good. All later calls return the same
 * limits, for any interface. Without a description or such a radio, the numbers are absent and the strings default to
 * "OFDM" and "5GHz"; a string defaults also without memory for it. The strings are valid until the process ends.
 * @param[out] limits the record.
 * @param name the interface; one of more than 16 characters is not found.
 * @return always 0. */
DEVFACTS_API int iw_radio_limits(iw_radio_limits_t *limits, const char *name);

/** Returns the country of the product description, product.countrycode.
 * @return the text, valid until prod_spec_close(), not to be freed; null if there is no such key. */
DEVFACTS_API const char *iw_countrycode_limits(void);

/** @} */

/** @defgroup iw_words Words
 * @ingroup wireless
 * Words for the numbers of a record; they are constants, not to be freed.
 * @{ */

/** The operation modes: "Auto", "Ad-Hoc", "Managed", "Master", "Repeater", "Secondary", "Monitor".
 * A program must not define a variable `IW_OPERATION_MODE` of its own: it would take the place of this one and crash
 * the program. */
DEVFACTS_API extern const char *const IW_OPERATION_MODE[7];

/** Names an operation mode. @param mode the mode. @return the constant in ::IW_OPERATION_MODE; null from 7 on. */
DEVFACTS_API const char *iw_operation_mode2str(uint32_t mode);

/** Names a security mode.
 * @param flags the encoding_flags of a record.
 * @return "off", "restricted" or "open" for 0x8000, 0x4000 or 0x2000, the first that is set; otherwise null.
 * It is not to be freed. */
DEVFACTS_API const char *iw_security_mode2str(uint32_t flags);

/** Names the channel width: "turbo" (40 MHz), "quarter" (5), "half" (10) or "full" (20).
 * It is a guess: turbo if ieee_name has a capital T anywhere, quarter or half if the first of bit_rates is 1500000 or
 * 3000000, otherwise full.
 * @param status a record with ieee_name and bit_rates.
 * @return the word, not to be freed. */
DEVFACTS_API const char *iw_bandwidth2str(const iw_status *status);

/** @} */

/** @defgroup iw_peers_group Peers
 * @ingroup wireless
 * The stations that are connected to an interface, from the driver's file /proc/net/NAME/peers.
 * @{ */

/** A station. */
typedef struct iw_peer_entry {
  uint8_t mac[6]; /**< hardware address */
  int32_t rssi0;  /**< last signal strength on the first receive chain, in the driver's unit */
  int32_t rssi1;  /**< on the second */
  int32_t rssi2;  /**< on the third */
} iw_peer_entry;

/** A table of stations; count 0 and rows null at the start. */
typedef struct iw_peers_list {
  uint32_t count;      /**< number of rows */
  iw_peer_entry *rows; /**< the rows, until iw_peers_free(); null while count is 0 */
} iw_peers_list;

/** Adds a row for each peer of an interface, in the order of the file.
 * The file is /proc/net/NAME/peers. "Peer MAC address: 00:11:22:33:44:55" begins a peer, "Rx last RSSI0: -60" and so
 * on belong to it; what is missing is zero. A line that cannot be split (see @ref core_lines) ends the table. A file
 * that cannot be read, and a path of more than 255 characters, add nothing.
 * @param list rows of an earlier call stay before the new ones, and the last of them gets strengths that the file has
 * before its first peer: call iw_peers_free() first. Without memory for a row the table becomes empty.
 * @param name the interface; null is ra0.
 * @return always 0.
 * @par Example
 * @code
 * iw_peers_list peers = {0, NULL};
 * iw_peers(&peers, "ra0");
 * for (uint32_t i = 0; i < peers.count; i++) printf("%d\n", (int)peers.rows[i].rssi0);
 * iw_peers_free(&peers);
 * @endcode */
DEVFACTS_API int iw_peers(iw_peers_list *list, const char *name);

/** Releases the rows and makes the table empty. @param list the table; null does nothing. */
DEVFACTS_API void iw_peers_free(iw_peers_list *list);

/** Checks whether ra0 has a peer.
 * No other interface is asked: a line of /proc/net/ra0/peers must begin with "Peer MAC address".
 * @return 1 if so. 0 if not, if the file cannot be read, and without memory. */
DEVFACTS_API int iw_link_established(void);

/** @} */

DEVFACTS_END_DECLS

/** @} */

#endif
