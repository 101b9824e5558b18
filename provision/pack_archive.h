#pragma once

#include <windows.h>

#include <string>

#include "platform/unique_handle.h"
#include "provision/pack_reader.h"

namespace ryn {

/// A zip archive in a file, and the files that its entries become.
class PackArchive {
 public:
  PackArchive();

  /// Once per object, before anything else. False when the file is missing or is no zip archive.
  [[nodiscard]] bool open(const std::wstring& path);

  PackResult getEntry(int32_t index, PackEntry& entry) { return reader_.getEntry(index, entry); }

  /// The folder that relative names are created under.
  void setBaseFolder(std::wstring folder);

  /// Creates the entry `index` as `name` with the folders it needs, replacing an existing file.
  PackResult extract(int32_t index, const std::wstring& name);

 private:
  PackResult copyData(HANDLE file);

  PackReader reader_;
  std::wstring baseFolder_;
};

}  // namespace ryn
