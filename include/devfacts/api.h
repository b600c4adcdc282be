/** @defgroup api Marks of declarations
 * The macros that the public headers put on their declarations.
 * @{ */
#ifndef DEVFACTS_API_H
#define DEVFACTS_API_H

/** Marks a function or object that the shared library exports; everything else is hidden. */
#define DEVFACTS_API __attribute__((visibility("default")))

/** Marks a function that does not return. */
#define DEVFACTS_NORETURN __attribute__((noreturn))

/** Marks a function that takes a printf format as argument @p f and its values from argument @p v on. */
#define DEVFACTS_PRINTF(f, v) __attribute__((format(printf, f, v)))

/** Marks a function that the C library declares as not throwing in C++. */
#if !defined __cplusplus
#define DEVFACTS_NOTHROW
#elif __cplusplus < 201103L
#define DEVFACTS_NOTHROW throw()
#else
#define DEVFACTS_NOTHROW noexcept
#endif

/** @def DEVFACTS_BEGIN_DECLS
 * Begins declarations with C linkage, in C and C++.
 * @def DEVFACTS_END_DECLS
 * Ends them. */
#ifdef __cplusplus
#define DEVFACTS_BEGIN_DECLS extern "C" {
#define DEVFACTS_END_DECLS }
#else
#define DEVFACTS_BEGIN_DECLS
#define DEVFACTS_END_DECLS
#endif

/** @} */

#endif
