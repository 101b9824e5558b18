#pragma once

#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// Text is std::wstring whose elements are UTF-16 code units, on every system: where wchar_t has 32 bits, a
// character beyond U+FFFF still takes two elements. A literal must spell these as "\xd83d\xde00", and
// whatever comes from the system as UTF-32 has to go through UTF-8.

namespace ryn {

/// ASCII letters only, whatever the user's locale: the texts compared this way are keywords and
/// executable names, and a Turkish dotless i must not change what "SILENT" means.
std::wstring lowerCase(std::wstring_view text);
std::wstring upperCase(std::wstring_view text);

/// Removes every character with a code of 0x20 or less from both ends.
std::wstring_view trim(std::wstring_view text);

/// The pieces between separators; n separators always give n + 1 pieces, empty ones included.
std::vector<std::wstring> split(std::wstring_view text, wchar_t separator);

/// `text` with the first occurrence of `placeholder` replaced; unchanged when there is none.
std::wstring replaceFirst(std::wstring_view text, std::wstring_view placeholder, std::wstring_view value);

/// `text` with every `from` replaced by `to`.
std::wstring replaceAll(std::wstring_view text, std::wstring_view from, std::wstring_view to);

/// The texts in a row. Shorter code than a chain of "+", whose every step can throw and must be undone.
std::wstring concat(std::initializer_list<std::wstring_view> texts);

/// `number` in decimal.
std::wstring decimal(long long number);

/// Two lower-case digits for each byte.
std::wstring hexadecimal(std::span<const uint8_t> bytes);

/// Decimal number at the start of `text` in the manner of the C library's `atoi`: leading blanks
/// and a sign are read, reading stops at the first other character, nothing readable gives 0.
/// Values beyond 32 bits are clamped.
int parseInteger(std::wstring_view text);

/// The same in the manner of `strtoull`: a sign makes the number wrap, and too many digits give the largest.
uint64_t parseUnsigned(std::wstring_view text);

/// Each byte as one character (Latin-1).
std::wstring widenBytes(std::string_view bytes);

/// Each character below 256 as one byte, any other as "\uXXXX".
std::string toLatin1WithEscapes(std::wstring_view text);

/// UTF-8 in both directions; malformed input becomes replacement characters, never an error: one for each
/// unpaired surrogate, and one for each longest run of bytes that begins a character and does not end it.
std::string toUtf8(std::wstring_view text);
std::wstring fromUtf8(std::string_view text);

}  // namespace ryn
