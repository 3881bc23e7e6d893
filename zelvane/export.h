/* What crosses the library's boundary, and how. Every public header includes this file; it compiles as C99 and C++17.
 */
#ifndef ZELVANE_EXPORT_H
#define ZELVANE_EXPORT_H

/* The library is built with hidden visibility: a function or class is exported because it says ZELVANE_API. Private
   helpers of an exported class say ZELVANE_HIDDEN and stay out of the symbol table. */
#if defined(__GNUC__) || defined(__clang__)
#define ZELVANE_API __attribute__((visibility("default")))
#define ZELVANE_HIDDEN __attribute__((visibility("hidden")))
#else
#define ZELVANE_API
#define ZELVANE_HIDDEN
#endif

/* Plain, unmangled names for the exported plain functions. */
#ifdef __cplusplus
#define ZELVANE_C_BEGIN extern "C" {
#define ZELVANE_C_END }
#else
#define ZELVANE_C_BEGIN
#define ZELVANE_C_END
#endif

/* A check of a record's layout that C11 and C++ both make; older C goes without. */
#if defined(__cplusplus)
#define ZELVANE_STATIC_ASSERT(condition, text) static_assert(condition, text)
#elif defined(__STDC_VERSION__) && __STDC_VERSION__ >= 201112L
#define ZELVANE_STATIC_ASSERT(condition, text) _Static_assert(condition, text)
#else
#define ZELVANE_STATIC_ASSERT(condition, text) struct zelvane_static_assert_unused
#endif

#endif
