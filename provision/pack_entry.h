#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ryn {

/// Attributes of a file, as Windows numbers them.
inline constexpr uint32_t kReadOnlyAttribute = 0x1;
inline constexpr uint32_t kHiddenAttribute = 0x2;
inline constexpr uint32_t kSystemAttribute = 0x4;
inline constexpr uint32_t kFolderAttribute = 0x10;
inline constexpr uint32_t kArchiveAttribute = 0x20;

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
  uint32_t attributes = 0;
  PackTimes times;
};

/// The name an entry is extracted under: read as UTF-8 and cut at 260 characters; without any drives and
/// separators at its start; what follows the last ".." that has separators on both sides. A ".." at the
/// start or the end stays, so a name can still lead out of the base folder: packs have to be trusted.
std::wstring entryName(std::string_view storedName);

/// Attributes from an entry's "version made by" and external attributes, which are those of DOS or a Unix
/// mode in their high half, depending on the system that made the entry.
uint32_t attributesOf(unsigned versionMadeBy, uint32_t externalAttributes);

/// The times of an entry: the one of its DOS date, and over it what an "extended timestamp" block ("UT") of
/// the extra field holds.
PackTimes timesOf(uint64_t dosTime, std::string_view extraField);

}  // namespace ryn
