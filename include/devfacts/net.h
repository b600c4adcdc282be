/*
 * devfacts/net.h - the network interfaces of the machine: a small rtnetlink client, the list of interfaces and
 * addresses that it fills, and the netstats report.
 *
 * Use the list from one thread at a time; handles of the netlink client are independent of each other. The netlink
 * client knows one way to fail: through die(), which writes a text to standard error and ends the process with
 * status 1.
 */
#ifndef DEVFACTS_NET_H
#define DEVFACTS_NET_H

#include <devfacts/api.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <stddef.h>
#include <stdint.h>

DEVFACTS_BEGIN_DECLS

/* ---- The list of interfaces ---- */

/** A link of a circular, doubly linked list. A head is one too; an empty head or a free link points at itself. */
typedef struct list_link {
  struct list_link *next; /**< the next link, the head behind the last one */
  struct list_link *prev; /**< the previous link, the head before the first one */
} list_link;

/** One network interface, as the kernel's link message described it. What the message lacks is zero. */
typedef struct ifi_entry {
  list_link list;                /**< link in ::interfaces; first, so that a pointer to it is one to the record */
  list_link addrs;               /**< head of this interface's ::ipi_entry list, in the kernel's order */
  int32_t index;                 /**< kernel interface index */
  int32_t master;                /**< index of the parent interface (IFLA_LINK, else iw_parent_name()); 0: none */
  char *name;                    /**< interface name (IFLA_IFNAME); null where the kernel gave none or memory was out */
  uint8_t hwaddr[6];             /**< link-layer address (IFLA_ADDRESS): six bytes at most, zero behind a shorter one */
  uint8_t broadcast[6];          /**< link-layer broadcast address (IFLA_BROADCAST), in the same way */
  uint16_t type;                 /**< link type, an ARPHRD_ value */
  uint32_t txqlen;               /**< transmit queue length in packets (IFLA_TXQLEN) */
  uint32_t flags;                /**< device flags, IFF_UP and so on */
  struct rtnl_link_stats *stats; /**< the 23 counters (IFLA_STATS), those the kernel did not give zero; null: none */
} ifi_entry;

/** One address of an interface. */
typedef struct ipi_entry {
  list_link list;     /**< link in the owner's addrs; first, so that a pointer to it is one to the record */
  uint16_t family;    /**< address family: AF_INET, AF_INET6, ... */
  int32_t prefixlen;  /**< prefix length in bits */
  uint8_t *addr;      /**< the address in network order (IFA_ADDRESS, else IFA_LOCAL); null: none. A NUL
                           stands behind it, and zeros up to 16 bytes behind a short one */
  uint8_t *broadcast; /**< the broadcast address (IFA_BROADCAST) in the same form; null: none */
} ipi_entry;

/**
 * The list of interfaces: a head of ::ifi_entry records in the kernel's order, empty until it is filled. A walk starts
 * at interfaces.next and ends when it is back at &interfaces.
 *
 * The records and all they point to belong to the list, until ifi_free() or ifi_free_all().
 */
DEVFACTS_API extern list_link interfaces;

/**
 * The interfaces of this network namespace, without addresses (rtnetlink RTM_GETLINK).
 *
 * An empty list is filled from the kernel; a list that holds a record is returned as it is, however old, and whichever
 * of the two operations filled it. ifi_free_all() before the call gives a fresh picture. An interface without IFLA_LINK
 * has the parent that iw_parent_name() finds; which interfaces have one at all is looked up once a collection.
 *
 * @return &interfaces.
 * Netlink failures and exhausted memory for a record end the process, in the words of the nl_ operations and
 * ifi_alloc(). A name, counters or an address that there is no memory for is left null or out.
 */
DEVFACTS_API list_link *ifi_get_all(void);

/**
 * The interfaces with their addresses (RTM_GETLINK, then RTM_GETADDR); otherwise as ifi_get_all().
 *
 * An address whose interface is not in the list is dropped.
 *
 * @return &interfaces.
 */
DEVFACTS_API list_link *ifi_get_all_ip(void);

/**
 * Searches the list as it stands; nothing is asked of the kernel.
 *
 * @param name an interface name, not null. A record without a name never matches.
 * @return the first record of that name, null where there is none. It belongs to the list.
 */
DEVFACTS_API ifi_entry *ifi_find_by_name(const char *name);

/**
 * Searches the list as it stands; nothing is asked of the kernel.
 *
 * @param index a kernel interface index.
 * @return the first record of that index, null where there is none. It belongs to the list.
 */
DEVFACTS_API ifi_entry *ifi_find_by_index(int32_t index);

/**
 * A new interface record, all zero, its two links pointing at themselves.
 *
 * @return the record, which the caller registers with ifi_register() or ends with ifi_free().
 * Without memory the process ends through die() with "out of memory, %s\n" and the errno text.
 */
DEVFACTS_API ifi_entry *ifi_alloc(void);

/**
 * A new address record, all zero, its link pointing at itself.
 *
 * @return the record, which the caller hands to ifi_add_addr(); null without memory.
 */
DEVFACTS_API ipi_entry *ipi_alloc(void);

/**
 * Appends a record to ::interfaces, which owns it from then on. Its name and stats must be null or from malloc.
 *
 * @param entry a record of ifi_alloc() that stands in no list.
 */
DEVFACTS_API void ifi_register(ifi_entry *entry);

/**
 * Appends an address to an interface, which owns it from then on. Its addr and broadcast must be null or from malloc.
 *
 * @param entry the interface, registered or not.
 * @param address a record of ipi_alloc() that stands in no list.
 */
DEVFACTS_API void ifi_add_addr(ifi_entry *entry, ipi_entry *address);

/**
 * Takes one record out of the list it stands in, if any, and releases it with all it owns. The others keep their order.
 *
 * @param entry a record of ifi_alloc(), not null.
 */
DEVFACTS_API void ifi_free(ifi_entry *entry);

/** Releases every record of ::interfaces. The list is empty afterwards, so the next collection asks the kernel. */
DEVFACTS_API void ifi_free_all(void);

/**
 * Registers the interface that a link message describes: the callback of the link dump.
 *
 * The message's type is not looked at, and no byte behind its nlmsg_len is read: what it lacks is zero in the record.
 *
 * @param message a message with a struct ifinfomsg and its attributes; it is not changed and not kept.
 * @return 0.
 * Ends the process as ifi_alloc() does; warns on standard error as nl_parse_rtattr() does.
 */
DEVFACTS_API int nl_collect_interface(struct nlmsghdr *message);

/**
 * The parent of a virtual interface: the first line of "/proc/sys/net/NAME/%parent", without the white space at its
 * end.
 *
 * @param name interface name; null gives -1. The path has room for 127 characters and is cut there, so a name that
 *        long gives -1 in practice; the kernel's have 15 at most.
 * @param buffer room for the parent's name.
 * @param size bytes in @p buffer; at most size - 1 characters of the line are read. Below 1 gives -1.
 * @return 0 with the name in @p buffer; -1 where there is no such file or nothing to read in it (@p buffer is as it
 * was).
 */
DEVFACTS_API int iw_parent_name(const char *name, char *buffer, int size);

/* ---- The netstats report ---- */

/**
 * Prints the list as it stands as one XML document on standard output: the element netstats, in it for each interface
 * name, status ("up" or "down": IFF_UP), master (its name, from if_indextoname()), hwaddr, ipv4 and ipv6 addresses, and
 * the kernel's 23 counters. What there is none of has no line; counters that a
 * record's kernel did not give print as 0.
 *
 * Fill the list with ifi_get_all_ip() first. Values are printed as they are, with no escaping: the kernel accepts
 * interface names that XML does not, such as "a<b&c", and the document is not well-formed where there is one. Write
 * errors are not looked at: ferror(stdout) tells.
 *
 * @param filter prints only the records of exactly this name; null prints all. A record without a name never matches.
 */
DEVFACTS_API void ifi_dump_all(const char *filter);

/**
 * Prints the items of one interface as ifi_dump_all() does, without the element around them.
 *
 * @param entry the interface, registered or not; its stats, where not null, have room for all 23 counters.
 */
DEVFACTS_API void ifi_dump_detail(const ifi_entry *entry);

/**
 * Prints the line "  <name>value</name>\n" on standard output, unescaped. Unlike xml_str_item() it leaves an absent
 * value out and prints an empty one as it is.
 *
 * @param name the element's name; null prints nothing.
 * @param value the text; null prints nothing.
 */
DEVFACTS_API void ifi_xml_str_item(const char *name, const char *value);

/**
 * Prints the line "  <name>value</name>\n" on standard output. Unlike in xml_int_item() the number is unsigned.
 *
 * @param name the element's name, not null.
 * @param value the number.
 */
DEVFACTS_API void ifi_xml_int_item(const char *name, uint32_t value);

/**
 * Formats a link-layer address: "02:FC:00:00:00:01", 17 characters and a NUL.
 *
 * @param dst room for the text, which is cut where it does not fit.
 * @param size bytes in @p dst; 0 writes nothing.
 * @param mac six bytes.
 * @return @p dst.
 */
DEVFACTS_API char *ifi_mac_ntop(char *dst, size_t size, const uint8_t *mac);

/**
 * Formats an IP address with inet_ntop().
 *
 * @param buf room for the text; INET6_ADDRSTRLEN bytes are always enough.
 * @param size bytes in @p buf.
 * @param entry an address of family AF_INET or AF_INET6, or null. For another family, or too little room, @p buf is
 *        returned as it was.
 * @return @p buf, or null where the entry or its addr is null (@p buf is as it was).
 */
DEVFACTS_API char *ifi_ip_ntop(char *buf, size_t size, const ipi_entry *entry);

/* ---- The rtnetlink client ---- */

/**
 * One rtnetlink socket, in the caller's storage: closed before nl_open() and after nl_close(). It belongs to the
 * caller.
 *
 * The fd is public. A caller may set SO_RCVTIMEO on it to bound the wait of nl_recv(), which otherwise blocks until the
 * kernel answers: when the time is over nl_recv() returns as if the dump had ended.
 */
typedef struct nl_handle {
  int fd;                   /**< the socket; -1 after nl_close() */
  struct sockaddr_nl local; /**< the socket's own address, as the kernel assigned it */
  struct sockaddr_nl peer;  /**< zero; no operation uses it */
  uint32_t seq;             /**< sequence number last used: the time of nl_open(), and 1 more with each nl_dump() */
  uint32_t dump;            /**< sequence number of the last dump request */
} nl_handle;

/**
 * Takes one message of a dump. It lies in the receive buffer and is good during the call only.
 *
 * @return anything: nl_recv() does not look at it.
 */
typedef int (*nl_callback)(struct nlmsghdr *message);

/**
 * Opens a netlink socket in blocking mode, with socket buffers of 32768 bytes each; it is inherited across exec.
 *
 * @param handle storage; whatever it held is overwritten, so an open one is closed first.
 * @param protocol netlink protocol, 0 (NETLINK_ROUTE) for the rest of this header.
 * @param groups multicast groups to bind to, a bit each.
 *
 * Ends the process through die(), each %s being the errno text, with "Failed to create netlink socket: %s\n",
 * "can't change SO_SNDBUF, %s\n", "can't change SO_RCVBUF, %s\n", "Failed to bind netlink socket: %s\n",
 * "can't getsockname(), %s\n", or "whatever ...\n" when the socket's own address is none of netlink's.
 */
DEVFACTS_API void nl_open(nl_handle *handle, int protocol, uint32_t groups);

/**
 * Sends a request; EINTR is retried.
 *
 * @param handle an open handle.
 * @param buffer the request; it is not kept.
 * @param length its bytes.
 * @return the count that send() gave, which is not compared to @p length.
 * Ends the process through die() with "cannot send netlink request, %s\n" and the errno text.
 */
DEVFACTS_API int nl_send(nl_handle *handle, const void *buffer, size_t length);

/**
 * Asks for a dump of all address families, with the next sequence number. nl_recv() is run to its end before the next
 * one.
 *
 * @param handle an open handle.
 * @param type message type of the request: RTM_GETLINK, RTM_GETADDR, ...
 * @return the count that nl_send() gave: 20. Ends the process as nl_send() does.
 */
DEVFACTS_API int nl_dump(nl_handle *handle, int type);

/**
 * Receives a dump and hands each of its messages to a callback, NLMSG_NOOP and NLMSG_OVERRUN included.
 *
 * It returns at NLMSG_DONE, dropping what follows in the datagram, and at EAGAIN: a handle whose fd is non-blocking or
 * has a receive time-out (SO_RCVTIMEO) thereby ends the wait early, with no sign of it. EINTR is retried; a signal
 * therefore starts a time-out afresh. Replies are not matched to the request, so a handle serves one dump at a time.
 * The receive buffer is four pages of the caller's stack. What a message claims of its length is never believed beyond
 * the bytes received; a datagram that the buffer cannot hold gives its leading messages and the warning "truncated
 * message ?\n" on standard error.
 *
 * @param handle an open handle.
 * @param callback called for each message.
 *
 * Ends the process through die() with "recvmsg() failed"; "EOF on netlink, %s\n" and the errno text for an empty
 * datagram; "netlink error message truncated.\n"; "netlink error (%d), %s\n" with the error that the kernel reported
 * and its text; "netlink communication error ...\n" for a reported error of 0; "netlink packet remains %d bytes, not
 * parsed.\n" for a datagram that is no whole number of messages.
 */
DEVFACTS_API void nl_recv(nl_handle *handle, nl_callback callback);

/**
 * Closes the socket and sets fd to -1.
 *
 * @param handle an open handle.
 */
DEVFACTS_API void nl_close(nl_handle *handle);

/**
 * Sorts a block of attributes into a table by type. A later attribute of a type replaces an earlier one; types above
 * @p max are passed over. The type counts with all its 16 bits, NLA_F_NESTED and the like included.
 *
 * @param table room for @p max + 1 pointers: all are cleared, then set to attributes of the block, which stay where
 * they are.
 * @param max highest type wanted.
 * @param first the first attribute.
 * @param length bytes in the block.
 * @return 0. A block that is no whole number of attributes is taken as far as it goes, with the warning
 *         "!!!Deficit %d, rta_len=%d\n" on standard error: the bytes left over and the length they claim, 0 where they
 * are too few to hold one.
 */
DEVFACTS_API int nl_parse_rtattr(struct rtattr **table, int max, struct rtattr *first, int length);

/**
 * @param attribute an attribute.
 * @return its payload, in place.
 */
DEVFACTS_API void *nla_data(const struct rtattr *attribute);

/**
 * @param attribute an attribute.
 * @return bytes in its payload; negative for an attribute that claims to be shorter than its header.
 */
DEVFACTS_API int nla_length(const struct rtattr *attribute);

/**
 * Copies the start of the payload, without a look at its length: the caller knows that there are as many bytes.
 *
 * @param destination room for @p count bytes.
 * @param attribute an attribute.
 * @param count bytes to copy.
 * @return @p destination.
 */
DEVFACTS_API void *nla_memcpy(void *destination, const struct rtattr *attribute, size_t count);

/**
 * A copy of the payload with a NUL behind it.
 *
 * @param attribute an attribute.
 * @return the copy, which the caller frees; null for an empty payload and without memory.
 */
DEVFACTS_API void *nla_memdup(const struct rtattr *attribute);

/**
 * A copy of the text that the payload holds: up to its first NUL, or all of it where it has none.
 *
 * @param attribute an attribute.
 * @return the copy, which the caller frees; null without memory.
 */
DEVFACTS_API char *nla_strdup(const struct rtattr *attribute);

/**
 * @param attribute an attribute.
 * @return the payload's first 32-bit word in host order; bytes that a shorter payload lacks count as zero.
 */
DEVFACTS_API uint32_t nla_get_u32(const struct rtattr *attribute);

DEVFACTS_END_DECLS

#endif
