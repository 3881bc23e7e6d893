/* Conversion between the library's Latin-1 and the UTF-8 of today's terminals and editors.

     char shown[2 * sizeof settings.shutMessage];
     if (Latin1ToUtf8(settings.shutMessage, shown, sizeof shown) >= 0) puts(shown);

   Both functions read `text` up to its NUL. They return the length in bytes of the complete converted text, without its
   NUL, even if the buffer is too small. A result of `size` or more means that the text was cut; a buffer of the result
   plus one byte holds it. Latin-1 text grows to at most twice its length as UTF-8.

   `buffer` belongs to the caller. At most `size` bytes are written, and the last one written is always NUL. A text that
   does not fit is cut before the first character that does not fit completely. With a null buffer or a size of 0 the
   functions only return the length. `text` and `buffer` must not overlap. */
#ifndef ZELVANE_API_ENCODING_H
#define ZELVANE_API_ENCODING_H

#include "zelvane/export.h"

ZELVANE_C_BEGIN
/* Each byte from 0x80 to 0xFF becomes two bytes; the others stay. Returns -1 and writes nothing for a null text. */
/* Every byte from 0x80 to 0xFF becomes two bytes; the others stay. -1, with nothing written, for a null text. */
ZELVANE_API long Latin1ToUtf8(char const* text, char* buffer, unsigned long size);
/* Returns -1 and writes nothing if the text is null, is not UTF-8, or has a character that Latin-1 lacks (above
   U+00FF). */
/* -1, with nothing written: null text, text that is not UTF-8, or a character above U+00FF, which Latin-1 lacks. */
ZELVANE_API long Utf8ToLatin1(char const* text, char* buffer, unsigned long size);

ZELVANE_C_END

#endif
