#include "provision/unpack.h"

#include <windows.h>

#include "platform/files.h"
#include "platform/paths.h"
#include "provision/pack_archive.h"

namespace ryn {
namespace {

void deleteFile(const std::wstring& path) {
  // The pack decides whether its files are read-only, and those cannot be deleted.
  SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
  DeleteFileW(path.c_str());
}

bool extractArchive(const std::wstring& path, const std::wstring& folder) {
  PackArchive archive;
  if (!archive.open(path)) return false;
  archive.setBaseFolder(folder);

  PackEntry entry;
  archive.getEntry(-1, entry);
  const int32_t count = entry.index;
  for (int32_t index = 0; index < count; ++index) {
    PackResult result = archive.getEntry(index, entry);
    if (result == PackResult::kOk) result = archive.extract(index, entry.name);
    // Nothing behind a gap in the directory can be reached, however many entries the archive claims.
    if (result == PackResult::kBadIndex) break;
  }
  return true;
}

}  // namespace

bool extractPack(const std::wstring& packPath, const std::wstring& extractionFolder) {
  const std::wstring intermediateFolder = folderPart(packPath) + L"\\downloadIntermediary";
  const std::wstring innerArchive = intermediateFolder + L"\\vm.zip";
  if (!pathExists(intermediateFolder)) CreateDirectoryW(intermediateFolder.c_str(), nullptr);
  // One that an interrupted attempt left behind must not stand in for one that this pack lacks.
  deleteFile(innerArchive);

  const bool unpacked = extractArchive(packPath, intermediateFolder) && fileExists(innerArchive) &&
                        extractArchive(innerArchive, extractionFolder);

  deleteFile(innerArchive);
  deleteFile(intermediateFolder + L"\\vm.properties");
  RemoveDirectoryW(intermediateFolder.c_str());
  return unpacked;
}

}  // namespace ryn
