/* Text between the library's Latin-1 and the UTF-8 of today's terminals and editors.

     char shown[2 * sizeof settings.shutMessage];
     if (Latin1ToUtf8(settings.shutMessage, shown, sizeof shown) >= 0) puts(shown);

   Both functions read `text` up to its NUL. They return the length of the whole converted text in bytes, without its
   NUL, however much of it the buffer takes: a result of `size` or more says that the text was cut, and that a buffer
   of the result plus one byte holds it. Latin-1 text takes at most twice its length as UTF-8.

   `buffer` is the caller's. At most `size` bytes are written, and the last one written is always a NUL. A text that
   does not fit is cut before the first character that does not fit whole. A null buffer, or a size of 0, only asks for
   the length. `text` and `buffer` must not overlap. */
#ifndef ZELVANE_API_ENCODING_H
#define ZELVANE_API_ENCODING_H

#include "zelvane/export.h"

ZELVANE_C_BEGIN

/* Every byte from 0x80 to 0xFF becomes two bytes; the others stay. -1, with nothing written, for a null text. */
ZELVANE_API long Latin1ToUtf8(char const* text, char* buffer, unsigned long size);

/* -1, with nothing written: null text, text that is not UTF-8, or a character above U+00FF, which Latin-1 lacks. */
ZELVANE_API long Utf8ToLatin1(char const* text, char* buffer, unsigned long size);

ZELVANE_C_END

#endif
