#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace ryn {

/// Variable name to value, names compared exactly. Names that differ only in case can occur in a
/// block that another program handed down.
using EnvironmentMap = std::map<std::wstring, std::wstring>;

/// Reads an environment block: "name=value" strings, each with its terminator, and an empty one at
/// the end (GetEnvironmentStringsW). Entries that begin with "=" are cmd's notes of the current
/// folder on each drive, not variables, and are left out; so are entries without "=".
EnvironmentMap parseEnvironmentBlock(const wchar_t* block);

/// The value of the variable that is called "path" in any letter case; empty when there is none.
std::wstring pathVariable(const EnvironmentMap& environment);

/// The value of the variable `name`, names compared as Windows does; empty when there is none.
std::wstring variableIn(const EnvironmentMap& environment, std::wstring_view name);

/// `text` with each "%NAME%" replaced by that variable, names compared ignoring case; nothing when one of
/// them is unset or empty, because what is left would name some other place.
std::optional<std::wstring> expandVariables(std::wstring_view text, const EnvironmentMap& environment);

}  // namespace ryn
