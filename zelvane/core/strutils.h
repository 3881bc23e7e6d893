// Text and numbers: case, trimming, filling, splitting, and conversion between text and 32-bit integers or doubles.
//
// True for the whole header:
// - Text is Latin-1, one byte a character. The functions hold no state, and results are returned by value.
// - Every function of text comes twice: the `char const*` form reads up to the NUL, the `std::string const&` form takes
//   the whole length, NUL bytes included. A null pointer counts as the empty text unless its comment says otherwise.
// - Integers are 32 bits wide on every platform, whatever the width of `long`: formatters print the low 32 bits, and
//   text that does not fit into signed 32 bits does not convert.
// - Numbers are read and written as the classic locale does it; the program's own locale has no part in it.
// - Where there is no memory for a result, std::bad_alloc is thrown. A count of pieces that no vector can hold throws
//   std::length_error.
#ifndef ZELVANE_CORE_STRUTILS_H
#define ZELVANE_CORE_STRUTILS_H

#include <string>
#include <vector>

#include "zelvane/export.h"

// ---- Case ----

// Every byte passed through the C library's toupper/tolower: ASCII letters only, unless the program has called
// setlocale.
ZELVANE_API std::string UpperCase(char const* text);
ZELVANE_API std::string UpperCase(std::string const& text);
ZELVANE_API std::string LowerCase(char const* text);
ZELVANE_API std::string LowerCase(std::string const& text);

// The same for Latin-1, in every locale: ASCII letters, and 0xC0-0xD6, 0xD8-0xDE paired with 0xE0-0xF6, 0xF8-0xFE. The
// signs 0xD7 and 0xF7 and the letters without a partner (0xDF, 0xFF) stay.
ZELVANE_API std::string AnsiUpperCase(char const* text);
ZELVANE_API std::string AnsiUpperCase(std::string const& text);
ZELVANE_API std::string AnsiLowerCase(char const* text);
ZELVANE_API std::string AnsiLowerCase(std::string const& text);

// ---- Trimming, quoting, filling ----

// Without the blanks at both ends, or at one. A blank is a space, "\n", "\t" or "\r"; form feed and vertical tab are
// not.
ZELVANE_API std::string Trim(char const* text);
ZELVANE_API std::string Trim(std::string const& text);
ZELVANE_API std::string TrimLeft(char const* text);
ZELVANE_API std::string TrimLeft(std::string const& text);
ZELVANE_API std::string TrimRight(char const* text);
ZELVANE_API std::string TrimRight(std::string const& text);

// With a double quote in front unless `text` begins with one, and one behind unless it ends with one. Both ends are
// judged by the argument: "" gives two quotes, a lone quote is at both ends already and stays as it is. Null gives "".
ZELVANE_API std::string QuotedStr(char const* text);
ZELVANE_API std::string QuotedStr(std::string const& text);

// With `fill` added in front (behind, for FillRight) up to `width` bytes. Text that is as long or longer stays whole,
// and a width of 0 or less adds nothing. Null gives "", not a row of fill; the empty text is filled.
ZELVANE_API std::string FillLeft(char const* text, int width, char fill);
ZELVANE_API std::string FillLeft(std::string const& text, int width, char fill);
ZELVANE_API std::string FillRight(char const* text, int width, char fill);
ZELVANE_API std::string FillRight(std::string const& text, int width, char fill);

// ---- Splitting ----

// Replaces the content of `out` by the pieces of `text` between separators. `count` is the exact number of pieces
// wanted, or 0 for as many as there are:
// - A separator at the end leaves no empty piece behind it ("a;b;" gives "a", "b"); one at the start does ("", "a").
// - With a count, text behind the last piece is dropped, not joined to it ("a;b;c" with 2 gives "a", "b"), and missing
//   pieces are added as empty ones (the empty text with 3 gives three).
// - Of several separators the first in the list that occurs anywhere in the rest of the text cuts it, even when another
//   occurs earlier: ";" and "," cut "a,b;c" into "a,b" and "c".
// - An empty or null separator never occurs, and no separators at all leave the text in one piece.
// - Null `text` empties `out`, whatever the count.
// `out` may hold the text or the separators themselves.
ZELVANE_API void Tokenize(std::vector<std::string>& out, char const* text, std::vector<std::string> const& separators,
                          unsigned long count = 0);
ZELVANE_API void Tokenize(std::vector<std::string>& out, char const* text, std::string const& separator,
                          unsigned long count = 0);
ZELVANE_API void Tokenize(std::vector<std::string>& out, char const* text, char const* separator,
                          unsigned long count = 0);
ZELVANE_API void Tokenize(std::vector<std::string>& out, char const* text, char separator, unsigned long count = 0);
ZELVANE_API void Tokenize(std::vector<std::string>& out, std::string const& text,
                          std::vector<std::string> const& separators, unsigned long count = 0);
ZELVANE_API void Tokenize(std::vector<std::string>& out, std::string const& text, std::string const& separator,
                          unsigned long count = 0);
ZELVANE_API void Tokenize(std::vector<std::string>& out, std::string const& text, char const* separator,
                          unsigned long count = 0);
ZELVANE_API void Tokenize(std::vector<std::string>& out, std::string const& text, char separator,
                          unsigned long count = 0);

// Same as Tokenize, but every piece is passed through Trim. The separators are looked for before that.
ZELVANE_API void TrimTokenize(std::vector<std::string>& out, char const* text,
                              std::vector<std::string> const& separators, unsigned long count = 0);
ZELVANE_API void TrimTokenize(std::vector<std::string>& out, char const* text, std::string const& separator,
                              unsigned long count = 0);
ZELVANE_API void TrimTokenize(std::vector<std::string>& out, char const* text, char const* separator,
                              unsigned long count = 0);
ZELVANE_API void TrimTokenize(std::vector<std::string>& out, char const* text, char separator, unsigned long count = 0);
ZELVANE_API void TrimTokenize(std::vector<std::string>& out, std::string const& text,
                              std::vector<std::string> const& separators, unsigned long count = 0);
ZELVANE_API void TrimTokenize(std::vector<std::string>& out, std::string const& text, std::string const& separator,
                              unsigned long count = 0);
ZELVANE_API void TrimTokenize(std::vector<std::string>& out, std::string const& text, char const* separator,
                              unsigned long count = 0);
ZELVANE_API void TrimTokenize(std::vector<std::string>& out, std::string const& text, char separator,
                              unsigned long count = 0);

// ---- Numbers to text ----

// Decimal text. A `width` of 0 or less means no fill; otherwise shorter text is filled up to `width` bytes, and the
// fill goes between the minus sign and the digits: IntToStr(-5, 4) is "-005". Longer text is never cut.
ZELVANE_API std::string IntToStr(long value, int width = 0, char fill = '0');
ZELVANE_API std::string UIntToStr(unsigned long value, int width = 0, char fill = '0');

// Hexadecimal and binary text without prefix, filled in front. A negative value shows its 32 bits.
ZELVANE_API std::string IntToHex(long value, int width = 0, bool upper = true, char fill = '0');
ZELVANE_API std::string IntToBin(long value, int width = 0, char fill = '0');

// `value` with exactly `digits` significant digits, in plain or exponent notation, whichever "%#g" of printf takes:
// trailing zeros and the point stay ("1.50000", "1.00000e+20"), 0 digits count as 1 ("2."), and more than 2147483647 as
// 6. Infinities and not-a-numbers are "inf", "-inf", "nan", "-nan". Filled as IntToStr fills.
ZELVANE_API std::string FloatToStr(double value, int width = 0, unsigned int digits = 6, char fill = '0');

// ---- Text to numbers ----

// The number that the whole of `text` spells, or `def`: when it is null, empty or fails the test of the same name
// below, or when it does not fit into a signed 32-bit integer ("FFFFFFFF" does not) or is too large for a double. Text
// too small for a double gives 0 or the nearest value there is. Blanks are not skipped. "+5" is 5; a lone sign gives
// `def`.
ZELVANE_API long StrToIntDef(char const* text, long def);
ZELVANE_API long StrToIntDef(std::string const& text, long def);
ZELVANE_API long HexToIntDef(char const* text, long def);
ZELVANE_API long HexToIntDef(std::string const& text, long def);
ZELVANE_API double StrToFloatDef(char const* text, double def);
ZELVANE_API double StrToFloatDef(std::string const& text, double def);

// ---- Syntax tests: null and "" fail all of them ----

// Decimal digits of any number behind at most one sign. A lone "+" or "-" passes, although it has no value: callers
// rely on it, and StrToIntDef gives its default then.
ZELVANE_API bool StrIsInt(char const* text);
ZELVANE_API bool StrIsInt(std::string const& text);

// Hexadecimal digits of either case; no sign and no "0x".
ZELVANE_API bool StrIsHex(char const* text);
ZELVANE_API bool StrIsHex(std::string const& text);

// An optional sign; digits with at most one point, at least one digit; then, optionally, "E" (not "e"), an optional
// sign and at least one digit.
ZELVANE_API bool StrIsFloat(char const* text);
ZELVANE_API bool StrIsFloat(std::string const& text);

// False for every text, numeric addresses included. Callers depend on it: nothing is treated as an address by this
// test.
ZELVANE_API bool StrIsIPNumber(char const* text);
ZELVANE_API bool StrIsIPNumber(std::string const& text);

#endif
