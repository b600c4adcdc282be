/*
 * devfacts/range_record.h - the range record as the device's wireless driver delivers it.
 *
 * Up to the frequency table it has the layout of the kernel's struct iw_range; the table is larger. Numbers are in host
 * byte order. Only the named fields are looked at; the others are carried along.
 */
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
  uint8_t unused6[2];  /**< not looked at */
  int32_t channel;     /**< channel number */
  uint8_t unused12[4]; /**< not looked at */
} iw_range_freq;

/** What the driver knows of its own range: 4392 bytes. */
typedef struct iw_range_record {
  uint8_t unused0[52];     /**< throughput to avg_qual in the kernel's record */
  uint8_t num_bitrates;    /**< valid entries of bitrate; a driver may lie */
  uint8_t unused53[3];     /**< not looked at */
  int32_t bitrate[32];     /**< bits per second */
  uint8_t unused184[122];  /**< min_rts to num_channels in the kernel's record */
  uint8_t num_frequency;   /**< valid rows of freq */
  uint8_t unused307[1];    /**< not looked at */
  iw_range_freq freq[255]; /**< the frequencies, in the driver's order */
  uint8_t unused4388[4];   /**< not looked at */
} iw_range_record;

#ifdef __cplusplus
}
#endif

#endif
