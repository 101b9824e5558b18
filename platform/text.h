#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace ryn {

/// ASCII letters only, whatever the user's locale: the texts compared this way are keywords and
/// executable names, and a Turkish dotless i must not change what "SILENT" means.
std::wstring lowerCase(std::wstring_view text);
std::wstring upperCase(std::wstring_view text);

/// Compares as the file system does (ordinal, case folded by the system's table).
bool equalIgnoringCase(std::wstring_view a, std::wstring_view b);

/// A text that two names share exactly when the file system takes them for one (upper case by the system's
/// table).
std::wstring foldCase(std::wstring_view text);

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

/// Decimal number at the start of `text` in the manner of the C library's `atoi`: leading blanks
/// and a sign are read, reading stops at the first other character, nothing readable gives 0.
/// Values beyond 32 bits are clamped.
int parseInteger(std::wstring_view text);

/// Each byte as one character (Latin-1).
std::wstring widenBytes(std::string_view bytes);

/// Each character below 256 as one byte, any other as "\uXXXX".
std::string toLatin1WithEscapes(std::wstring_view text);

/// In the system's ANSI code page; characters outside it become its default character.
std::string toAnsi(std::wstring_view text);

/// UTF-8 in both directions; malformed input becomes replacement characters, never an error.
std::string toUtf8(std::wstring_view text);
std::wstring fromUtf8(std::string_view text);

}  // namespace ryn
