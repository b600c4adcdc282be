/*
 * devfacts/wireless.h - what a wireless interface is doing: one status record, filled from the Wireless Extensions
 * ioctls, the driver's files under /proc and the product description; and the table of its peers.
 *
 * Nothing here prints, logs or sets errno on purpose. The control socket of ioctl_socket(), the radio limits and the
 * product description that they are read from are process-wide and without a lock: use one thread at a time.
 */
#ifndef DEVFACTS_WIRELESS_H
#define DEVFACTS_WIRELESS_H

#include <devfacts/api.h>
#include <devfacts/range_record.h>
#include <stdint.h>
#include <sys/socket.h>

DEVFACTS_BEGIN_DECLS

/** A number that the product description may lack. */
typedef struct iw_limit_value {
  uint8_t present; /**< 1 if the key is there and a number; 0 otherwise */
  int32_t value;   /**< the number; means nothing while present is 0 */
} iw_limit_value;

/** What the product description says about a radio. The units are those of its file. */
typedef struct iw_radio_limits_t {
  iw_limit_value antenna_gain;     /**< radio.N.antenna-gain */
  iw_limit_value txpower_offset;   /**< radio.N.txpower-offset */
  iw_limit_value min_txpower;      /**< radio.N.min-txpower */
  iw_limit_value frequency_offset; /**< radio.N.frequency-offset */
  const char *allowed_modulations; /**< radio.N.allowed-modulations, else "OFDM"; never null, not to be freed */
  const char *ieee_band;           /**< radio.N.ieee-band, else "5GHz"; never null, not to be freed */
} iw_radio_limits_t;

/**
 * Everything about a wireless interface. The record is the caller's and holds no memory of its own. A value that could
 * not be read has no mark: iw_info() leaves it zero, a single query leaves it as it was.
 */
typedef struct iw_status {
  const char *ifname;       /**< the interface name: the very pointer that iw_info() was given */
  const char *vendor;       /**< what cpu_vendor() says */
  char ieee_name[17];       /**< the protocol's name, NUL-terminated */
  char essid[64];           /**< network name of at most 63 bytes; a NUL stands behind it */
  uint32_t essid_length;    /**< its length as the driver reports it, which may be more than essid holds */
  uint8_t essid_flags;      /**< low byte of the flags that come with it */
  uint32_t mode;            /**< operation mode, an index into ::IW_OPERATION_MODE as long as it is below 7 */
  struct sockaddr ap_addr;  /**< hardware address of the access point */
  int32_t bit_rate;         /**< current bit rate, in bits per second */
  int32_t bit_rates[32];    /**< the rates that the driver lists, in its order, in bits per second */
  double frequency;         /**< current frequency, in the driver's unit (Hz), or a channel number where it gives one */
  int32_t channel;          /**< number of the current channel */
  uint8_t signal_level;     /**< signal level, the raw byte */
  uint8_t noise_level;      /**< noise level, the raw byte */
  uint32_t encoding_flags;  /**< the kernel's IW_ENCODE_ flags */
  int32_t txpower;          /**< transmit power in the driver's unit; 0 while it is switched off */
  uint32_t tx_total;        /**< transmitted packets */
  uint32_t tx_retry;        /**< retried packets */
  uint32_t rx_total;        /**< received packets */
  uint32_t rx_errors;       /**< dropped received packets */
  int64_t state_init;       /**< milliseconds spent in the INIT state */
  int64_t state_scan;       /**< milliseconds spent in the SCAN state */
  int64_t state_auth;       /**< milliseconds spent in the AUTH state */
  int64_t state_assoc;      /**< milliseconds spent in the ASSOC state */
  int64_t state_run;        /**< milliseconds spent in the RUN state */
  iw_radio_limits_t limits; /**< what the product description says about the radio */
} iw_status;

/** The operation modes by their number: "Auto", "Ad-Hoc", "Managed", "Master", "Repeater", "Secondary", "Monitor". */
DEVFACTS_API extern const char *const IW_OPERATION_MODE[7];

/**
 * Fills a whole record: clears it, runs every query below in turn, and closes the control socket.
 *
 * No query that fails stops another: its fields are zero, and a true zero looks the same. For a name that is no
 * wireless interface all is zero but ifname, vendor and limits. Besides the ioctls it reads the driver's files under
 * /proc, and on the process's first call the product description (see iw_radio_limits()).
 *
 * @param status the caller's record.
 * @param name the interface. The record keeps the pointer, so the text stays as long as the record is used.
 * @return always 0.
 * When no control socket can be made the process ends, as told at ioctl_socket().
 */
DEVFACTS_API int iw_info(iw_status *status, const char *name);

/* ---- Single queries ----
 *
 * Each sends an ioctl through the control socket, which it leaves open: ioctl_close() when done. When no control socket
 * can be made the process ends, as told at ioctl_socket(). Of a name longer than 16 bytes the kernel gets the first 16.
 * A query sets its fields and returns 0, or returns -1 when the kernel or the driver refuses, and writes nothing then
 * unless it says so. The caller owns the record; a query clears nothing else in it.
 */

/**
 * Tells whether an interface is a wireless one: whether it answers SIOCGIWNAME.
 *
 * @param name the interface.
 * @return 1 if it is, 0 if not.
 */
DEVFACTS_API int iw_capable(const char *name);

/**
 * Sets ieee_name (SIOCGIWNAME); its unused bytes become zero.
 *
 * @param status,name the record, the interface.
 * @return 0 or -1.
 */
DEVFACTS_API int iw_ieee_name(iw_status *status, const char *name);

/**
 * Sets essid, essid_length and essid_flags (SIOCGIWESSID). The driver is offered room for 63 bytes. Where it reports
 * more, essid_length says so, and the NUL is the last byte of essid. Bytes behind the NUL stay as they were.
 *
 * @param status,name the record, the interface.
 * @return 0 or -1.
 */
DEVFACTS_API int iw_essid(iw_status *status, const char *name);

/**
 * Sets mode (SIOCGIWMODE).
 *
 * @param status,name the record, the interface.
 * @return 0 or -1.
 */
DEVFACTS_API int iw_operation_mode(iw_status *status, const char *name);

/**
 * Sets ap_addr (SIOCGIWAP).
 *
 * @param status,name the record, the interface.
 * @return 0 or -1.
 */
DEVFACTS_API int iw_ap_addr(iw_status *status, const char *name);

/**
 * Sets bit_rate (SIOCGIWRATE).
 *
 * @param status,name the record, the interface.
 * @return 0 or -1.
 */
DEVFACTS_API int iw_current_bit_rate(iw_status *status, const char *name);

/**
 * Sets signal_level and noise_level (SIOCGIWSTATS), without any conversion.
 *
 * @param status,name the record, the interface.
 * @return 0 or -1.
 */
DEVFACTS_API int iw_rssi(iw_status *status, const char *name);

/**
 * Sets encoding_flags (SIOCGIWENCODE). A key that the driver tells is dropped.
 *
 * @param status,name the record, the interface.
 * @return 0 or -1.
 */
DEVFACTS_API int iw_encoding_flags(iw_status *status, const char *name);

/**
 * Sets txpower (SIOCGIWTXPOW): 0 where the driver says that transmitting is disabled, its number otherwise, in the
 * driver's unit.
 *
 * @param status,name the record, the interface.
 * @return 0 or -1.
 */
DEVFACTS_API int iw_txpower(iw_status *status, const char *name);

/* ---- Range, frequency and channel ---- */

/**
 * Asks the driver for its range record (SIOCGIWRANGE). Of the answer the first 4392 bytes count; what a shorter one
 * lacks is zero. A driver with the kernel's own record fills another layout: its frequencies are not to be read here.
 *
 * @param name the interface.
 * @param range the caller's record; written on success only.
 * @return 0 or -1.
 */
DEVFACTS_API int get_range_info(const char *name, iw_range_record *range);

/**
 * The number that a mantissa and an exponent of ten stand for.
 *
 * @param freq the kernel's struct iw_freq, or an ::iw_range_freq: an int32_t and behind it an int16_t, in host byte
 * order and at any address.
 * @return mantissa times ten to the exponent.
 */
DEVFACTS_API double iw_freq2double(const void *freq);

/**
 * Sets frequency (SIOCGIWFREQ), and channel to that of the first row of the range record with the very same frequency
 * (SIOCGIWRANGE). Without such a row channel stays as it was, which is no failure.
 *
 * @param status,name the record, the interface.
 * @return 0 or -1. When only the second request fails, frequency is set.
 */
DEVFACTS_API int iw_freq_channel(iw_status *status, const char *name);

/**
 * Sets bit_rates to the rates of the range record (SIOCGIWRANGE), 32 at most. Entries behind them stay as they were.
 *
 * @param status,name the record, the interface.
 * @return 0 or -1.
 */
DEVFACTS_API int iw_bitrates(iw_status *status, const char *name);

/**
 * Sends the driver's private channel list request (0x8BED).
 *
 * @param name the interface.
 * @param first_word what the driver is asked for; it stands in the first four bytes of @p buffer, even on failure.
 * @param buffer room for 2048 bytes, which the driver fills in a form of its own.
 * @return 0 or -1.
 */
DEVFACTS_API int iw_get_channels(const char *name, uint32_t first_word, void *buffer);

/* ---- Counters and states under /proc ----
 *
 * Each reads a file of the driver anew, and needs no control socket. The result is -1, with the field as it was, where
 * the name is null or makes no path of at most 4095 characters, where there is no such file and where the file has no
 * such line. Of several lines that begin with the key the first counts; it has to hold a number that 32 bits hold.
 */

/**
 * Sets tx_retry: "Retried" in /proc/net/NAME/txstats.
 *
 * @param status,name the record, the interface.
 * @return 0 or -1.
 */
DEVFACTS_API int iw_tx_retry(iw_status *status, const char *name);

/**
 * Sets tx_total: "Packets" in /proc/net/NAME/txstats.
 *
 * @param status,name the record, the interface.
 * @return 0 or -1.
 */
DEVFACTS_API int iw_tx_total(iw_status *status, const char *name);

/**
 * Sets rx_errors: "Dropped" in /proc/net/NAME/rxstats.
 *
 * @param status,name the record, the interface.
 * @return 0 or -1.
 */
DEVFACTS_API int iw_rx_errors(iw_status *status, const char *name);

/**
 * Sets rx_total: "Packets" in /proc/net/NAME/rxstats.
 *
 * @param status,name the record, the interface.
 * @return 0 or -1.
 */
DEVFACTS_API int iw_rx_total(iw_status *status, const char *name);

/**
 * Sets the five state times from /proc/net/madwifi/NAME/state_cnt, where they stand in the order INIT, SCAN, AUTH,
 * ASSOC, RUN, as "INIT: 12 msecs".
 *
 * @param status the record, whose ifname says which interface; null there is a failure.
 * @return 0; -1 at the first that cannot be read: those before it are set, the others as they were.
 */
DEVFACTS_API int iw_read_states(iw_status *status);

/**
 * Tells whether a peer is connected to ra0, whatever interface the program asks for otherwise: whether a line of
 * /proc/net/ra0/peers begins with "Peer MAC address".
 *
 * @return 1 if so; 0 if not, if the file cannot be read, and without memory.
 */
DEVFACTS_API int iw_link_established(void);

/* ---- Limits ---- */

/**
 * Tells what the product description says about a radio: the first one whose radio.N.master is the interface.
 *
 * The process's first call opens the description, as prod_spec_open() does and with all that is said there, and settles
 * the answer for good: later calls copy that, for any interface, and look at no file. Without a description, and where
 * no radio has that master, the four numbers are not present and the two texts "OFDM" and "5GHz"; so is a text that
 * there was no memory to keep. Texts stay good as long as the process lives, even after prod_spec_close().
 *
 * @param limits the caller's record.
 * @param name the interface. A name of more than 16 characters is no radio's master.
 * @return always 0.
 */
DEVFACTS_API int iw_radio_limits(iw_radio_limits_t *limits, const char *name);

/**
 * Tells the country that the product description names; it is opened where it is not open, as prod_spec_open() does.
 *
 * @return the text of product.countrycode in the product description, good until prod_spec_close() and not to be freed;
 * null where there is none.
 */
DEVFACTS_API const char *iw_countrycode_limits(void);

/* ---- Words ---- */

/**
 * @param mode an operation mode.
 * @return its row of ::IW_OPERATION_MODE; null for 7 and above. It is not to be freed.
 */
DEVFACTS_API const char *iw_operation_mode2str(uint32_t mode);

/**
 * @param flags the encoding_flags of a record.
 * @return "off", "restricted" or "open" for 0x8000, 0x4000 or 0x2000, the first of them that is set; null where none
 * is. It is not to be freed.
 */
DEVFACTS_API const char *iw_security_mode2str(uint32_t flags);

/**
 * The class of channel width: "turbo" where ieee_name holds a capital T, "quarter" or "half" where the first of
 * bit_rates is 1500000 or 3000000, else "full".
 *
 * @param status a record with ieee_name and bit_rates.
 * @return one of the four words, not to be freed.
 */
DEVFACTS_API const char *iw_bandwidth2str(const iw_status *status);

/* ---- Peers ---- */

/** A station that is connected to the interface. */
typedef struct iw_peer_entry {
  uint8_t mac[6]; /**< its hardware address */
  int32_t rssi0;  /**< last signal strength on the first receive chain */
  int32_t rssi1;  /**< on the second */
  int32_t rssi2;  /**< on the third */
} iw_peer_entry;

/** A table of peers; it starts with count 0 and rows null. */
typedef struct iw_peers_list {
  uint32_t count;      /**< number of rows */
  iw_peer_entry *rows; /**< the rows, until iw_peers_free(); null while count is 0 */
} iw_peers_list;

/**
 * Adds a row for each peer in /proc/net/NAME/peers, in the order of the file.
 *
 * "Peer MAC address: 00:11:22:33:44:55" begins a peer; "Rx last RSSI0: -60" and so on behind it are its own. What the
 * file does not say of a peer is zero. A line that cannot be split (see core.h) ends the table. A file that cannot be
 * read, and a name that makes no path of at most 255 characters, add nothing.
 *
 * @param list the caller's table. Rows of an earlier call stay before the new ones. Without memory for a row it is
 * empty, all rows released.
 * @param name the interface; null stands for ra0.
 * @return always 0.
 */
DEVFACTS_API int iw_peers(iw_peers_list *list, const char *name);

/**
 * Releases the rows and makes the table empty. The table itself is the caller's.
 *
 * @param list null does nothing.
 */
DEVFACTS_API void iw_peers_free(iw_peers_list *list);

DEVFACTS_END_DECLS

#endif
