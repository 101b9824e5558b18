#pragma once

#include <windows.h>
#include <winver.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "platform/bound_function.h"
#include "platform/unique_handle.h"

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

/// Reads version resources through version.dll, which is loaded from the system folder on
/// construction and released with the object. Without the library every file has no resource.
class VersionReader {
 public:
  VersionReader();

  /// All parts empty when the file is missing or has no version resource.
  VersionResource read(const std::wstring& path) const;

 private:
  UniqueModule library_;
  RYN_FUNCTION(GetFileVersionInfoSizeW) getSize_;
  RYN_FUNCTION(GetFileVersionInfoW) getInfo_;
  RYN_FUNCTION(VerQueryValueW) queryValue_;
  bool complete_;
};

}  // namespace ryn
