#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "image/manifest.h"
#include "image/version_info.h"
#include "text/little_endian.h"

namespace ryn {

/// What makes the launcher a maker's own program. What is empty is left out or as said.
struct Branding {
  /// Of the application; needed.
  std::wstring name = {};
  VersionInfo::Numbers version{1, 0, 0, 0};
  /// CompanyName of the version information.
  std::wstring publisher = {};
  /// FileDescription, which Windows shows where it asks for rights and in lists of programs; empty: the name.
  std::wstring description = {};
  std::wstring copyright = {};
  /// Of boxes with errors; empty: the name.
  std::wstring title = {};
  /// The bytes of an .ico or .png file; empty: the launcher's icon stays.
  Bytes icon = {};
  std::optional<ExecutionLevel> level = {};
  /// By language identifier, the text that says that no Java was found.
  std::map<uint16_t, std::wstring> noVmText = {};
};

/// The text of the version information that keeps the launcher's own version.
inline constexpr wchar_t kLauncherVersion[] = L"LauncherVersion";

/// Most UTF-16 units of a text that the launcher shows.
inline constexpr size_t kLongestText = 255;

/// The launcher `image` as the maker's program. The title is that of every language; where the other texts
/// name the launcher's product or vendor they name the application, in the form that the language wants. The
/// icon is that of the window of a download and, where this is another group, the one that Explorer shows,
/// the first. The version information also keeps the launcher's own version, as "LauncherVersion".
///
/// Throws ImageError for an image that is no launcher or cannot be changed, and for what does not fit.
Bytes brand(Bytes image, const Branding& branding);

/// The language of the launcher's texts with a name such as "de", "pt-BR" or "1031"; nothing for others.
std::optional<uint16_t> languageOfTexts(std::string_view name);

}  // namespace ryn
