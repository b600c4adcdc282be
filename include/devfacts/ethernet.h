/** @defgroup ethernet Ethernet links
 * The state of a wired interface, by the ethtool ioctl (SIOCETHTOOL).
 *
 * Nothing here prints or logs, except for the fatal exit of ioctl_socket(), if no control socket can be opened. Use one
 * thread at a time: that socket is process-wide. The kernel gets the first 15 characters of a name, so a longer one can
 * address another interface. After a failure errno is that of the ioctl: ENODEV if there is no such interface.
 * @{ */
#ifndef DEVFACTS_ETHERNET_H
#define DEVFACTS_ETHERNET_H

#include <devfacts/api.h>
#include <stdint.h>

DEVFACTS_BEGIN_DECLS

/** The state of a wired interface. The record is the caller's. */
typedef struct eth_status {
  uint16_t speed;       /**< Mbit/s (ETHTOOL_GSET, low 16 bits); 65535 if unknown, as on many drivers without a link */
  uint8_t duplex;       /**< 0 half, 1 full, 255 if unknown (ETHTOOL_GSET) */
  uint8_t link;         /**< 1 up, 0 down (ETHTOOL_GLINK, low 8 bits) */
  uint32_t supported;   /**< the SUPPORTED_ modes (ETHTOOL_GSET) */
  uint8_t perm_addr[6]; /**< permanent hardware address (ETHTOOL_GPERMADDR) */
} eth_status;

/** Checks whether an interface answers ETHTOOL_GSET. The control socket stays open: call ioctl_close() at the end.
 * @param name the interface, not null.
 * @return 1 if so, 0 if not. */
DEVFACTS_API int eth_capable(const char *name);

/** Fills a record and closes the control socket, on failure, too.
 * The requests are ETHTOOL_GSET, ETHTOOL_GLINK and ETHTOOL_GPERMADDR.
 * @param[out] status cleared first.
 * @param name the interface, not null.
 * @return 0; -1 at the first request that fails: the answers before it are set, the rest is zero. */
DEVFACTS_API int eth_info(eth_status *status, const char *name);

/** Reads the permanent hardware address (ETHTOOL_GPERMADDR); closes the control socket, on failure, too.
 * @param[out] addr six bytes, cleared first.
 * @param name the interface, not null.
 * @return 0 or -1. */
DEVFACTS_API int eth_perm_addr(uint8_t *addr, const char *name);

/** Names a record's duplex: "half" or "full".
 * @param status the record.
 * @param[out] text the word, cut if it does not fit, NUL-terminated; zeros fill the rest.
 * @param size bytes in @p text.
 * @return @p text; null, with nothing written, if duplex is neither 0 nor 1 or @p size is less than 1. */
DEVFACTS_API char *eth_duplex2str(const eth_status *status, char *text, int size);

/** Names a record's link: "no" or "yes".
 * @param status the record.
 * @param[out] text the word, cut if it does not fit, NUL-terminated; zeros fill the rest.
 * @param size bytes in @p text.
 * @return @p text; null, with nothing written, if link is neither 0 nor 1 or @p size is less than 1. */
DEVFACTS_API char *eth_link2str(const eth_status *status, char *text, int size);

DEVFACTS_END_DECLS

/** @} */

#endif
