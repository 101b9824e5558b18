#pragma once

#include <windows.h>
#include <winver.h>

#include <string>

#include "image/version_resource.h"
#include "platform/bound_function.h"
#include "platform/unique_handle.h"

namespace ryn {

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
