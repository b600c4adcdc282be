/*
 * devfacts/transport.h - messages between the processes of one device, over a named Unix datagram socket.
 *
 * One datagram is one message: its length in bytes, 32 bits in host order and never 0, then as many bytes of payload.
 * A receiver holds no state beyond its descriptor, so that several can be served; the sender has one connection in the
 * whole process. Use each receiver, and the sender, from one thread at a time.
 *
 * Failures go to the logging library, with a level: 1 where a receiver's name cannot be given to it, and where a
 * message cannot be made or sent, 2 for corrupted input, 4 where receiving fails; those of connecting go to standard
 * error, and a socket that cannot be had is not reported. No call ends the process, and errno is not kept.
 */
#ifndef DEVFACTS_TRANSPORT_H
#define DEVFACTS_TRANSPORT_H

#include <devfacts/api.h>
#include <stdint.h>
#include <sys/select.h>

DEVFACTS_BEGIN_DECLS

/* ---- The receiver: make the socket, read it whenever select() finds it readable, shut it down ---- */

/**
 * Gets one message; what it returns is ignored.
 *
 * @param payload the message, good until this call returns: the next one is received into the same place.
 * @param length its bytes, 1 to 1596.
 */
typedef int (*socket_callback)(const void *payload, uint32_t length);

/**
 * Makes the named socket that messages arrive at. Whatever stood at the path is removed, be it a socket or not.
 *
 * @param path where to put it, not empty, at most 107 characters.
 * @return its descriptor, in blocking mode and inherited across exec; the caller ends it with
 * socket_input_shutdown(). -1 where no socket can be made, which is not logged, and where the name cannot be given to
 * it (level 1: "Cannot create '%s' UNIX socket.\n" with the path and errno). A longer path counts as the latter, with
 * ENAMETOOLONG, and nothing is removed.
 */
DEVFACTS_API int socket_input_init(const char *path);

/**
 * Removes the socket from the file system and closes it.
 *
 * @param fd what socket_input_init() returned. With a negative one nothing happens.
 * @param path where it stands. With null nothing happens, and the descriptor stays open.
 */
DEVFACTS_API void socket_input_shutdown(int fd, const char *path);

/**
 * Empties the socket's queue without waiting: each waiting message goes to the callback, in the order of arrival.
 *
 * A datagram of 1 to 3 bytes, with a length of 0, or with one of more bytes than arrived is dropped (level 2:
 * "Corrupted input from socket!!!\n"); a message of more than 1596 bytes arrives cut, and is one of these. Bytes
 * behind the length are ignored. An empty datagram and a failing receive (as socket_input_read_single() logs it) end
 * the call; what waits behind them is left to the next one. Nothing is allocated.
 *
 * @param fd the receiver's descriptor. Negative, or of FD_SETSIZE and above: it counts as not in the set.
 * @param read_set the set in which select() left the readable descriptors. Without the descriptor in it the socket is
 * not touched.
 * @param callback gets each message, on this thread, before the next is received.
 * @return always 0.
 */
DEVFACTS_API int socket_read(int fd, const fd_set *read_set, socket_callback callback);

/**
 * Receives one datagram without waiting, and without a look at it. An interruption by a signal starts it anew.
 *
 * @param fd the receiver's descriptor.
 * @param buffer room for the datagram, which is cut where it does not fit.
 * @param size bytes in @p buffer.
 * @return bytes received; 0 for an empty datagram, where none waits, and where receiving fails (level 4: "Failed
 * recieving data from the socket\n" with errno).
 */
DEVFACTS_API int socket_input_read_single(int fd, void *buffer, uint32_t size);

/**
 * The message in a received datagram.
 *
 * @param buffer the datagram, at any alignment; null counts as none.
 * @param size bytes received.
 * @param length_out gets the payload's length in bytes, 0 where there is no payload.
 * @return the payload, in place; null for a datagram of less than 4 bytes, and where its length is 0 or more than the
 * bytes behind it.
 */
DEVFACTS_API const void *socket_input_extract(const void *buffer, uint32_t size, uint32_t *length_out);

/* ---- The sender ---- */

/**
 * Sends one message. The first call connects, and the connection stays open for the process and its children, until
 * sending (not the wait for it) meets an error that is neither an interruption nor a full queue, such as a receiver
 * that has gone: the next call then connects anew. While it is open, the path does not count. Nobody but the library
 * may close its descriptor.
 *
 * The call waits at most 2 seconds for room in the receiver's queue, with select(), or with poll() where its descriptor
 * is FD_SETSIZE or above. A message that failed is lost: nothing is sent again. No signal is raised.
 *
 * @param data the payload, which is copied.
 * @param size its bytes; a receiver of this library takes up to 1596.
 * @param path the receiver's socket, at most 107 characters; a longer one fails to connect with ENAMETOOLONG.
 * @return 0 when it was sent, and also when there was no socket to be had (not reported) or it could not connect
 * ("Socket write error" and the errno text on standard error): nothing was sent then, and nothing is open.
 *
 * -1, logged at level 1, in these cases: null data or a size of 0 ("Wrong parameters\n") and exhausted memory ("Failed
 * memory allocation\n"), each followed by "Unable create data container for sending data to the socket\n", before
 * anything is connected; no room in time, a failing wait, and a message not sent or not whole ("Failed writing to
 * socket\n").
 *
 * A connection that cannot be made non-blocking is used as it is, so that sending may wait for longer; "set_nonblock:
 * can't fcntl(F_GETFL) socket" or "set_nonblock: can't fcntl(F_SETFL) socket" and the errno text tell so on standard
 * error.
 */
DEVFACTS_API int socket_write(const void *data, uint32_t size, const char *path);

DEVFACTS_END_DECLS

#endif
