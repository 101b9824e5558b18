#include "platform/system_library.h"

#include "platform/paths.h"
#include "platform/wow64.h"

namespace ryn {
namespace {

std::wstring withoutTrailingSeparator(std::wstring folder) {
  if (!folder.empty() && (folder.back() == L'\\' || folder.back() == L'/')) folder.pop_back();
  return folder;
}

}  // namespace

std::wstring systemFolder() {
  wchar_t buffer[kPathBufferSize];
  const UINT length = GetSystemDirectoryW(buffer, kPathBufferSize);
  return length < kPathBufferSize ? withoutTrailingSeparator(std::wstring(buffer, length)) : std::wstring();
}

std::wstring systemFolderForProcess() {
  return runsUnderWow64() ? withoutTrailingSeparator(wow64SystemFolder()) : systemFolder();
}

UniqueModule loadLibraryFrom(const std::wstring& folder, const std::wstring& fileName) {
  // A bare name would be searched for along paths that others can write.
  if (folder.empty()) return UniqueModule();
  const std::wstring path = joinPath(folder, fileName);
  UniqueModule module(LoadLibraryExW(path.c_str(), nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32));
  if (!module) module.reset(LoadLibraryW(path.c_str()));
  return module;
}

UniqueModule loadSystemLibrary(const std::wstring& fileName) {
  return loadLibraryFrom(systemFolder(), fileName);
}

}  // namespace ryn
