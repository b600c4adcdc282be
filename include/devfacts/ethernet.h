/*
 * devfacts/ethernet.h - what a wired link is doing: speed, duplex, link, supported modes and permanent address, through
 * the ethtool ioctl (SIOCETHTOOL).
 *
 * Nothing here prints, logs or sets errno on purpose. The control socket of ioctl_socket() is process-wide and without
 * a lock: use one thread at a time. When it cannot be made the process ends, as told there. Of a name longer than 16
 * bytes the kernel gets the first 16.
 */
#ifndef DEVFACTS_ETHERNET_H
#define DEVFACTS_ETHERNET_H

#include <devfacts/api.h>
#include <stdint.h>

DEVFACTS_BEGIN_DECLS

/** The state of a wired interface. The record is the caller's. */
typedef struct eth_status {
  uint16_t speed;       /**< Mbit/s as ETHTOOL_GSET tells, low 16 bits; 65535 where the driver does not know */
  uint8_t duplex;       /**< ETHTOOL_GSET: 0 half, 1 full, 255 where the driver does not know */
  uint8_t link;         /**< ETHTOOL_GLINK, low 8 bits: 1 up, 0 down */
  uint32_t supported;   /**< ETHTOOL_GSET: the SUPPORTED_ modes */
  uint8_t perm_addr[6]; /**< ETHTOOL_GPERMADDR: the permanent hardware address */
} eth_status;

/**
 * Tells whether an interface speaks ethtool: whether it answers ETHTOOL_GSET. The control socket stays open:
 * ioctl_close() when done.
 *
 * @param name the interface.
 * @return 1 if it does, 0 if not.
 */
DEVFACTS_API int eth_capable(const char *name);

/**
 * Fills a record with three requests, ETHTOOL_GSET, ETHTOOL_GLINK and ETHTOOL_GPERMADDR, and closes the control socket.
 *
 * @param status the caller's record; it is cleared first.
 * @param name the interface.
 * @return 0; -1 at the first request that fails: what those before it told is set, the rest zero.
 */
DEVFACTS_API int eth_info(eth_status *status, const char *name);

/**
 * Asks for the permanent hardware address (ETHTOOL_GPERMADDR) and closes the control socket.
 *
 * @param addr room for six bytes; they are cleared first.
 * @param name the interface.
 * @return 0; -1, with six zero bytes, when the request fails.
 */
DEVFACTS_API int eth_perm_addr(uint8_t *addr, const char *name);

/**
 * The word for a record's duplex: "half" or "full".
 *
 * @param status the record.
 * @param text room for the word, which is cut where it does not fit, always with its NUL; zeros fill the rest.
 * @param size bytes in @p text.
 * @return @p text; null, with nothing written, for a duplex other than 0 and 1 and a @p size below 1.
 */
DEVFACTS_API char *eth_duplex2str(const eth_status *status, char *text, int size);

/**
 * The word for a record's link: "yes" or "no"; otherwise as eth_duplex2str().
 *
 * @param status,text,size as there.
 * @return @p text; null, with nothing written, for a link other than 0 and 1 and a @p size below 1.
 */
DEVFACTS_API char *eth_link2str(const eth_status *status, char *text, int size);

DEVFACTS_END_DECLS

#endif
