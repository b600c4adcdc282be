/** @defgroup net Network interfaces
 * The list of interfaces and addresses, the netstats report, and the rtnetlink client that fills the list.
 *
 * The list is process-wide: use it from one thread at a time. Handles of the client are independent of each other.
 *
 * Collections and the client fail through die(), which ends the process with status 1, and they wait for the kernel
 * without a limit. A program that must not end collects in a child process (examples/statusd.c). One that must not wait
 * sets SO_RCVTIMEO on a handle of its own, then calls nl_dump() and nl_recv() (examples/monitor.c). Messages are
 * trusted: a process with CAP_NET_ADMIN can send false ones, which add interfaces that do not exist, block a collection
 * for ever by a name that leads to a pipe, or end the process (docs/trust.md).
 * @{ */
#ifndef DEVFACTS_NET_H
#define DEVFACTS_NET_H

#include <devfacts/api.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <stddef.h>
#include <stdint.h>

DEVFACTS_BEGIN_DECLS

/** @defgroup net_list The list of interfaces
 * @ingroup net
 * A snapshot of the interfaces of this network namespace, and of their addresses.
 *
 * Records and all they point to belong to the list until ifi_free() or ifi_free_all(). A program must not define a
 * variable `interfaces` of its own: it would take the place of the library's and crash the program.
 *
 * If the kernel's tables change during a collection, interfaces or addresses can be missing or twice in the list. The
 * kernel then sets NLM_F_DUMP_INTR in messages, which a callback of your own for nl_recv() can look at before it calls
 * nl_collect_interface(). If a message does not fit into the receive buffer (see nl_recv()), a part is lost and the
 * only sign is a warning on standard error.
 * @{ */

/** A link of a circular, doubly linked list. An empty head, and a link in no list, point to themselves. */
typedef struct list_link {
  struct list_link *next; /**< the next link; after the last one, the head */
  struct list_link *prev; /**< the previous link; before the first one, the head */
} list_link;

/** One network interface, as the kernel's link message describes it. What the message lacks is zero.
 * The master is what IFLA_LINK names (the lower device of a VLAN or macvlan, the peer of a veth), else what
 * iw_parent_name() finds. It is never a bridge. If it is in another namespace, its index may be that of an unrelated
 * interface here. The counters have 32 bits and wrap: bytes at 4 GiB. */
typedef struct ifi_entry {
  list_link list;                /**< link in ::interfaces; the first member, so it can be cast to the record */
  list_link addrs;               /**< head of the list of ::ipi_entry records, in the kernel's order */
  int32_t index;                 /**< kernel interface index */
  int32_t master;                /**< index of the master, see above; 0: no master */
  char *name;                    /**< interface name (IFLA_IFNAME); null if absent or without memory */
  uint8_t hwaddr[6];             /**< link-layer address (IFLA_ADDRESS): its first six bytes */
  uint8_t broadcast[6];          /**< link-layer broadcast address (IFLA_BROADCAST): its first six bytes */
  uint16_t type;                 /**< link type, an ARPHRD_ value */
  uint32_t txqlen;               /**< transmit queue length in packets (IFLA_TXQLEN) */
  uint32_t flags;                /**< device flags, IFF_UP and so on */
  struct rtnl_link_stats *stats; /**< 23 counters (IFLA_STATS); null if absent or without memory */
} ifi_entry;

/** One address of an interface.
 * On a point-to-point link addr is the peer's address, and the interface's own address is not in the record. addr and
 * broadcast are in network order, with zeros after them: at least 16 bytes and one more NUL. */
typedef struct ipi_entry {
  list_link list;     /**< link in the owner's addrs; the first member, so it can be cast to the record */
  uint16_t family;    /**< address family: AF_INET, AF_INET6, ... */
  int32_t prefixlen;  /**< prefix length in bits */
  uint8_t *addr;      /**< the address (IFA_ADDRESS, else IFA_LOCAL); null if absent or without memory */
  uint8_t *broadcast; /**< the broadcast address (IFA_BROADCAST); null if absent or without memory */
} ipi_entry;

/** The list of interfaces: the head of ::ifi_entry records in the kernel's order, empty until it is filled. */
DEVFACTS_API extern list_link interfaces;

/** Walks ::interfaces. To release an interface, get the next one first.
 * @param entry an interface, or null to start.
 * @return the next interface; null after the last. */
static inline ifi_entry *ifi_next(const ifi_entry *entry) {
  list_link *link = entry != NULL ? entry->list.next : interfaces.next;
  return link != &interfaces ? (ifi_entry *)link : NULL;
}

/** Walks the addresses of an interface.
 * @param entry the interface, not null.
 * @param address one of its addresses, or null to start.
 * @return the next address; null after the last. */
static inline ipi_entry *ipi_next(const ifi_entry *entry, const ipi_entry *address) {
  list_link *link = address != NULL ? address->list.next : entry->addrs.next;
  return link != &entry->addrs ? (ipi_entry *)link : NULL;
}

/** Fills ::interfaces from the kernel (RTM_GETLINK), without addresses.
 * Only an empty list is filled. One with a record in it is returned as it is, however old and however filled: call
 * ifi_free_all() first for a new one. Ends the process as nl_open(), nl_dump(), nl_recv() and ifi_alloc() do.
 * @return &interfaces. */
DEVFACTS_API list_link *ifi_get_all(void);

/** Fills ::interfaces from the kernel, with addresses (RTM_GETADDR); otherwise as ifi_get_all().
 * A list that ifi_get_all() filled is returned as it is, without addresses: call ifi_free_all() first.
 * An address of an interface that is not in the list is dropped, and so is one without memory.
 * @return &interfaces.
 * @par Example
 * @code
 * ifi_free_all();
 * ifi_get_all_ip();
 * for (ifi_entry *entry = ifi_next(NULL); entry != NULL; entry = ifi_next(entry)) {
 *   char text[INET6_ADDRSTRLEN];
 *   for (ipi_entry *at = ipi_next(entry, NULL); at != NULL; at = ipi_next(entry, at)) {
 *     if (at->family != AF_INET && at->family != AF_INET6) continue;
 *     if (ifi_ip_ntop(text, sizeof text, at)) printf("%s %s\n", entry->name ? entry->name : "?", text);
 *   }
 * }
 * @endcode */
DEVFACTS_API list_link *ifi_get_all_ip(void);

/** Searches ::interfaces for a name; the kernel is not asked. A record without a name never matches.
 * @param name the name, not null.
 * @return the first record with that name, which belongs to the list; null if there is no such record. */
DEVFACTS_API ifi_entry *ifi_find_by_name(const char *name);

/** Searches ::interfaces for a kernel index; the kernel is not asked.
 * @param index the index.
 * @return the first record with that index, which belongs to the list; null if there is no such record. */
DEVFACTS_API ifi_entry *ifi_find_by_index(int32_t index);

/** Allocates an interface record, all zero but for its two links, in no list.
 * @return the record, for ifi_register() or ifi_free(). Without memory, die() with "out of memory, %s\n" and the errno
 * text. */
DEVFACTS_API ifi_entry *ifi_alloc(void);

/** Allocates an address record, all zero but for its link, in no list.
 * @return the record, for ifi_add_addr() or free(); null without memory. */
DEVFACTS_API ipi_entry *ipi_alloc(void);

/** Appends an interface to ::interfaces, which then owns it.
 * @param entry a record of ifi_alloc() in no list; its name and stats are null or from malloc(). */
DEVFACTS_API void ifi_register(ifi_entry *entry);

/** Appends an address to an interface, which then owns it.
 * @param entry the interface, registered or not.
 * @param address a record of ipi_alloc() in no list; its addr and broadcast are null or from malloc(). */
DEVFACTS_API void ifi_add_addr(ifi_entry *entry, ipi_entry *address);

/** Releases an interface with all it owns. If it is in a list, it is removed from it.
 * @param entry a record of ifi_alloc(), not null. */
DEVFACTS_API void ifi_free(ifi_entry *entry);

/** Releases every record of ::interfaces. The list is then empty, and the next collection asks the kernel. */
DEVFACTS_API void ifi_free_all(void);

/** Registers the interface that a link message describes: the callback of the link dump.
 * The type of the message is not checked. Ends the process as ifi_alloc() does; warns as nl_parse_rtattr() does.
 * @param message a message with a struct ifinfomsg and attributes. It is not changed; no byte after its nlmsg_len is
 * read.
 * @return always 0. */
DEVFACTS_API int nl_collect_interface(struct nlmsghdr *message);

/** Reads the parent of a virtual interface: the first line of "/proc/sys/net/NAME/%parent", without the white space at
 * its end.
 * @param name the interface, from a source that you trust: "../x" opens another file, a path of more than 127 bytes is
 * cut and opened, and opening a named pipe waits for its writer. Null is a failure.
 * @param[out] buffer the parent's name.
 * @param size bytes in @p buffer; at most size - 1 characters of the line are read.
 * @return 0; -1 if there is no such file, if it is empty or if @p size is less than 1: @p buffer is unchanged. */
DEVFACTS_API int iw_parent_name(const char *name, char *buffer, int size);

/** @} */

/** @defgroup net_report The netstats report
 * @ingroup net
 * The list as an XML document on standard output, and its parts.
 *
 * Texts are not escaped. The kernel accepts interface names such as "a<b&c": with these the document may not be
 * well-formed, or may hide other interfaces. Write errors are not reported; ferror(stdout) shows them. A write to a
 * pipe without a reader raises SIGPIPE.
 * @{ */

/** Prints ::interfaces as an XML document.
 * It is an element netstats, with an element interface for each record (see ifi_dump_detail()). Fill the list first,
 * with ifi_get_all_ip(). Each interface takes roughly 0.03 ms on a processor of 384 MHz, without the kernel's work.
 * @param filter prints only the records with exactly this name (without one, an empty netstats); null prints all. */
DEVFACTS_API void ifi_dump_all(const char *filter);

/** Prints the items of one interface: name, status ("up" or "down", by IFF_UP), master (the name of that index now),
 * hwaddr, an ipv4 or ipv6 for each address, and the 23 counters by the names of struct rtnl_link_stats.
 * There is no line for a name that is null, for a master that is 0 or not found, for an address that is null or of
 * another family, and for counters if stats is null; a counter that the kernel does not have is 0. Prefix lengths are
 * not printed.
 * @param entry the interface, registered or not. */
DEVFACTS_API void ifi_dump_detail(const ifi_entry *entry);

/** Prints the line `"  <name>value</name>\n"`. Unlike xml_str_item() it prints an empty value as it is.
 * @param name the element; if null, nothing is printed.
 * @param value the text; if null, nothing is printed. */
DEVFACTS_API void ifi_xml_str_item(const char *name, const char *value);

/** Prints the line `"  <name>value</name>\n"`. Unlike in xml_int_item() the number is unsigned.
 * @param name the element, not null.
 * @param value the number. */
DEVFACTS_API void ifi_xml_int_item(const char *name, uint32_t value);

/** Formats a link-layer address: "02:FC:00:00:00:01".
 * @param[out] dst the text; 18 bytes hold it whole, a smaller buffer gets its start.
 * @param size bytes in @p dst; 0 writes nothing.
 * @param mac six bytes.
 * @return @p dst. */
DEVFACTS_API char *ifi_mac_ntop(char *dst, size_t size, const uint8_t *mac);

/** Formats an IP address with inet_ntop().
 * @param[out] buf the text; INET6_ADDRSTRLEN bytes are enough.
 * @param size bytes in @p buf.
 * @param entry an address, or null.
 * @return null if @p entry or its addr is null, otherwise @p buf, even if its content is unchanged because it is too
 * small or the family is neither AF_INET nor AF_INET6: check the family first. */
DEVFACTS_API char *ifi_ip_ntop(char *buf, size_t size, const ipi_entry *entry);

/** @} */

/** @defgroup net_client The rtnetlink client
 * @ingroup net
 * A blocking client for dumps and notifications.
 *
 * Every failure ends the process through die(), but EINTR is retried, and nl_recv() returns at EAGAIN. Requests of your
 * own must not set NLM_F_ACK: the kernel confirms success with an error message of code 0, which also ends the process.
 * @{ */

/** A netlink socket, in the caller's storage. A caller may set options on fd, such as SO_RCVTIMEO. */
typedef struct nl_handle {
  int fd;                   /**< the socket; -1 after nl_close() */
  struct sockaddr_nl local; /**< the socket's own address, as the kernel assigned it */
  struct sockaddr_nl peer;  /**< zero, unused */
  uint32_t seq;             /**< last sequence number: the time of nl_open(), plus 1 for each nl_dump() */
  uint32_t dump;            /**< sequence number of the last dump request */
} nl_handle;

/** Called for a message, which is valid until the callback returns. There is no context argument: results go to static
 * variables. @param message the message. @return ignored. */
typedef int (*nl_callback)(struct nlmsghdr *message);

/** Opens a netlink socket in blocking mode with socket buffers of 32768 bytes. It is inherited across exec().
 * @param[out] handle overwritten; close an open one first.
 * @param protocol netlink protocol, NETLINK_ROUTE (0) for this library's own uses.
 * @param groups multicast groups to join, as bits; 0 for dumps.
 * @par Failures
 * die() with "Failed to create netlink socket: %s\n", "can't change SO_SNDBUF, %s\n", "can't change SO_RCVBUF, %s\n",
 * "Failed to bind netlink socket: %s\n" or "can't getsockname(), %s\n" and the errno text, or with "whatever ...\n" if
 * the socket has no netlink address. */
DEVFACTS_API void nl_open(nl_handle *handle, int protocol, uint32_t groups);

/** Sends a request; EINTR is retried, EAGAIN is a failure.
 * @param handle an open handle.
 * @param buffer the request.
 * @param length its bytes.
 * @return the result of send(), which is not compared with @p length and never negative: if it fails, die() with
 * "cannot send netlink request, %s\n" and the errno text. */
DEVFACTS_API int nl_send(nl_handle *handle, const void *buffer, size_t length);

/** Requests a dump of all address families. Call nl_recv() before the next request on the handle.
 * @param handle an open handle.
 * @param type message type: RTM_GETLINK, RTM_GETADDR, ...
 * @return 20, the result of nl_send(); ends the process as that does. */
DEVFACTS_API int nl_dump(nl_handle *handle, int type);

/** Receives messages and calls the callback for each.
 * It returns at NLMSG_DONE, which ends a dump, or at EAGAIN, which comes from a receive timeout (SO_RCVTIMEO) or a
 * non-blocking fd. The only sign of it is errno: set it to 0 before the call and compare it with EAGAIN afterwards.
 * EINTR is retried, and the timeout starts again. Replies are not matched to the request, so one handle serves one dump
 * at a time. NLMSG_NOOP and NLMSG_OVERRUN are passed on; what follows NLMSG_DONE in its datagram is dropped. The
 * receive buffer is four pages on the caller's stack: 16 KiB with pages of 4 KiB. Of a larger datagram the whole
 * messages at its start are passed on, and standard error gets the warning "truncated message ?\n" in
 * place of the last failure below.
 * @param handle an open handle.
 * @param callback called on this thread, not null.
 * @par Failures
 * die() with
 * - "recvmsg() failed", also if notifications were lost because they were not read in time (ENOBUFS);
 * - "EOF on netlink, %s\n" and the errno text for an empty datagram;
 * - "netlink error (%d), %s\n", the error that the kernel reports and its text; if that is 0,
 *   "netlink communication error ...\n";
 * - "netlink error message truncated.\n";
 * - "netlink packet remains %d bytes, not parsed.\n" if the messages do not fill the datagram. */
DEVFACTS_API void nl_recv(nl_handle *handle, nl_callback callback);

/** Closes the socket and sets fd to -1. @param handle an open handle. */
DEVFACTS_API void nl_close(nl_handle *handle);

/** Sorts a block of attributes into a table by type; of several of one type the last counts.
 * The type counts with all 16 bits, flags such as NLA_F_NESTED included.
 * @param[out] table @p max + 1 pointers, which the function clears first: null, or into the block.
 * @param max highest type; higher ones are skipped.
 * @param first the first attribute.
 * @param length bytes in the block.
 * @return always 0. If whole attributes do not fill the block, the warning "!!!Deficit %d, rta_len=%d\n" with the bytes
 * that remain and the length that they claim (0 if unknown) goes to standard error. */
DEVFACTS_API int nl_parse_rtattr(struct rtattr **table, int max, struct rtattr *first, int length);

/** Returns the payload of an attribute, in place. @param attribute the attribute. @return its first byte. */
DEVFACTS_API void *nla_data(const struct rtattr *attribute);

/** Returns the payload's length. @param attribute the attribute. @return bytes; negative if it is malformed. */
DEVFACTS_API int nla_length(const struct rtattr *attribute);

/** Copies the start of the payload without checking its length.
 * @param[out] destination @p count bytes.
 * @param attribute the attribute.
 * @param count bytes to copy; the payload has at least as many.
 * @return @p destination. */
DEVFACTS_API void *nla_memcpy(void *destination, const struct rtattr *attribute, size_t count);

/** Copies the payload and adds a NUL.
 * @param attribute the attribute.
 * @return the copy, which the caller frees; null for an empty payload and without memory. */
DEVFACTS_API void *nla_memdup(const struct rtattr *attribute);

/** Copies the text in the payload: up to its first NUL, or all of it.
 * @param attribute the attribute.
 * @return the copy, which the caller frees, empty for an empty payload; null without memory. */
DEVFACTS_API char *nla_strdup(const struct rtattr *attribute);

/** Reads the payload's first four bytes as a number in host order; missing bytes are zero.
 * @param attribute the attribute.
 * @return the number. */
DEVFACTS_API uint32_t nla_get_u32(const struct rtattr *attribute);

/** @} */

DEVFACTS_END_DECLS

/** @} */

#endif
