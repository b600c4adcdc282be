/** @defgroup log The logging library
 * What is asked of the logging library of a device's firmware. The stand-in here sends messages to syslog.
 *
 * Higher levels matter less. devfacts uses 1 for a failure, 2 for bad input and 4 for a passing error. In the stand-in
 * they are the priorities LOG_CRIT (0 and below), LOG_ERR (1), LOG_WARNING (2), LOG_NOTICE (3), LOG_INFO (4) and
 * LOG_DEBUG (5 and above), with the identity and facility of the program's openlog().
 * @{ */
#ifndef DEVFACTS_PLATFORM_LOG_H
#define DEVFACTS_PLATFORM_LOG_H

#include <devfacts/api.h>

DEVFACTS_BEGIN_DECLS

/** Writes a message. The stand-in takes its first 1023 characters and drops a newline at their end.
 * @param level how much it matters.
 * @param format printf-style format, followed by its values. */
DEVFACTS_API void log_message(int level, const char *format, ...) DEVFACTS_PRINTF(2, 3);

/** Writes a message whose cause is in errno; otherwise as log_message(). The stand-in adds ": " and the errno text.
 * @param level how much it matters.
 * @param format printf-style format, followed by its values. */
DEVFACTS_API void log_message_errno(int level, const char *format, ...) DEVFACTS_PRINTF(2, 3);

DEVFACTS_END_DECLS

/** @} */

#endif
