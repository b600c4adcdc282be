/** @defgroup transport Local messages
 * Messages between the processes of one device, over a named Unix datagram socket.
 *
 * A datagram holds one message: the payload's length in bytes, as 32 bits in host order, then the payload of 1 to
 * SOCKET_PAYLOAD_MAX bytes. Use the sender, and each receiver, from one thread at a time. No call ends the process or
 * raises a signal. Who may send is decided by the folder and the mode of the socket, which the umask sets; the sender
 * does not check who receives. Pointers are not null unless it says so.
 *
 * Errors go to the logging library (devfacts/platform/log.h), except for those of connecting, which go to standard
 * error. errno is changed.
 * @{ */
#ifndef DEVFACTS_TRANSPORT_H
#define DEVFACTS_TRANSPORT_H

#include <devfacts/api.h>
#include <stdint.h>
#include <sys/select.h>

DEVFACTS_BEGIN_DECLS

enum {
  SOCKET_PAYLOAD_MAX = 1596 /**< largest payload in bytes that a receiver takes; 4 bytes more make a datagram */
};

/** @defgroup transport_receiver The receiver
 * @ingroup transport
 * Makes a socket, reads messages when it is readable, and removes it.
 *
 * socket_read() is for a loop with select(). It has no limit of its own: it continues while senders keep the queue
 * filled. A loop with timers or epoll calls socket_input_read_single() and socket_input_extract() a limited number of
 * times a turn instead (examples/receiver.c).
 * @{ */

/** Called for each message. It must not end its receiver: set a flag, and shut down after socket_read() has returned.
 * @param payload the message, valid until the callback returns.
 * @param length its bytes, 1 to SOCKET_PAYLOAD_MAX.
 * @return ignored. */
typedef int (*socket_callback)(const void *payload, uint32_t length);

/** Makes the named socket of a receiver. Whatever file is at the path is removed first.
 * @param path 1 to 107 bytes.
 * @return a descriptor in blocking mode, inherited across exec(), for socket_input_shutdown(). -1 if no socket can be
 * made (not logged), or if it cannot get the name: level 1, "Cannot create '%s' UNIX socket.\n" with the path and
 * errno. A longer path is the latter, with ENAMETOOLONG, and nothing is removed. */
DEVFACTS_API int socket_input_init(const char *path);

/** Removes the socket from the file system and closes it.
 * @param fd the receiver's descriptor; if negative, nothing happens.
 * @param path its path. Whatever is there is removed, even if it is the socket of a newer receiver. If null, nothing
 * happens, and the descriptor stays open. */
DEVFACTS_API void socket_input_shutdown(int fd, const char *path);

/** Calls the callback for each waiting message, in the order of arrival. It does not wait for more.
 * Each datagram without a message (see socket_input_extract()) is dropped, with a line in the log: level 2,
 * "Corrupted input from socket!!!\n". One with a larger payload than SOCKET_PAYLOAD_MAX is cut, and so dropped. The
 * call ends at an empty datagram or a failed receive, and what follows waits for the next call.
 * @param fd the receiver's descriptor; if negative or from FD_SETSIZE on, nothing happens.
 * @param read_set what select() returned; if the descriptor is not in it, nothing happens.
 * @param callback called on this thread.
 * @return always 0.
 * @par Example
 * @code
 * fd_set readable;
 * FD_ZERO(&readable);
 * FD_SET(fd, &readable);
 * if (select(fd + 1, &readable, NULL, NULL, NULL) > 0) socket_read(fd, &readable, print_message);
 * @endcode */
DEVFACTS_API int socket_read(int fd, const fd_set *read_set, socket_callback callback);

/** Receives one datagram without waiting and without checking it; EINTR is retried.
 * @param fd the receiver's descriptor.
 * @param[out] buffer the datagram, which is cut if it does not fit: SOCKET_PAYLOAD_MAX + 4 bytes are enough.
 * @param size bytes in @p buffer.
 * @return bytes received. 0 if no datagram waits, if it is empty, and on failure: level 4,
 * "Failed recieving data from the socket\n" with errno. */
DEVFACTS_API int socket_input_read_single(int fd, void *buffer, uint32_t size);

/** Returns the message in a received datagram. Bytes after the payload are ignored.
 * @param buffer the datagram, at any alignment, or null.
 * @param size bytes received.
 * @param[out] length_out the payload's bytes; 0 without a payload.
 * @return the payload, in place; null if the datagram has less than 4 bytes, or if its length is 0 or more than the
 * bytes after it. */
DEVFACTS_API const void *socket_input_extract(const void *buffer, uint32_t size, uint32_t *length_out);

/** @} */

/** @defgroup transport_sender The sender
 * @ingroup transport
 * One connection of the process, which sends messages.
 *
 * The connection opens with the first message, to the path of that call; while it is open, other paths are ignored. No
 * function closes it. It ends if sending fails with anything but EINTR or EAGAIN, such as after a restart of the
 * receiver: that message is lost, and the next call connects again. fork() shares it: an error in one process ends it
 * for both. A program that closes its descriptor, for example with all others, can send nothing more, or worse: the
 * library may close the next file with that number.
 * @{ */

/** Sends one message. The result 0 does not mean that it was sent.
 * If no socket can be made (not reported), or if it cannot connect ("Socket write error" and the errno text on standard
 * error), nothing is sent and the result is 0. Set errno to 0 before the call: the message is in the receiver's queue
 * for certain only if the result and errno are 0 (examples/sender.c). A signal can leave EINTR although it was sent.
 * Nothing shows whether it is read.
 *
 * The call waits at most 2 seconds for a full queue, then sends once: if another sender fills the queue in between, the
 * result is -1 without a second wait. If O_NONBLOCK cannot be set, it can wait longer; standard error then gets
 * "set_nonblock: can't fcntl(F_GETFL) socket" or "set_nonblock: can't fcntl(F_SETFL) socket" and the errno text.
 * @param data the payload, which is copied.
 * @param size its bytes. A receiver drops more than SOCKET_PAYLOAD_MAX.
 * @param path the receiver's socket, at most 107 bytes; a longer one fails to connect with ENAMETOOLONG.
 * @return 0, see above. -1, logged at level 1, if @p data is null or @p size 0 ("Wrong parameters\n"), without memory
 * ("Failed memory allocation\n"), both followed by
 * "Unable create data container for sending data to the socket\n", and if the message was not sent whole
 * ("Failed writing to socket\n"). */
DEVFACTS_API int socket_write(const void *data, uint32_t size, const char *path);

/** @} */

DEVFACTS_END_DECLS

/** @} */

#endif
