#pragma once

#include <string_view>

namespace ryn::switches {

/// Followed by the service's name: run as that Windows service.
inline constexpr std::wstring_view kService = L"-tqrynservice";
/// Followed by "console": open a console. Other words are the application's.
inline constexpr std::wstring_view kInterface = L"-i";
inline constexpr std::wstring_view kConsole = L"console";
/// Followed by a folder between double quotes: TMP and TEMP of the launch.
inline constexpr std::wstring_view kTempFolder = L"-tempdir";
/// As the last argument, in any letter case: a silent launch.
inline constexpr std::wstring_view kSilent = L"silent";

}  // namespace ryn::switches
