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

std::wstring normalisePath(const std::wstring& path) {
  if (path.empty()) return path;
  std::wstring result = fullPathOrEmpty(path);
  return result.empty() ? path : result;
}

bool namesDevice(const std::wstring& path) {
  return normalisePath(path).starts_with(L"\\\\.\\");
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

}  // namespace ryn
