#pragma once

#include <map>
#include <string>
#include <string_view>

namespace ryn {

/// Entries of a property file: key to value, keys compared exactly. The syntax is narrower than that
/// of Java's own property files:
///  - each byte is one character; there is no UTF-8 and no byte-order mark;
///  - a line is a comment only when "#" is its very first character; "!" starts none;
///  - only "=" separates; a line without it is skipped;
///  - a value's last backslash is replaced by a blank, and the next line stands on its own;
///  - "\u" and up to four hexadecimal digits is one character, every other backslash stays;
///  - the last line of a file that does not end in a line feed carries U+FFFF at its end.
class PropertyFile {
 public:
  /// Adds the entries of the file at `path`; an entry already there is overwritten. Throws FileException
  /// "could not open file for read" and leaves the entries alone when the file cannot be opened. Part of
  /// the library `properties`, which needs Windows.
  void load(const std::wstring& path);

  /// Adds the entries of `text`, the content of a file with line ends already turned into "\n".
  void parse(std::wstring_view text);

  /// The value of `key`, or `defaultValue` when there is none.
  std::wstring get(std::wstring_view key, std::wstring_view defaultValue = {}) const;

  bool hasKeyWithPrefix(std::wstring_view prefix) const;

  using Entries = std::map<std::wstring, std::wstring, std::less<>>;
  const Entries& entries() const { return entries_; }

 private:
  void parseLine(std::wstring_view line);

  Entries entries_;
};

/// `text` as it must stand in a property file that Java reads: each backslash twice, each character
/// above 127 as "\u" and four hexadecimal digits. PropertyFile does not undo doubled backslashes.
std::wstring escapeProperty(std::wstring_view text);

/// The same for any text: characters below U+0020, and a blank at its beginning, are "\u" and four digits,
/// too, since Java would end the line at them or drop them.
std::wstring escapeAnyProperty(std::wstring_view text);

}  // namespace ryn
