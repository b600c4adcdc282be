/** @defgroup range_record The range record
 * What the device's wireless driver answers to SIOCGIWRANGE.
 *
 * Up to the frequency table it has the layout of the kernel's struct iw_range; the table is larger. Numbers are in host
 * byte order. Only the named fields are used.
 * @{ */
#ifndef DEVFACTS_RANGE_RECORD_H
#define DEVFACTS_RANGE_RECORD_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** A frequency and its channel: 16 bytes. The first six have the form of the kernel's struct iw_freq. */
typedef struct iw_range_freq {
  int32_t m;           /**< mantissa */
  int16_t e;           /**< exponent of ten */
  uint8_t unused6[2];  /**< unused */
  int32_t channel;     /**< channel number */
  uint8_t unused12[4]; /**< unused */
} iw_range_freq;

/** The range record: 4392 bytes. */
typedef struct iw_range_record {
  uint8_t unused0[52];     /**< throughput to avg_qual in the kernel's record */
  uint8_t num_bitrates;    /**< valid entries of bitrate, not more than 32 if the driver is right */
  uint8_t unused53[3];     /**< unused */
  int32_t bitrate[32];     /**< bits per second */
  uint8_t unused184[122];  /**< min_rts to num_channels in the kernel's record */
  uint8_t num_frequency;   /**< valid rows of freq */
  uint8_t unused307[1];    /**< unused */
  iw_range_freq freq[255]; /**< the frequencies, in the driver's order */
  uint8_t unused4388[4];   /**< unused */
} iw_range_record;

#ifdef __cplusplus
}
#endif

/** @} */

#endif
