/// @file
/// Macros for the library's exported names. Every public header includes this file. It compiles as C99 and C++17.
#ifndef ZELVANE_EXPORT_H
#define ZELVANE_EXPORT_H

// The library is built with hidden visibility. ZELVANE_API exports a function or class. ZELVANE_HIDDEN keeps a private
// helper of an exported class out of the symbol table.
#if defined(__GNUC__) || defined(__clang__)
#define ZELVANE_API __attribute__((visibility("default")))
#define ZELVANE_HIDDEN __attribute__((visibility("hidden")))
#else
#define ZELVANE_API
#define ZELVANE_HIDDEN
#endif

// Unmangled names for the plain C functions.
#ifdef __cplusplus
#define ZELVANE_C_BEGIN extern "C" {
#define ZELVANE_C_END }
#else
#define ZELVANE_C_BEGIN
#define ZELVANE_C_END
#endif

// Checks a record's layout at compile time, in C11 and in C++. Older C does not check.
#if defined(__cplusplus)
#define ZELVANE_STATIC_ASSERT(condition, text) static_assert(condition, text)
#elif defined(__STDC_VERSION__) && __STDC_VERSION__ >= 201112L
#define ZELVANE_STATIC_ASSERT(condition, text) _Static_assert(condition, text)
#else
#define ZELVANE_STATIC_ASSERT(condition, text) struct zelvane_static_assert_unused
#endif

#endif
