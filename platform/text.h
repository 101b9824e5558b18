#pragma once

#include <string>
#include <string_view>

#include "text/text.h"

namespace ryn {

/// Compares as the file system does (ordinal, case folded by the system's table).
bool equalIgnoringCase(std::wstring_view a, std::wstring_view b);

/// A text that two names share exactly when the file system takes them for one (upper case by the system's
/// table).
std::wstring foldCase(std::wstring_view text);

/// In the system's ANSI code page; characters outside it become its default character.
std::string toAnsi(std::wstring_view text);

}  // namespace ryn
