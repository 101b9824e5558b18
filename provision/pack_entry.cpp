#include "provision/pack_entry.h"

#include "text/text.h"

namespace ryn {
namespace {

constexpr size_t kMaxNameLength = 260;
constexpr uint64_t kTicksPerSecond = 10'000'000;
/// 1 January 1970 as a file time.
constexpr uint64_t kUnixEpoch = 116'444'736'000'000'000;

bool isSeparator(wchar_t character) {
  return character == L'\\' || character == L'/';
}

uint32_t littleEndian(std::string_view bytes, size_t start, size_t count) {
  uint32_t value = 0;
  for (size_t i = count; i > 0; --i) value = value << 8 | static_cast<unsigned char>(bytes[start + i - 1]);
  return value;
}

}  // namespace

std::wstring entryName(std::string_view storedName) {
  // A name ends where a C string would.
  const std::wstring whole = fromUtf8(storedName.substr(0, storedName.find('\0'))).substr(0, kMaxNameLength);
  std::wstring_view name = whole;
  for (;;) {
    if (name.size() > 1 && name[1] == L':') {
      name.remove_prefix(2);
    } else if (!name.empty() && isSeparator(name[0])) {
      name.remove_prefix(1);
    } else {
      break;
    }
  }
  static constexpr std::wstring_view kParentPatterns[] = {L"\\..\\", L"\\../", L"/../", L"/..\\"};
  for (bool found = true; found;) {
    found = false;
    for (const std::wstring_view pattern : kParentPatterns) {
      const size_t start = name.find(pattern);
      if (start == std::wstring_view::npos) continue;
      name.remove_prefix(start + pattern.size());
      found = true;
      break;
    }
  }
  return std::wstring(name);
}

uint32_t attributesOf(unsigned versionMadeBy, uint32_t externalAttributes) {
  const auto bit = [externalAttributes](unsigned number) { return (externalAttributes >> number & 1U) != 0; };
  // FAT, HPFS, NTFS and VFAT in the archive format's numbering; macOS, OS/2 and others count as Unix.
  const unsigned host = versionMadeBy >> 8 & 0xFF;
  const bool isDos = host == 0 || host == 7 || host == 11 || host == 14;

  uint32_t attributes = 0;
  if (isDos ? bit(0) : !bit(23)) attributes |= kReadOnlyAttribute;
  if (isDos && bit(1)) attributes |= kHiddenAttribute;
  if (isDos && bit(2)) attributes |= kSystemAttribute;
  if (bit(isDos ? 4 : 30)) attributes |= kFolderAttribute;
  if (!isDos || bit(5)) attributes |= kArchiveAttribute;
  return attributes;
}

PackTimes timesOf(uint64_t dosTime, std::string_view extraField) {
  PackTimes times{dosTime, dosTime, dosTime};

  // Both bytes of a block's length count, so that a long block before "UT" does not hide it.
  for (size_t start = 0; start + 4 < extraField.size(); start += 4 + littleEndian(extraField, start + 2, 2)) {
    if (extraField.substr(start, 2) != "UT") continue;
    const std::string_view data = extraField.substr(start + 4, littleEndian(extraField, start + 2, 2));
    // The block may announce more times than it holds.
    size_t at = 1;
    unsigned flag = 1;
    for (uint64_t* time : {&times.modify, &times.access, &times.creation}) {
      if (!data.empty() && (static_cast<unsigned char>(data[0]) & flag) != 0 && at + 4 <= data.size()) {
        const auto seconds = static_cast<int32_t>(littleEndian(data, at, 4));
        *time = kUnixEpoch + static_cast<uint64_t>(int64_t{seconds}) * kTicksPerSecond;
        at += 4;
      }
      flag <<= 1;
    }
    break;
  }
  return times;
}

}  // namespace ryn
