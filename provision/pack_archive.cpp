#include "provision/pack_archive.h"

#include <share.h>
#include <unzip.h>

#include "platform/files.h"

namespace ryn {
namespace {

bool isSeparator(wchar_t character) {
  return character == L'\\' || character == L'/';
}

bool isAbsolute(std::wstring_view name) {
  return (!name.empty() && isSeparator(name[0])) || (name.size() > 1 && name[1] == L':');
}

uint64_t ticks(const FILETIME& time) {
  return static_cast<uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

FILETIME fileTime(uint64_t value) {
  return {static_cast<DWORD>(value), static_cast<DWORD>(value >> 32)};
}

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

/// False when the disk is full.
bool createFolder(const std::wstring& path) {
  return pathExists(path) || CreateDirectoryW(path.c_str(), nullptr) || GetLastError() != ERROR_DISK_FULL;
}

/// Creates `base`, every folder that ends before a separator of `folders`, and the whole. False when the disk
/// is full.
bool createFolders(const std::wstring& base, const std::wstring& folders) {
  bool hasRoom = base.empty() || createFolder(base);
  for (size_t i = 0; i < folders.size(); ++i) {
    if (isSeparator(folders[i])) hasRoom = createFolder(base + folders.substr(0, i)) && hasRoom;
  }
  return (folders.empty() || createFolder(base + folders)) && hasRoom;
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

PackArchive::PackArchive() : reader_(ticksOfDosTime) {}

bool PackArchive::open(const std::wstring& path) {
  zlib_filefunc64_def functions;
  fill_fopen64_filefunc(&functions);
  functions.zopen64_file = openWide;
  return reader_.open(functions, path.c_str());
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

  if ((entry.attributes & kFolderAttribute) != 0) {
    return createFolders(isAbsolute(name) ? std::wstring() : baseFolder_, name) ? PackResult::kOk
                                                                                : PackResult::kWriteFailed;
  }

  const std::wstring folders = name.substr(0, name.find_last_of(L"/\\") + 1);
  const std::wstring base = isAbsolute(folders) ? std::wstring() : baseFolder_;
  if (!createFolders(base, folders)) return PackResult::kWriteFailed;
  const UniqueFile file = createFile(base + name, entry.attributes);
  if (!file)
    return GetLastError() == ERROR_DISK_FULL ? PackResult::kWriteFailed : PackResult::kFileNotCreated;

  PackResult result = reader_.openData();
  if (result != PackResult::kOk) return result;
  result = copyData(file.get());
  reader_.closeData();
  if (result == PackResult::kOk) {
    const FILETIME creation = fileTime(entry.times.creation);
    const FILETIME access = fileTime(entry.times.access);
    const FILETIME modify = fileTime(entry.times.modify);
    SetFileTime(file.get(), &creation, &access, &modify);
  }
  return result;
}

PackResult PackArchive::copyData(HANDLE file) {
  for (;;) {
    std::string_view piece;
    const PackResult result = reader_.readData(piece);
    if (result != PackResult::kOk || piece.empty()) return result;
    DWORD written = 0;
    if (!WriteFile(file, piece.data(), static_cast<DWORD>(piece.size()), &written, nullptr) ||
        written != piece.size()) {
      // What did not fit would keep the disk full.
      SetFilePointer(file, 0, nullptr, FILE_BEGIN);
      SetEndOfFile(file);
      return PackResult::kWriteFailed;
    }
  }
}

}  // namespace ryn
