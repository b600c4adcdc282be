/** @defgroup product The product
 * What the device is and can do: its configuration files, identity and capabilities.
 *
 * Nothing here prints or logs. The files are read by the configuration store, a library of the firmware (or by its
 * stand-in here, devfacts/platform/cfg_store.h). Use one thread at a time, except for cpu_detect(), cpu_vendor(),
 * read_serial_no() and read_firmware_version().
 * @{ */
#ifndef DEVFACTS_PRODUCT_H
#define DEVFACTS_PRODUCT_H

#include <devfacts/api.h>
#include <stdint.h>

DEVFACTS_BEGIN_DECLS

/** @defgroup product_config Configuration files
 * @ingroup product
 * Values by key from the system configuration, /tmp/system.cfg, and the product description, /etc/product.
 *
 * A file is lines "key=value"; keys have dots ("radio.0.master"), and the value is all after the first "=". Empty lines
 * and lines that begin with "#" are skipped, and the last line of a key counts. Any other line makes the whole file
 * unreadable (`devfacts product --check FILE` finds it), and so does a key of more than 511 characters or a size of
 * more than 1 MiB. This is the stand-in's format; on a device the firmware's library decides. /tmp/system.cfg is
 * trusted whoever made it: the firmware must create it before others can.
 *
 * The first call opens its file, which stays as it was read until it is closed; a file that cannot be loaded, such as a
 * malformed one, is tried again by the next call. But if /etc/product is missing or not readable, that is remembered
 * until the process ends: every later call fails, and product_name() and others return their defaults, even if the file
 * appears. A program that may start before the file exists waits for access("/etc/product", R_OK) before its first
 * call, or uses product_caps_get(), which always tries again. access() asks for the real user, so a set-user-ID program
 * may miss a file that it can open.
 *
 * Texts belong to the file and are valid until it is closed. prod_spec_close() ends those of prod_spec_get(),
 * product_name(), product_manufacturer() and iw_countrycode_limits(); ::product_caps and iw_radio_limits() have copies.
 * @{ */

#ifndef DEVFACTS_CFG_HANDLE
#define DEVFACTS_CFG_HANDLE
/** A file in the configuration store (devfacts/platform/cfg_store.h). */
typedef struct cfg_store *cfg_handle;
#endif

/** Reads the system configuration, if it is not open.
 * @return 0 if it is open now; -1 if it cannot be loaded or without memory. */
DEVFACTS_API int sysconf_open(void);

/** Closes the system configuration. If it is not open, nothing happens. */
DEVFACTS_API void sysconf_close(void);

/** Returns the handle of the system configuration, for the configuration store's own operations.
 * The file is opened if necessary.
 * @return the handle, borrowed until sysconf_close(); null if sysconf_open() fails. */
DEVFACTS_API cfg_handle sysconf_get_ctx(void);

/** Returns the value of a key of the system configuration. The file is opened if necessary.
 * @param key the key, not null. A key with "%" is never found, as the store would take it for a format.
 * @return the text, which may be empty; null if there is no such key or sysconf_open() fails. */
DEVFACTS_API const char *sysconf_get(const char *key);

/** Reads the product description, if it is not open.
 * @return 0 if it is open now; -1 if it is or once was missing or not readable, if it cannot be loaded, or without
 * memory. Only the latter two are tried again. */
DEVFACTS_API int prod_spec_open(void);

/** Closes the product description. If it is not open, nothing happens. A file once found missing stays missing. */
DEVFACTS_API void prod_spec_close(void);

/** Returns the handle of the product description, for the configuration store's own operations.
 * The file is opened if necessary.
 * @return the handle, borrowed until prod_spec_close(); null if prod_spec_open() fails. */
DEVFACTS_API cfg_handle prod_spec_get_ctx(void);

/** Returns the value of a key of the product description. The file is opened if necessary.
 * @param key the key, not null. A key with "%" is never found, as the store would take it for a format.
 * @return the text, which may be empty; null if there is no such key or prod_spec_open() fails. */
DEVFACTS_API const char *prod_spec_get(const char *key);

/** @} */

/** @defgroup product_identity Identity
 * @ingroup product
 * Names, serial number, firmware version and chip.
 * @{ */

/** Returns product.name of the product description. The file is opened if necessary.
 * @return the text, which may be empty, valid until prod_spec_close(); "product" if there is no such key or file. Not
 * to be freed. */
DEVFACTS_API const char *product_name(void);

/** Returns product.enterprise-name of the product description. The file is opened if necessary.
 * @return the text, which may be empty, valid until prod_spec_close(); "manufacturer" if there is no such key or
 * file. Not to be freed. */
DEVFACTS_API const char *product_manufacturer(void);

/** Reads the serial number: the first 63 characters of the first line of /etc/serial-no, without the white space at its
 * end. If the file cannot be opened it is "0000000000000000" (16 digits).
 * @param[out] buffer set to zero, then the text.
 * @param length bytes in @p buffer.
 * @return @p buffer. Null if the text does not fit, or if the file is empty or cannot be read: @p buffer is zero. Null
 * also if @p buffer is null or @p length 0. */
DEVFACTS_API char *read_serial_no(char *buffer, uint32_t length);

/** Reads the firmware version: the first line of /usr/lib/version, without the white space at its end.
 * @param[out] buffer the text, cut if it does not fit. Not null.
 * @param length bytes in @p buffer. 1 always returns an empty text, if the file can be opened.
 * @return @p buffer. Null if the file cannot be opened or read or is empty, or if @p length is less than 1: the content
 * of @p buffer means nothing. */
DEVFACTS_API char *read_firmware_version(char *buffer, int length);

/** The chips of cpu_detect(), and the names that it searches for. */
enum {
  CPU_NONE = -1,   /**< no known chip */
  CPU_ADM5120 = 1, /**< "adm5120" */
  CPU_AR2316 = 2,  /**< "ar2316" */
  CPU_AR2317 = 3,  /**< "ar2317" */
  CPU_AR5312 = 4,  /**< "ar5312" */
  CPU_RT2880 = 5,  /**< "rt2880" */
  CPU_SL3512 = 6,  /**< "SL3512" */
  CPU_X86 = 7,     /**< "x86" */
  CPU_XSCALE = 8,  /**< "xscale" */
  CPU_RT3052 = 9,  /**< "rt3052" */
  CPU_RT3050 = 10, /**< "rt3050" */
  CPU_RT3352 = 11  /**< "rt3352" */
};

/** Checks for a chip: the one whose name is anywhere in the firmware version (4095 characters of it), in the same case.
 * If there are several names, the first in this order counts: the chips up to CPU_RT2880, then CPU_RT3052, CPU_RT3050,
 * CPU_RT3352, CPU_SL3512, CPU_X86, CPU_XSCALE. A chip that was found is remembered until the process ends; before that,
 * every call reads the file. Several threads may call it at once. It takes 5 KiB of stack.
 * @param id a CPU_ number.
 * @return 1 if it is this chip, otherwise 0. For CPU_NONE it is 1 while no chip is found. */
DEVFACTS_API int cpu_detect(int32_t id);

/** Returns the vendor of the wireless chip. @return "ralink", a constant. */
DEVFACTS_API const char *cpu_vendor(void);

/** @} */

/** @defgroup product_capabilities Capabilities
 * @ingroup product
 * The object ::product_caps, filled from /etc/product by product_caps_get().
 *
 * It is for reading only, as are its records and texts; all of it is valid until the process ends. Each field has the
 * value of the key beside it, unchanged: the file states no units. A program must not define a variable `product_caps`
 * of its own: it would take the place of the library's and crash the program.
 * @{ */

/** A text that may be absent. */
typedef struct caps_string {
  char *value;     /**< the text; null if absent */
  uint8_t present; /**< 1 if the key is there; 0 if not, and without memory */
} caps_string;

/** A number that may be absent. */
typedef struct caps_u32 {
  uint32_t value;  /**< the number, a negative one as its two's complement; 0 if absent */
  uint8_t present; /**< 1 if the key is there */
} caps_u32;

/** A truth value that may be absent. */
typedef struct caps_bool {
  uint32_t value;  /**< non-zero if true; 0 if false or absent */
  uint8_t present; /**< 1 if the key is there */
} caps_bool;

/** A frequency range of a radio: one for each index J of radio.I.frequency.J.range.
 * low and high come from a text "LOW-HIGH" of two numbers: white space may be before each part, a sign before each
 * number, anything after HIGH, and LOW may be larger. */
typedef struct caps_freq_range {
  caps_string range;        /**< range, usually in MHz */
  int32_t low;              /**< LOW - 10; 0 if range is absent or has another form */
  int32_t high;             /**< HIGH + 10; 0 if range is absent or has another form */
  caps_u32 max_eirp;        /**< max-eirp */
  caps_u32 max_txpower;     /**< max-txpower */
  caps_u32 max_width;       /**< max-width */
  caps_string dfs_required; /**< dfs-required */
  caps_string range_limits; /**< range-limits */
} caps_freq_range;

/** A radio: one for each index I of radio.I.master. */
typedef struct caps_radio {
  caps_string master;              /**< master: name of the radio's interface */
  caps_string ieee_band;           /**< ieee-band */
  caps_string allowed_modulations; /**< allowed-modulations */
  caps_u32 txpower_offset;         /**< txpower-offset */
  caps_u32 min_txpower;            /**< min-txpower */
  caps_u32 antenna_gain;           /**< antenna-gain */
  caps_bool ignore_crr;            /**< ignore-crr */
  caps_bool cpe_fixed_channels;    /**< cpe.fixed-channels */
  caps_u32 frequency_offset;       /**< frequency-offset */
  int32_t range_count;             /**< rows in ranges */
  caps_freq_range *ranges;         /**< the frequency ranges; null if range_count is 0 */
  caps_u32 band_edge_low;          /**< band-edges.low */
  caps_u32 band_edge_middle;       /**< band-edges.middle */
  caps_u32 band_edge_high;         /**< band-edges.high */
} caps_radio;

/** A frequency of a limit table: one for each index J of limits.I.table.J.frequency. */
typedef struct caps_limit_freq {
  caps_u32 frequency;         /**< frequency */
  caps_string dfs_required;   /**< dfs-required */
  caps_string max_txpower;    /**< max-txpower, a text here */
  caps_string max_eirp;       /**< max-eirp, a text here */
  caps_string allowed_widths; /**< allowed-widths */
} caps_limit_freq;

/** A limit table: one for each index I of limits.I.table-name. */
typedef struct caps_limit_table {
  caps_string table_name; /**< table-name */
  int32_t freq_count;     /**< rows in freqs */
  caps_limit_freq *freqs; /**< the frequencies; null if freq_count is 0 */
} caps_limit_table;

/** An LED: one for each index I of led.lan.I.name, or of led.rssi.I.devname. */
typedef struct caps_led {
  caps_string devname; /**< devname: the interface or radio that it shows */
  caps_string name;    /**< the LED or LEDs: name in led.lan rows, names in led.rssi rows */
} caps_led;

/** What the product can do. Rows are in the order of their indices, without gaps; the index itself is not kept. */
typedef struct product_caps_t {
  int32_t loaded;                       /**< 1 once the file has been read, 0 before */
  caps_string id;                       /**< product.id */
  caps_string name;                     /**< product.name */
  caps_string hardware;                 /**< product.hardware */
  caps_string enterprise_name;          /**< product.enterprise-name */
  caps_string countrycode;              /**< product.countrycode */
  caps_string enterprise_oid;           /**< product.enterprise-oid */
  int32_t radio_count;                  /**< rows in radios */
  caps_radio *radios;                   /**< the radios; null if radio_count is 0 */
  int32_t limit_table_count;            /**< rows in limit_tables */
  caps_limit_table *limit_tables;       /**< the limit tables; null if limit_table_count is 0 */
  caps_string led_power_name;           /**< led.power.name */
  caps_string led_blinkled_name;        /**< led.blinkled.name */
  int32_t led_lan_count;                /**< rows in led_lan */
  caps_led *led_lan;                    /**< the LEDs of led.lan; null if led_lan_count is 0 */
  int32_t led_rssi_count;               /**< rows in led_rssi */
  caps_led *led_rssi;                   /**< the LEDs of led.rssi; null if led_rssi_count is 0 */
  caps_string protocol_name;            /**< product.protocol-name */
  caps_bool pppoe_filter_control;       /**< feature.pppoe-filter-control */
  caps_bool arpnat_behind_dhcp_snooper; /**< feature.arpnat-behind-dhcp-snooper */
} product_caps_t;

/** The capabilities: all zero until product_caps_get() has returned them. */
DEVFACTS_API extern product_caps_t product_caps;

/** Reads the capabilities from /etc/product, unless an earlier call could.
 * It is independent of prod_spec_open(): a file once found missing is tried again. Until the first call has returned,
 * no other thread may call it or read the object.
 * @return the address of ::product_caps; null if the file cannot be loaded: the object is all zero. A text without
 * memory for it is absent, and a list without memory for a row is empty.
 * @par Example
 * @code
 * const product_caps_t *caps = product_caps_get();
 * for (int32_t i = 0; caps && i < caps->radio_count; i++) {
 *   if (caps->radios[i].master.present) puts(caps->radios[i].master.value);
 * }
 * @endcode */
DEVFACTS_API product_caps_t *product_caps_get(void);

/** @} */

DEVFACTS_END_DECLS

/** @} */

#endif
