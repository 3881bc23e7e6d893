/// @file
/// Conversion between the library's Latin-1 and UTF-8.
///
///     char shown[2 * sizeof settings.shutMessage];
///     if (Latin1ToUtf8(settings.shutMessage, shown, sizeof shown) >= 0) puts(shown);
///
/// Both functions read `text` up to its NUL. They return the length of the complete converted text in bytes, without
/// its NUL, for any buffer: a result of `size` or more means that the text was cut to fit, and a buffer of the result
/// plus one byte holds all of it. UTF-8 is at most twice as long as Latin-1.
///
/// The caller owns `buffer`. The functions write at most `size` bytes; the last one written is always a NUL. A text
/// that is too long ends before the first character that does not fit. With a null buffer or size 0 the functions write
/// nothing and return the length. `text` and `buffer` must not overlap.
#ifndef ZELVANE_API_ENCODING_H
#define ZELVANE_API_ENCODING_H

#include "zelvane/export.h"

ZELVANE_C_BEGIN

/// Bytes from 0x80 to 0xFF become two bytes, the others one. Returns -1, with nothing written, for a null text.
ZELVANE_API long Latin1ToUtf8(char const* text, char* buffer, unsigned long size);

/// Returns -1, with nothing written, for a null text, text that is not UTF-8, and a character above U+00FF.
ZELVANE_API long Utf8ToLatin1(char const* text, char* buffer, unsigned long size);

ZELVANE_C_END

#endif
