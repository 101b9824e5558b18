#pragma once

#include <array>
#include <string>
#include <utility>
#include <vector>

#include "text/little_endian.h"

namespace ryn {

/// The content of a version resource (RT_VERSION, name 1). Source of the layout: VS_VERSIONINFO in
/// Microsoft's documentation of menus and other resources.
struct VersionInfo {
  using Numbers = std::array<uint16_t, 4>;
  struct StringTable {
    /// Language and code page in eight hexadecimal digits.
    std::wstring key = L"040904b0";
    /// Names ("ProductName") and their texts, in order.
    std::vector<std::pair<std::wstring, std::wstring>> strings;

    bool operator==(const StringTable&) const = default;
  };

  Numbers fileVersion{};
  Numbers productVersion{};
  uint32_t flagsMask = 0x3F;
  uint32_t flags = 0;
  /// VOS_NT_WINDOWS32 and VFT_APP.
  uint32_t os = 0x40004;
  uint32_t type = 1;
  uint32_t subtype = 0;
  std::vector<StringTable> tables;
  /// Language and code page of each table, for VarFileInfo.
  std::vector<std::pair<uint16_t, uint16_t>> translations = {{0x409, 1200}};

  bool operator==(const VersionInfo&) const = default;

  /// A text of the first table; empty when there is none.
  std::wstring text(const std::wstring& name) const;
};

/// Reads what any resource compiler has written: children in any order, texts with or without a terminator,
/// lengths in bytes or characters. Throws ImageError for what is damaged.
VersionInfo readVersionInfo(ByteView bytes);

/// Throws ImageError when the whole exceeds 64 KB, which is what the format's lengths can say.
Bytes writeVersionInfo(const VersionInfo& info);

/// "2.4.0.17".
std::wstring versionText(const VersionInfo::Numbers& numbers);

}  // namespace ryn
