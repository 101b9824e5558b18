#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "provision/pack_entry.h"

// How minizip reaches the bytes of an archive.
struct zlib_filefunc64_def_s;

namespace ryn {

/// Outcome of an operation on one entry.
enum class PackResult : uint32_t {
  kOk = 0,
  kFileNotCreated = 0x200,
  /// The disk is full, or broken.
  kWriteFailed = 0x400,
  kCorruptHeader = 0x700,
  kExtraFieldUnreadable = 0x800,
  kEncrypted = 0x1000,
  /// No such entry, or none that can be reached: the directory of the archive breaks off before it.
  kBadIndex = 0x10000,
  /// The data ended, or could not be inflated, before the entry was complete.
  kDataEnded = 0x5000000,
};

/// The entries of a zip archive, wherever its bytes come from. Entries are reached by walking the archive's
/// directory, so ascending order is the fast one.
class PackReader {
 public:
  /// A DOS date (high half) and time in local time as a file time; 0 for a date that does not exist.
  using DosTime = uint64_t (*)(uint32_t dosDateTime);

  explicit PackReader(DosTime dosTime) : dosTime_(dosTime) {}

  /// Once per object, before anything else; `path` is what `functions` opens. False when that fails or is no
  /// zip archive.
  [[nodiscard]] bool open(zlib_filefunc64_def_s& functions, const void* path);

  /// Reads the entry `index`. Index -1 puts the number of entries that the archive claims into
  /// `entry.index`.
  PackResult getEntry(int32_t index, PackEntry& entry);

  /// Begins to read the data of the entry that getEntry has read last, to be ended with closeData.
  PackResult openData();
  /// The next piece of the data, valid until the next call; empty at the end.
  PackResult readData(std::string_view& piece);
  void closeData();

 private:
  struct Close {
    void operator()(void* reader) const;
  };
  bool moveTo(int32_t index);
  int32_t entryCount() const;

  /// No position in the archive: the next move starts at the first entry.
  static constexpr int32_t kNowhere = INT32_MAX;

  DosTime dosTime_;
  std::unique_ptr<void, Close> reader_;
  int32_t position_ = kNowhere;
  int32_t openIndex_ = -1;
  /// The latest record read; its index is -1 when there is none. The reader stands at this entry.
  PackEntry cached_;
  bool cachedIsEncrypted_ = false;
  std::unique_ptr<char[]> copyBuffer_;
};

}  // namespace ryn
