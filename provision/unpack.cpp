#include "provision/unpack.h"

#include <windows.h>

#include "platform/files.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "provision/pack_archive.h"
#include "provision/unpack_marker.h"

namespace ryn {
namespace {

void deleteFile(const std::wstring& path) {
  // The pack decides whether its files are read-only, and those cannot be deleted.
  SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
  DeleteFileW(path.c_str());
}

/// Calls `visit` with every entry that can be reached, until it answers true; false when it never does.
template <typename Visit>
bool anyEntry(PackArchive& archive, const Visit& visit) {
  PackEntry entry;
  archive.getEntry(-1, entry);
  const int32_t count = entry.index;
  for (int32_t index = 0; index < count; ++index) {
    const PackResult result = archive.getEntry(index, entry);
    // Nothing behind a gap in the directory can be reached, however many entries the archive claims.
    if (result == PackResult::kBadIndex) break;
    if (result == PackResult::kOk && visit(entry)) return true;
  }
  return false;
}

/// Whether unpacking into `folder` would make the file `path`.
bool holdsFile(PackArchive& archive, const std::wstring& folder, const std::wstring& path) {
  const std::wstring wanted = normalisePath(path);
  return anyEntry(archive, [&](const PackEntry& entry) {
    return (entry.attributes & FILE_ATTRIBUTE_DIRECTORY) == 0 &&
           equalIgnoringCase(normalisePath(joinPath(folder, entry.name)), wanted);
  });
}

/// False when the disk took no more. Other entries that fail are passed over.
bool extractAll(PackArchive& archive, const std::wstring& folder) {
  archive.setBaseFolder(folder);
  return !anyEntry(archive, [&archive](const PackEntry& entry) {
    return archive.extract(entry.index, entry.name) == PackResult::kWriteFailed;
  });
}

/// False when `path` is no archive that holds the file `innerArchive`, where nothing has been unpacked, or
/// when the disk took no more.
bool extractOuter(const std::wstring& path, const std::wstring& folder, const std::wstring& innerArchive) {
  PackArchive archive;
  // A pack that lost its end is opened by the end of the archive stored in it, as if it were that one.
  if (!archive.open(path) || !holdsFile(archive, folder, innerArchive)) return false;
  return extractAll(archive, folder) && fileExists(innerArchive);
}

enum class Outcome { kNotOpened, kBrokenOff, kUnpacked };

Outcome extractInner(const std::wstring& path, const std::wstring& folder) {
  PackArchive archive;
  if (!archive.open(path)) return Outcome::kNotOpened;
  return extractAll(archive, folder) ? Outcome::kUnpacked : Outcome::kBrokenOff;
}

}  // namespace

bool extractPack(const std::wstring& packPath, const std::wstring& extractionFolder) {
  const std::wstring withoutEnd = extractionFolder.substr(0, extractionFolder.find_last_not_of(L'\\') + 1);
  CreateDirectoryW(folderPart(withoutEnd).c_str(), nullptr);
  CreateDirectoryW(withoutEnd.c_str(), nullptr);
  const bool wasHalfUnpacked = isHalfUnpacked(extractionFolder);
  // Where not even the marker can be written, nothing else can.
  if (!beginUnpacking(extractionFolder)) {
    if (!wasHalfUnpacked) endUnpacking(extractionFolder);
    return false;
  }

  const std::wstring intermediateFolder = folderPart(packPath) + L"\\downloadIntermediary";
  const std::wstring innerArchive = intermediateFolder + L"\\vm.zip";
  CreateDirectoryW(intermediateFolder.c_str(), nullptr);
  // One that an interrupted attempt left behind must not stand in for one that this pack lacks.
  deleteFile(innerArchive);

  const Outcome outcome = extractOuter(packPath, intermediateFolder, innerArchive)
                              ? extractInner(innerArchive, extractionFolder)
                              : Outcome::kNotOpened;

  deleteFile(innerArchive);
  deleteFile(intermediateFolder + L"\\vm.properties");
  RemoveDirectoryW(intermediateFolder.c_str());

  if (outcome == Outcome::kUnpacked) noteUnpacked(extractionFolder);
  // A pack that could not be opened has left the folder as it was.
  if (outcome == Outcome::kUnpacked || (outcome == Outcome::kNotOpened && !wasHalfUnpacked)) {
    endUnpacking(extractionFolder);
  }
  return outcome == Outcome::kUnpacked;
}

}  // namespace ryn
