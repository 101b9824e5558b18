#pragma once

#include <filesystem>
#include <string>

#include "image/image_bitness.h"
#include "image/version_resource.h"
#include "text/little_endian.h"

namespace ryn {

/// A folder of this system that Windows will have: names in it count in any letter case.
class LocalFolder {
 public:
  explicit LocalFolder(std::filesystem::path folder) : folder_(std::move(folder)) {}

  const std::filesystem::path& path() const { return folder_; }

  /// What `relative` ("lib\app.jar") names; empty when there is none.
  std::filesystem::path find(std::wstring_view relative) const;

 private:
  std::filesystem::path folder_;
};

/// A text file as the launcher reads it: one character for each byte, line ends as "\n", Ctrl+Z at the end.
///@{
std::wstring textFile(const std::filesystem::path& path);
std::wstring textOfBytes(ByteView bytes);
///@}

/// What Windows would tell of a program; nothing for what is none.
VersionResource versionResourceOf(ByteView program);

}  // namespace ryn
