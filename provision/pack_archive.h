#pragma once

#include <windows.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/unique_handle.h"

namespace ryn {

/// Outcome of an operation on one entry.
enum class PackResult : uint32_t {
  kOk = 0,
  kFileNotCreated = 0x200,
  kWriteFailed = 0x400,
  kCorruptHeader = 0x700,
  kExtraFieldUnreadable = 0x800,
  kEncrypted = 0x1000,
  /// No such entry, or none that can be reached: the directory of the archive breaks off before it.
  kBadIndex = 0x10000,
  /// The data ended, or could not be inflated, before the entry was complete.
  kDataEnded = 0x5000000,
};

/// File times in UTC, in units of 100 ns since 1601 (FILETIME); 0 is unknown and leaves a file's time alone.
struct PackTimes {
  uint64_t creation = 0;
  uint64_t access = 0;
  uint64_t modify = 0;

  bool operator==(const PackTimes&) const = default;
};

struct PackEntry {
  int32_t index = -1;
  /// After the rules of entryName.
  std::wstring name;
  /// Windows file attributes.
  DWORD attributes = 0;
  PackTimes times;
};

/// The name an entry is extracted under: read as UTF-8 and cut at 260 characters; without any drives and
/// separators at its start; what follows the last ".." that has separators on both sides. A ".." at the
/// start or the end stays, so a name can still lead out of the base folder: packs have to be trusted.
std::wstring entryName(std::string_view storedName);

/// Windows attributes from an entry's "version made by" and external attributes, which are those of DOS or
/// a Unix mode in their high half, depending on the system that made the entry.
DWORD attributesOf(unsigned versionMadeBy, uint32_t externalAttributes);

/// The times of an entry: its DOS date (high half) and time in local time, and over it what an "extended
/// timestamp" block ("UT") of the extra field holds.
PackTimes timesOf(uint32_t dosDateTime, std::string_view extraField);

/// A zip archive. Entries are reached by walking the archive's directory, so ascending order is the fast one.
class PackArchive {
 public:
  /// Once per object, before anything else. False when the file is missing or is no zip archive.
  [[nodiscard]] bool open(const std::wstring& path);

  /// Reads the entry `index`. Index -1 puts the number of entries that the archive claims into
  /// `entry.index`.
  PackResult getEntry(int32_t index, PackEntry& entry);

  /// The folder that relative names are created under.
  void setBaseFolder(std::wstring folder);

  /// Creates the entry `index` as `name` with the folders it needs, replacing an existing file.
  PackResult extract(int32_t index, const std::wstring& name);

 private:
  struct ReaderPolicy {
    using Value = void*;
    static Value none() { return nullptr; }
    static void close(Value value);
  };
  bool moveTo(int32_t index);
  int32_t entryCount() const;
  PackResult copyOpenEntry(HANDLE file);

  /// No position in the archive: the next move starts at the first entry.
  static constexpr int32_t kNowhere = INT32_MAX;

  UniqueResource<ReaderPolicy> reader_;
  int32_t position_ = kNowhere;
  int32_t openIndex_ = -1;
  /// The latest record read; its index is -1 when there is none. The reader stands at this entry.
  PackEntry cached_;
  bool cachedIsEncrypted_ = false;
  std::wstring baseFolder_;
  std::unique_ptr<char[]> copyBuffer_;
};

}  // namespace ryn
