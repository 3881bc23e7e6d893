/// @file
/// Text and numbers: case, trimming, filling, splitting, and conversion between text and 32-bit integers or doubles.
///
/// For the whole header:
/// - Text is Latin-1, one byte per character. The functions have no state and return results by value.
/// - Every text function has two overloads: `char const*` reads up to the NUL, `std::string const&` uses the whole
///   length, NUL bytes included. A null pointer counts as "" unless the function says otherwise.
/// - Integers have 32 bits on every platform, whatever the width of `long`: formatters print the low 32 bits, and text
///   that does not fit into signed 32 bits does not convert.
/// - Numbers are read and written in the classic locale; the program's own locale has no effect.
/// - When memory runs out, std::bad_alloc is thrown. A token count that no vector can hold throws std::length_error.
#ifndef ZELVANE_CORE_STRUTILS_H
#define ZELVANE_CORE_STRUTILS_H

#include <string>
#include <vector>

#include "zelvane/export.h"

/// @name Case
/// @{

/// Apply the C library's toupper or tolower to each byte: ASCII letters only, unless the program has called setlocale.
ZELVANE_API std::string UpperCase(char const* text);
ZELVANE_API std::string UpperCase(std::string const& text);
ZELVANE_API std::string LowerCase(char const* text);
ZELVANE_API std::string LowerCase(std::string const& text);

/// Same for Latin-1, in every locale: ASCII letters, and 0xC0-0xD6, 0xD8-0xDE paired with 0xE0-0xF6, 0xF8-0xFE. The
/// signs 0xD7 and 0xF7 and the letters without a counterpart (0xDF, 0xFF) stay.
ZELVANE_API std::string AnsiUpperCase(char const* text);
ZELVANE_API std::string AnsiUpperCase(std::string const& text);
ZELVANE_API std::string AnsiLowerCase(char const* text);
ZELVANE_API std::string AnsiLowerCase(std::string const& text);
/// @}

/// @name Trimming, quoting, filling
/// @{

/// Remove blanks at both ends, or at one. A blank is a space, `"\n"`, `"\t"` or `"\r"`; form feed and vertical tab are
/// not blanks.
ZELVANE_API std::string Trim(char const* text);
ZELVANE_API std::string Trim(std::string const& text);
ZELVANE_API std::string TrimLeft(char const* text);
ZELVANE_API std::string TrimLeft(std::string const& text);
ZELVANE_API std::string TrimRight(char const* text);
ZELVANE_API std::string TrimRight(std::string const& text);

/// Adds a leading double quote unless `text` begins with one, and a trailing one unless it ends with one. Both ends are
/// judged by the argument: "" returns two quotes; a lone quote counts as both and stays. Null returns "".
ZELVANE_API std::string QuotedStr(char const* text);
ZELVANE_API std::string QuotedStr(std::string const& text);

/// Add `fill` before the text (FillRight: after it) up to `width` bytes. Longer text is not cut, and a width of 0 or
/// less adds nothing. Null returns "", without fill; the empty text is filled.
ZELVANE_API std::string FillLeft(char const* text, int width, char fill);
ZELVANE_API std::string FillLeft(std::string const& text, int width, char fill);
ZELVANE_API std::string FillRight(char const* text, int width, char fill);
ZELVANE_API std::string FillRight(std::string const& text, int width, char fill);
/// @}

/// @name Splitting
/// @{

/// Replaces the contents of `out` with the tokens of `text` between separators. `count` is the exact number of tokens
/// required, or 0 for as many as there are:
/// - A trailing separator adds no empty token ("a;b;" returns "a", "b"); a leading one does ("", "a").
/// - With a count, text after the last token is dropped, not joined to it ("a;b;c" with 2 returns "a", "b"). Missing
///   tokens are added as empty ones (the empty text with 3 returns three).
/// - Kept: with several separators, the text is split at the first one of the list that occurs anywhere in the
///   remaining text, even if another occurs earlier. ";" and "," split "a,b;c" into "a,b" and "c".
/// - An empty or null separator never occurs. Without separators the text is one token.
/// - Null `text` empties `out`, whatever the count.
/// `out` can contain the text or the separators themselves.
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

/// Same as Tokenize, but Trim is applied to every token afterwards.
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
/// @}

/// @name Numbers to text
/// @{

/// Return decimal text. A `width` of 0 or less means no fill; otherwise shorter text is filled up to `width` bytes. The
/// fill goes between the minus sign and the digits: IntToStr(-5, 4) is "-005". Longer text is never cut.
ZELVANE_API std::string IntToStr(long value, int width = 0, char fill = '0');
ZELVANE_API std::string UIntToStr(unsigned long value, int width = 0, char fill = '0');

/// Return hexadecimal and binary text without a prefix, filled before the digits. A negative value shows its 32 bits.
ZELVANE_API std::string IntToHex(long value, int width = 0, bool upper = true, char fill = '0');
ZELVANE_API std::string IntToBin(long value, int width = 0, char fill = '0');

/// Returns `value` with exactly `digits` significant digits, in decimal or exponent notation as chosen by `"%#g"` of
/// printf. Trailing zeros and the point stay ("1.50000", "1.00000e+20"). 0 digits count as 1 ("2."), more than
/// 2147483647 as 6. Infinities and not-a-numbers are "inf", "-inf", "nan", "-nan". Filled as by IntToStr.
ZELVANE_API std::string FloatToStr(double value, int width = 0, unsigned int digits = 6, char fill = '0');
/// @}

/// @name Text to numbers
/// @{

/// Return the number in the whole of `text`, or `def`. The result is `def` if the text is null, empty or fails the
/// matching test below (StrIsInt for StrToIntDef, and so on), if it does not fit into a signed 32-bit integer
/// ("FFFFFFFF" does not), or if it is too large for a double. Text too small for a double returns 0 or the nearest
/// value. Blanks are not skipped. "+5" is 5; a lone sign returns `def`.
ZELVANE_API long StrToIntDef(char const* text, long def);
ZELVANE_API long StrToIntDef(std::string const& text, long def);
ZELVANE_API long HexToIntDef(char const* text, long def);
ZELVANE_API long HexToIntDef(std::string const& text, long def);
ZELVANE_API double StrToFloatDef(char const* text, double def);
ZELVANE_API double StrToFloatDef(std::string const& text, double def);
/// @}

/// @name Syntax tests
///
/// Null and "" fail all of them.
/// @{

/// One sign at most, then any number of decimal digits. Kept: a lone "+" or "-" passes although it has no value,
/// because callers rely on it; StrToIntDef then returns its default.
ZELVANE_API bool StrIsInt(char const* text);
ZELVANE_API bool StrIsInt(std::string const& text);

/// Hexadecimal digits in upper or lower case; no sign and no "0x".
ZELVANE_API bool StrIsHex(char const* text);
ZELVANE_API bool StrIsHex(std::string const& text);

/// An optional sign; digits with at most one point, at least one digit; then, optionally, "E" (not "e"), an optional
/// sign and at least one digit.
ZELVANE_API bool StrIsFloat(char const* text);
ZELVANE_API bool StrIsFloat(std::string const& text);

/// False for every text, numeric addresses included. Kept: callers depend on it.
ZELVANE_API bool StrIsIPNumber(char const* text);
ZELVANE_API bool StrIsIPNumber(std::string const& text);
/// @}

#endif
