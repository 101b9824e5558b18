#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

namespace ryn {

/// Four 16-bit words of a Windows version number, most significant first.
using FourPartVersion = std::array<uint16_t, 4>;

/// What the version resource of a file says; each part absent where the resource lacks it.
struct VersionResource {
  std::optional<FourPartVersion> fileVersion;
  std::optional<FourPartVersion> productVersion;
  /// CompanyName of the US-English, Unicode string block (040904b0).
  std::wstring companyName;
};

}  // namespace ryn
