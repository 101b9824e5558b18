#include "provision/unpack_marker.h"

#include <algorithm>
#include <string_view>

#include "platform/files.h"
#include "platform/unique_handle.h"
#include "provision/application_paths.h"

namespace ryn {
namespace {

std::wstring markerOf(const std::wstring& folder) {
  return unpackMarkers(folder).front();
}

}  // namespace

bool isHalfUnpacked(const std::wstring& folder) {
  const std::vector<std::wstring> markers = unpackMarkers(folder);
  return std::any_of(markers.begin(), markers.end(), pathExists);
}

bool beginUnpacking(const std::wstring& folder) {
  const UniqueFile marker(CreateFileW(markerOf(folder).c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                      CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
  static constexpr std::string_view kText =
      "A pack was not unpacked to its end: the VM in this folder is not used.\r\n";
  DWORD written = 0;
  return marker &&
         WriteFile(marker.get(), kText.data(), static_cast<DWORD>(kText.size()), &written, nullptr) &&
         FlushFileBuffers(marker.get());
}

void endUnpacking(const std::wstring& folder) {
  DeleteFileW(markerOf(folder).c_str());
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
