#include "provision/unpack_marker.h"

#include <algorithm>
#include <string_view>

#include "platform/files.h"
#include "platform/paths.h"
#include "platform/unique_handle.h"

namespace ryn {
namespace {

// In the folder, not beside it: who replaces a half VM by a whole one takes the marker away, too.
constexpr std::wstring_view kMarker = L"ryn.unpacking";

/// From "jre\jre\bin" to the folder that packs are unpacked into.
constexpr int kFoldersAbove = 2;

}  // namespace

std::vector<std::wstring> unpackMarkers(const std::wstring& folder) {
  std::vector<std::wstring> markers;
  std::wstring_view at = folder;
  for (int above = 0; above <= kFoldersAbove; ++above) {
    at = at.substr(0, at.find_last_not_of(L'\\') + 1);
    if (at.empty()) break;
    markers.push_back(joinPath(at, kMarker));
    at = at.substr(0, at.rfind(L'\\') + 1);
  }
  return markers;
}

bool isHalfUnpacked(const std::wstring& folder) {
  const std::vector<std::wstring> markers = unpackMarkers(folder);
  return std::any_of(markers.begin(), markers.end(), pathExists);
}

bool beginUnpacking(const std::wstring& folder) {
  const UniqueFile marker(CreateFileW(joinPath(folder, kMarker).c_str(), GENERIC_WRITE, FILE_SHARE_READ,
                                      nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
  static constexpr std::string_view kText =
      "A pack was not unpacked to its end: the VM in this folder is not used.\r\n";
  DWORD written = 0;
  return marker &&
         WriteFile(marker.get(), kText.data(), static_cast<DWORD>(kText.size()), &written, nullptr) &&
         FlushFileBuffers(marker.get());
}

void endUnpacking(const std::wstring& folder) {
  DeleteFileW(joinPath(folder, kMarker).c_str());
}

void noteUnpacked(const std::wstring& folder) {
  const UniqueFile handle(CreateFileW(folder.c_str(), FILE_WRITE_ATTRIBUTES,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                      OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  // Of this machine's clock, not of a file server's, because a process compares it with its own start.
  FILETIME now;
  GetSystemTimeAsFileTime(&now);
  SetFileTime(handle.get(), &now, nullptr, &now);
}

bool wasUnpackedSince(const std::wstring& folder, const FILETIME& moment) {
  WIN32_FILE_ATTRIBUTE_DATA data;
  return !isHalfUnpacked(folder) && GetFileAttributesExW(folder.c_str(), GetFileExInfoStandard, &data) &&
         CompareFileTime(&data.ftCreationTime, &moment) > 0;
}

}  // namespace ryn
