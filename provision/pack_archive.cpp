#include "provision/pack_archive.h"

#include <share.h>
#include <unzip.h>
#include <zlib.h>

#include <algorithm>
#include <cstring>

#include "platform/files.h"
#include "platform/text.h"

namespace ryn {
namespace {

constexpr unsigned kCopyBufferSize = 16384;
constexpr size_t kMaxNameLength = 260;
constexpr unsigned kEncryptedFlag = 1;
constexpr uint64_t kTicksPerSecond = 10'000'000;
/// 1 January 1970 as a file time.
constexpr uint64_t kUnixEpoch = 116'444'736'000'000'000;

bool isSeparator(wchar_t character) {
  return character == L'\\' || character == L'/';
}

bool isAbsolute(std::wstring_view name) {
  return (!name.empty() && isSeparator(name[0])) || (name.size() > 1 && name[1] == L':');
}

uint32_t littleEndian(std::string_view bytes, size_t start, size_t count) {
  uint32_t value = 0;
  for (size_t i = count; i > 0; --i) value = value << 8 | static_cast<unsigned char>(bytes[start + i - 1]);
  return value;
}

uint64_t ticks(const FILETIME& time) {
  return static_cast<uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

FILETIME fileTime(uint64_t value) {
  return {static_cast<DWORD>(value), static_cast<DWORD>(value >> 32)};
}

/// 0 for a date that does not exist.
uint64_t ticksOfDosTime(uint32_t dosDateTime) {
  FILETIME time;
  SYSTEMTIME local;
  SYSTEMTIME utc;
  // With the daylight saving that was in force on that day, not with today's.
  const bool converted = DosDateTimeToFileTime(HIWORD(dosDateTime), LOWORD(dosDateTime), &time) &&
                         FileTimeToSystemTime(&time, &local) &&
                         TzSpecificLocalTimeToSystemTime(nullptr, &local, &utc) &&
                         SystemTimeToFileTime(&utc, &time);
  return converted ? ticks(time) : 0;
}

void createFolder(const std::wstring& path) {
  if (!pathExists(path)) CreateDirectoryW(path.c_str(), nullptr);
}

/// Creates `base`, every folder that ends before a separator of `folders`, and the whole.
void createFolders(const std::wstring& base, const std::wstring& folders) {
  if (!base.empty()) createFolder(base);
  for (size_t i = 0; i < folders.size(); ++i) {
    if (isSeparator(folders[i])) createFolder(base + folders.substr(0, i));
  }
  if (!folders.empty()) createFolder(base + folders);
}

UniqueFile createFile(const std::wstring& path, DWORD attributes) {
  UniqueFile file(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, attributes, nullptr));
  // A read-only, hidden or system file of an earlier pack is in the way of the new one.
  if (!file && GetLastError() == ERROR_ACCESS_DENIED && fileExists(path) &&
      SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL)) {
    file.reset(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, attributes, nullptr));
  }
  return file;
}

voidpf openWide(voidpf, const void* path, int) {
  return _wfsopen(static_cast<const wchar_t*>(path), L"rb", _SH_DENYWR);
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

DWORD attributesOf(unsigned versionMadeBy, uint32_t externalAttributes) {
  const auto bit = [externalAttributes](unsigned number) { return (externalAttributes >> number & 1U) != 0; };
  // FAT, HPFS, NTFS and VFAT in the archive format's numbering; macOS, OS/2 and others count as Unix.
  const unsigned host = versionMadeBy >> 8 & 0xFF;
  const bool isDos = host == 0 || host == 7 || host == 11 || host == 14;

  DWORD attributes = 0;
  if (isDos ? bit(0) : !bit(23)) attributes |= FILE_ATTRIBUTE_READONLY;
  if (isDos && bit(1)) attributes |= FILE_ATTRIBUTE_HIDDEN;
  if (isDos && bit(2)) attributes |= FILE_ATTRIBUTE_SYSTEM;
  if (bit(isDos ? 4 : 30)) attributes |= FILE_ATTRIBUTE_DIRECTORY;
  if (!isDos || bit(5)) attributes |= FILE_ATTRIBUTE_ARCHIVE;
  return attributes;
}

PackTimes timesOf(uint32_t dosDateTime, std::string_view extraField) {
  const uint64_t dosTime = ticksOfDosTime(dosDateTime);
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

void PackArchive::ReaderPolicy::close(Value value) {
  unzClose(value);
}

bool PackArchive::open(const std::wstring& path) {
  zlib_filefunc64_def functions;
  fill_fopen64_filefunc(&functions);
  functions.zopen64_file = openWide;
  reader_.reset(unzOpen2_64(path.c_str(), &functions));
  return static_cast<bool>(reader_);
}

int32_t PackArchive::entryCount() const {
  unz_global_info64 info{};
  unzGetGlobalInfo64(reader_.get(), &info);
  return static_cast<int32_t>(std::min<uint64_t>(info.number_entry, INT32_MAX));
}

bool PackArchive::moveTo(int32_t index) {
  int status = UNZ_OK;
  if (position_ > index) {
    status = unzGoToFirstFile(reader_.get());
    position_ = 0;
  }
  for (; status == UNZ_OK && position_ < index; ++position_) status = unzGoToNextFile(reader_.get());
  if (status != UNZ_OK) position_ = kNowhere;
  return status == UNZ_OK;
}

PackResult PackArchive::getEntry(int32_t index, PackEntry& entry) {
  if (index == -1) {
    entry.index = entryCount();
    return PackResult::kOk;
  }
  if (index < 0 || index >= entryCount()) return PackResult::kBadIndex;
  if (cached_.index == index) {
    entry = cached_;
    return PackResult::kOk;
  }

  cached_.index = -1;
  openIndex_ = -1;
  if (!moveTo(index)) return PackResult::kBadIndex;
  // Longer names are cut anyway, and a character takes at most three bytes.
  char name[3 * kMaxNameLength + 1] = {};
  unz_file_info64 info{};
  if (unzGetCurrentFileInfo64(reader_.get(), &info, name, sizeof(name) - 1, nullptr, 0, nullptr, 0) !=
      UNZ_OK) {
    return PackResult::kCorruptHeader;
  }
  // The reader would hand bzip2 data through as it is.
  if (info.compression_method != 0 && info.compression_method != Z_DEFLATED)
    return PackResult::kCorruptHeader;
  // Opening compares the entry's own header with the directory. All three times are only in the former.
  if (unzOpenCurrentFile(reader_.get()) != UNZ_OK) return PackResult::kCorruptHeader;
  openIndex_ = index;
  std::string extraField(static_cast<size_t>(unzGetLocalExtrafield(reader_.get(), nullptr, 0)), '\0');
  if (unzGetLocalExtrafield(reader_.get(), extraField.data(), static_cast<unsigned>(extraField.size())) < 0) {
    return PackResult::kExtraFieldUnreadable;
  }

  cached_.index = index;
  cached_.name = entryName(name);
  cached_.attributes = attributesOf(info.version, info.external_fa);
  cached_.times = timesOf(info.dosDate, extraField);
  cachedIsEncrypted_ = (info.flag & kEncryptedFlag) != 0;
  entry = cached_;
  return PackResult::kOk;
}

void PackArchive::setBaseFolder(std::wstring folder) {
  baseFolder_ = std::move(folder);
  if (!baseFolder_.empty() && !isSeparator(baseFolder_.back())) baseFolder_ += L'\\';
}

PackResult PackArchive::extract(int32_t index, const std::wstring& name) {
  // -1 asks getEntry for the count, not for an entry.
  if (index < 0) return PackResult::kBadIndex;
  PackEntry entry;
  if (const PackResult result = getEntry(index, entry); result != PackResult::kOk) return result;

  if ((entry.attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
    createFolders(isAbsolute(name) ? std::wstring() : baseFolder_, name);
    return PackResult::kOk;
  }

  const std::wstring folders = name.substr(0, name.find_last_of(L"/\\") + 1);
  const std::wstring base = isAbsolute(folders) ? std::wstring() : baseFolder_;
  createFolders(base, folders);
  const UniqueFile file = createFile(base + name, entry.attributes);
  if (!file) return PackResult::kFileNotCreated;

  if (cachedIsEncrypted_) return PackResult::kEncrypted;
  if (openIndex_ != index && unzOpenCurrentFile(reader_.get()) != UNZ_OK) return PackResult::kCorruptHeader;
  const PackResult result = copyOpenEntry(file.get());
  unzCloseCurrentFile(reader_.get());
  openIndex_ = -1;
  if (result == PackResult::kOk) {
    const FILETIME creation = fileTime(entry.times.creation);
    const FILETIME access = fileTime(entry.times.access);
    const FILETIME modify = fileTime(entry.times.modify);
    SetFileTime(file.get(), &creation, &access, &modify);
  }
  return result;
}

PackResult PackArchive::copyOpenEntry(HANDLE file) {
  if (!copyBuffer_) copyBuffer_ = std::make_unique<char[]>(kCopyBufferSize);
  for (;;) {
    const int size = unzReadCurrentFile(reader_.get(), copyBuffer_.get(), kCopyBufferSize);
    if (size < 0) return PackResult::kDataEnded;
    DWORD written = 0;
    if (size > 0 && !WriteFile(file, copyBuffer_.get(), static_cast<DWORD>(size), &written, nullptr)) {
      return PackResult::kWriteFailed;
    }
    if (unzeof(reader_.get()) == 1) return PackResult::kOk;
    if (size == 0) return PackResult::kDataEnded;
  }
}

}  // namespace ryn
