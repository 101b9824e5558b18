#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace ryn {

/// Where a walk of the machine starts.
class DriveList {
 public:
  /// Root folders of the drives to walk; nothing when the system does not tell its drives.
  virtual std::optional<std::vector<std::wstring>> roots() const = 0;

 protected:
  ~DriveList() = default;
};

/// The fixed drives of this machine. Others are slow, or not there when the application starts next time.
class FixedDrives final : public DriveList {
 public:
  std::optional<std::vector<std::wstring>> roots() const override;
};

/// The folders of `starts` and `levels` levels below them, at most `limit`. Level by level, so that the limit
/// takes the deepest folders away and not the last start. Links are not followed; a start that lies within
/// another is not walked twice.
std::vector<std::wstring> walkFolders(const std::vector<std::wstring>& starts, int levels, size_t limit);

/// The paths, at most `limit`, that `pattern` names. A part with "*" in it stands for the folders that match,
/// links included; what has none need not exist.
std::vector<std::wstring> expandWildcards(const std::wstring& pattern, size_t limit);

}  // namespace ryn
