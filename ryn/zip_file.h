#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "packs/memory_file.h"

namespace ryn {

/// A zip archive in memory: jars, and VM packs beside what the launcher makes of them.
class ZipFile {
 public:
  struct Entry {
    /// As it is stored.
    std::string name;
    uint32_t crc = 0;
  };

  /// Nothing for what is no zip archive.
  static std::unique_ptr<ZipFile> open(Bytes bytes);

  const Bytes& bytes() const { return bytes_; }
  /// Those that can be reached, in the order of the directory.
  const std::vector<Entry>& entries() const { return entries_; }
  /// At most `limit` bytes of an entry; nothing when it cannot be read that far. The checksum is not looked
  /// at.
  std::optional<Bytes> read(size_t index, size_t limit = SIZE_MAX) const;
  std::optional<Bytes> read(const std::string& name, size_t limit = SIZE_MAX) const;

  ZipFile(const ZipFile&) = delete;
  ZipFile& operator=(const ZipFile&) = delete;
  ~ZipFile();

 private:
  explicit ZipFile(Bytes bytes);

  Bytes bytes_;
  MemoryFile file_;
  void* reader_ = nullptr;
  std::vector<Entry> entries_;
  /// Where the directory has them.
  std::vector<std::pair<uint64_t, uint64_t>> positions_;
};

}  // namespace ryn
