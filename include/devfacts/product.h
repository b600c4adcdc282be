/*
 * devfacts/product.h - what the device is and what it can do: its two configuration files, its identity, and the
 * capability object.
 *
 * Configuration files are read through the device's configuration store. Nothing here prints, logs or sets errno on
 * purpose. Use one thread at a time, but for cpu_detect(), cpu_vendor(), read_serial_no() and read_firmware_version().
 */
#ifndef DEVFACTS_PRODUCT_H
#define DEVFACTS_PRODUCT_H

#include <devfacts/api.h>
#include <stdint.h>

DEVFACTS_BEGIN_DECLS

/* ---- Configuration files ---- */

/**
 * A file in the configuration store, a library of the firmware with headers of its own: its cfg_ operations take such a
 * handle.
 */
typedef struct cfg_store *cfg_handle;

/**
 * Reads the system configuration, /tmp/system.cfg, unless it is open. It stays as it was read until sysconf_close().
 *
 * @return 0 if it is open now; -1 if it cannot be read or loaded, or without memory. The next call tries again.
 */
DEVFACTS_API int sysconf_open(void);

/** Closes the system configuration; if it is not open, nothing happens. Every text that came from it is gone. */
DEVFACTS_API void sysconf_close(void);

/**
 * The system configuration itself, for the store's own operations; it is opened where it is not open.
 *
 * @return the handle, which is borrowed until sysconf_close(); null where sysconf_open() fails.
 */
DEVFACTS_API cfg_handle sysconf_get_ctx(void);

/**
 * Looks a key of the system configuration up; it is opened where it is not open.
 *
 * @param key a dotted key, not null. One that holds '%' is never there, as the store would take it for a format.
 * @return its text, which belongs to the file and is good until sysconf_close(); null where there is no such key, and
 * where sysconf_open() fails.
 */
DEVFACTS_API const char *sysconf_get(const char *key);

/**
 * Reads the product description, /etc/product, unless it is open. It stays as it was read until prod_spec_close().
 *
 * @return 0 if it is open now; -1 otherwise. Once the file was found missing or unreadable (access() R_OK), that holds
 * for the life of the process: every further call gives -1 without a look at the file system. Where the file is
 * readable but cannot be loaded, and without memory, the next call tries again.
 */
DEVFACTS_API int prod_spec_open(void);

/**
 * Closes the product description; if it is not open, nothing happens. Every text that came from it is gone. A file once
 * found missing stays so.
 */
DEVFACTS_API void prod_spec_close(void);

/**
 * The product description itself, for the store's own operations; it is opened where it is not open.
 *
 * @return the handle, which is borrowed until prod_spec_close(); null where prod_spec_open() fails.
 */
DEVFACTS_API cfg_handle prod_spec_get_ctx(void);

/**
 * Looks a key of the product description up; it is opened where it is not open.
 *
 * @param key a dotted key, not null. One that holds '%' is never there, as the store would take it for a format.
 * @return its text, which belongs to the file and is good until prod_spec_close(); null where there is no such key, and
 * where prod_spec_open() fails.
 */
DEVFACTS_API const char *prod_spec_get(const char *key);

/* ---- Identity ---- */

/**
 * Opens the product description as prod_spec_open() does, for good where it is missing.
 *
 * @return the text of product.name in the product description, even an empty one, good until prod_spec_close();
 * "product" where there is none. It is not to be freed.
 */
DEVFACTS_API const char *product_name(void);

/**
 * Opens the product description as prod_spec_open() does, for good where it is missing.
 *
 * @return the text of product.enterprise-name in the product description, even an empty one, good until
 * prod_spec_close(); "manufacturer" where there is none. It is not to be freed.
 */
DEVFACTS_API const char *product_manufacturer(void);

/**
 * The serial number: the first line of /etc/serial-no, of which 63 characters count, without the white space at its
 * end.
 *
 * Where the file cannot be opened, it is "0000000000000000" (16 digits).
 *
 * @param buffer room for the text; all of it is set to zero first.
 * @param length bytes in @p buffer.
 * @return @p buffer; null, with @p buffer all zero, where the text with its NUL does not fit and where the file is
 * empty or cannot be read; null too for a null @p buffer or a @p length of 0.
 */
DEVFACTS_API char *read_serial_no(char *buffer, uint32_t length);

/**
 * The firmware version: the first line of /usr/lib/version, without the white space at its end.
 *
 * @param buffer room for the text, not null. A line that does not fit is cut.
 * @param length bytes in @p buffer. Below 1 gives null.
 * @return @p buffer; null where the file cannot be opened or read, or is empty, with nothing of use in @p buffer. Where
 * @p length is 1, a file that can be opened gives an empty text, whatever it holds.
 */
DEVFACTS_API char *read_firmware_version(char *buffer, int length);

/** The chips that cpu_detect() knows, each with the name that it looks for. */
enum {
  CPU_NONE = -1,   /**< no chip is known */
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

/**
 * Tells whether the device has this chip: the one whose name stands anywhere in the firmware version
 * (read_firmware_version(), 4095 characters of it), letters of the same case. Where several names stand there, the
 * order of the search decides: the chips up to CPU_RT2880, then CPU_RT3052, CPU_RT3050, CPU_RT3352, CPU_SL3512,
 * CPU_X86, CPU_XSCALE.
 *
 * A chip that was found is remembered for the life of the process; until then every call reads the version afresh.
 * First calls from several threads at a time do no harm.
 *
 * @param id a CPU_ number.
 * @return 1 if it is this one, else 0. While no chip is found, CPU_NONE gives 1.
 */
DEVFACTS_API int cpu_detect(int32_t id);

/**
 * @return the vendor of the wireless chip, the constant text "ralink".
 */
DEVFACTS_API const char *cpu_vendor(void);

/* ---- Capabilities ---- */

/*
 * Optional values. Each comes from one key of /etc/product, which stands beside the field below. The file gives no
 * units, and numbers are passed on as the store made them of its text: "as the file gives it" below.
 */

/** A text that may be absent. */
typedef struct caps_string {
  char *value;     /**< the text, for reading only, good until the process ends; null where absent */
  uint8_t present; /**< 1: there; 0: the store has no such key or no text for it, or there was no memory */
} caps_string;

/** A number that may be absent. */
typedef struct caps_u32 {
  uint32_t value;  /**< the number; the stand-in gives a negative one as its two's complement. 0 where absent */
  uint8_t present; /**< 1: the key is there; else 0 */
} caps_u32;

/** A truth value that may be absent. */
typedef struct caps_bool {
  uint32_t value;  /**< non-zero: true; 0: false or absent */
  uint8_t present; /**< 1: the key is there; else 0 */
} caps_bool;

/**
 * A frequency range of a radio: one for each index J of radio.I.frequency.J.range, whose text is "LOW-HIGH". White
 * space may stand before each of the three and a sign before each figure, anything behind HIGH; LOW may be the larger.
 * A bound that no int holds is of no use.
 */
typedef struct caps_freq_range {
  caps_string range;        /**< range: unchanged; the figures are as the file gives them, usually MHz */
  int32_t low;              /**< LOW - 10, in the unit of range; 0 where range is absent or of another form */
  int32_t high;             /**< HIGH + 10, likewise */
  caps_u32 max_eirp;        /**< max-eirp: as the file gives it */
  caps_u32 max_txpower;     /**< max-txpower: as the file gives it */
  caps_u32 max_width;       /**< max-width: as the file gives it */
  caps_string dfs_required; /**< dfs-required: as the file gives it */
  caps_string range_limits; /**< range-limits: as the file gives it */
} caps_freq_range;

/** A radio: one for each index I of radio.I.master. */
typedef struct caps_radio {
  caps_string master;              /**< master: name of the radio's interface */
  caps_string ieee_band;           /**< ieee-band: as the file gives it */
  caps_string allowed_modulations; /**< allowed-modulations: as the file gives it */
  caps_u32 txpower_offset;         /**< txpower-offset: as the file gives it */
  caps_u32 min_txpower;            /**< min-txpower: as the file gives it */
  caps_u32 antenna_gain;           /**< antenna-gain: as the file gives it */
  caps_bool ignore_crr;            /**< ignore-crr: as the file gives it */
  caps_bool cpe_fixed_channels;    /**< cpe.fixed-channels: as the file gives it */
  caps_u32 frequency_offset;       /**< frequency-offset: as the file gives it */
  int32_t range_count;             /**< rows in ranges */
  caps_freq_range *ranges;         /**< the frequency ranges; null where range_count is 0 */
  caps_u32 band_edge_low;          /**< band-edges.low: as the file gives it */
  caps_u32 band_edge_middle;       /**< band-edges.middle: as the file gives it */
  caps_u32 band_edge_high;         /**< band-edges.high: as the file gives it */
} caps_radio;

/** A frequency of a limit table: one for each index J of limits.I.table.J.frequency. */
typedef struct caps_limit_freq {
  caps_u32 frequency;         /**< frequency: as the file gives it */
  caps_string dfs_required;   /**< dfs-required: as the file gives it */
  caps_string max_txpower;    /**< max-txpower: a text here, as the file gives it */
  caps_string max_eirp;       /**< max-eirp: a text here, as the file gives it */
  caps_string allowed_widths; /**< allowed-widths: as the file gives it */
} caps_limit_freq;

/** A limit table: one for each index I of limits.I.table-name. */
typedef struct caps_limit_table {
  caps_string table_name; /**< table-name */
  int32_t freq_count;     /**< rows in freqs */
  caps_limit_freq *freqs; /**< the frequencies; null where freq_count is 0 */
} caps_limit_table;

/** An LED: one for each index I of led.lan.I.name, or of led.rssi.I.devname. */
typedef struct caps_led {
  caps_string devname; /**< devname: the interface or radio that it shows */
  caps_string name;    /**< name, in led.rssi rows names: of the LED or LEDs */
} caps_led;

/**
 * What the product can do. Rows stand in the order in which the configuration store walks over their indices, without
 * gaps; the index itself is not kept.
 */
typedef struct product_caps_t {
  int32_t loaded;                       /**< 1 once the file has been read, 0 before */
  caps_string id;                       /**< product.id */
  caps_string name;                     /**< product.name */
  caps_string hardware;                 /**< product.hardware */
  caps_string enterprise_name;          /**< product.enterprise-name */
  caps_string countrycode;              /**< product.countrycode */
  caps_string enterprise_oid;           /**< product.enterprise-oid */
  int32_t radio_count;                  /**< rows in radios */
  caps_radio *radios;                   /**< the radios; null where radio_count is 0 */
  int32_t limit_table_count;            /**< rows in limit_tables */
  caps_limit_table *limit_tables;       /**< the limit tables; null where limit_table_count is 0 */
  caps_string led_power_name;           /**< led.power.name */
  caps_string led_blinkled_name;        /**< led.blinkled.name */
  int32_t led_lan_count;                /**< rows in led_lan */
  caps_led *led_lan;                    /**< the LEDs of led.lan; null where led_lan_count is 0 */
  int32_t led_rssi_count;               /**< rows in led_rssi */
  caps_led *led_rssi;                   /**< the LEDs of led.rssi; null where led_rssi_count is 0 */
  caps_string protocol_name;            /**< product.protocol-name */
  caps_bool pppoe_filter_control;       /**< feature.pppoe-filter-control: as the file gives it */
  caps_bool arpnat_behind_dhcp_snooper; /**< feature.arpnat-behind-dhcp-snooper: as the file gives it */
} product_caps_t;

/**
 * The capability object, all zero until product_caps_get() has returned it. Read it only; it and all that it points to
 * stay until the process ends.
 */
DEVFACTS_API extern product_caps_t product_caps;

/**
 * The capabilities of this product, read from /etc/product by the first call that can load it. Later calls return the
 * same without a look at the file. It is read beside prod_spec_open(): neither that handle nor a file it once missed
 * matters here.
 *
 * @return the object's address; null, with the object all zero, where the file cannot be loaded: the next call tries
 * again.
 * Memory that runs out in a later step costs its own part alone: a text is absent, a list in which a row finds no room
 * is empty as a whole.
 * While the first call runs, another thread may see an object that is partly filled: serialise it.
 */
DEVFACTS_API product_caps_t *product_caps_get(void);

DEVFACTS_END_DECLS

#endif
