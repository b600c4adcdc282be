/*
 * platform/log.h - what is asked of the logging library, a library of the device's firmware.
 * platform/builtin/log.cpp stands in for it, and sends the messages to syslog.
 *
 * Levels grow with what a message matters less: 1 is a failure, 2 bad input, 4 a passing fault. In the stand-in they
 * are the priorities LOG_CRIT (0 and below), LOG_ERR (1), LOG_WARNING, LOG_NOTICE, LOG_INFO and LOG_DEBUG (5 and
 * above), under the identity and facility that the program has given to openlog().
 */
#ifndef DEVFACTS_PLATFORM_LOG_H
#define DEVFACTS_PLATFORM_LOG_H

#include <devfacts/api.h>

DEVFACTS_BEGIN_DECLS

/**
 * Writes a message. The stand-in takes the first 1023 characters of it, and leaves out a newline at their end.
 *
 * @param level how much it matters.
 * @param format printf-style format, followed by the values it asks for.
 */
DEVFACTS_API void log_message(int level, const char *format, ...) DEVFACTS_PRINTF(2, 3);

/**
 * Writes a message whose cause is in errno. The stand-in adds ": " and the errno text; otherwise as log_message().
 *
 * @param level how much it matters.
 * @param format printf-style format, followed by the values it asks for.
 */
DEVFACTS_API void log_message_errno(int level, const char *format, ...) DEVFACTS_PRINTF(2, 3);

DEVFACTS_END_DECLS

#endif
