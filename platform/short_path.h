#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ryn {

/// True when the system's ANSI code page has every character: nothing is replaced, not even by one that looks
/// alike.
[[nodiscard]] bool fitsAnsi(std::wstring_view text);

/// The path with the short names of its volume (8.3). Nothing when it does not exist; where the volume keeps
/// no short names, Windows gives the path itself.
[[nodiscard]] std::optional<std::wstring> shortPath(const std::wstring& path);

}  // namespace ryn
