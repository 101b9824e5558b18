#pragma once

#include <string>
#include <string_view>

// As file systems of Windows compare names: each UTF-16 unit by itself, in upper case. On Windows by the
// system's own table, elsewhere by the C library's, which may be of another version of Unicode.

namespace ryn {

bool equalIgnoringCase(std::wstring_view a, std::wstring_view b);

/// A text that two names share exactly when the file system takes them for one.
std::wstring foldCase(std::wstring_view text);

}  // namespace ryn
