#include "platform/paths.h"

#include "platform/errors.h"

namespace ryn {
namespace {

// Characters in the longest path that the system knows, terminator included.
constexpr DWORD kLongestPath = 32768;

std::wstring fullPathOrEmpty(const std::wstring& path) {
  const DWORD size = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
  std::wstring result(size, L'\0');
  const DWORD length = GetFullPathNameW(path.c_str(), size, result.data(), nullptr);
  result.resize(length < size ? length : 0);
  return result;
}

}  // namespace

std::wstring modulePath() {
  for (DWORD size = kPathBufferSize; size < 2 * kLongestPath; size *= 2) {
    std::wstring path(size, L'\0');
    const DWORD length = GetModuleFileNameW(nullptr, path.data(), size);
    if (length == 0) break;
    if (length < size) {
      path.resize(length);
      return path;
    }
  }
  throw TerminalError(L"unable to locate executable");
}

std::wstring currentFolder() {
  wchar_t buffer[kPathBufferSize];
  const DWORD length = GetCurrentDirectoryW(kPathBufferSize, buffer);
  return length < kPathBufferSize ? std::wstring(buffer, length) : std::wstring();
}

bool isAbsolutePath(std::wstring_view path) {
  return (!path.empty() && path[0] == L'\\') || (path.size() > 1 && path[1] == L':');
}

std::wstring joinPath(std::wstring_view folder, std::wstring_view name) {
  std::wstring result(folder);
  if (result.empty() || result.back() != L'\\') result.push_back(L'\\');
  result += name;
  return result;
}

std::wstring normalisePath(const std::wstring& path) {
  if (path.empty()) return path;
  std::wstring result = fullPathOrEmpty(path);
  return result.empty() ? path : result;
}

std::wstring expandPath(const std::wstring& path) {
  wchar_t full[kPathBufferSize];
  DWORD length = GetFullPathNameW(path.c_str(), kPathBufferSize, full, nullptr);
  if (length == 0 || length >= kPathBufferSize) return path;
  wchar_t expanded[kPathBufferSize];
  length = GetLongPathNameW(full, expanded, kPathBufferSize);
  if (length == 0 || length >= kPathBufferSize) return full;
  return expanded;
}

std::wstring folderPart(std::wstring_view path) {
  const size_t at = path.rfind(L'\\');
  return at == std::wstring_view::npos ? L"." : std::wstring(path.substr(0, at));
}

std::wstring fileName(std::wstring_view path) {
  const size_t at = path.rfind(L'\\');
  return std::wstring(at == std::wstring_view::npos ? path : path.substr(at + 1));
}

std::wstring replaceExtension(std::wstring_view path, std::wstring_view extension) {
  const size_t dot = path.rfind(L'.');
  const size_t separator = path.rfind(L'\\');
  const bool hasExtension =
      dot != std::wstring_view::npos && (separator == std::wstring_view::npos || dot > separator);
  std::wstring result(hasExtension ? path.substr(0, dot) : path);
  result += extension;
  return result;
}

}  // namespace ryn
