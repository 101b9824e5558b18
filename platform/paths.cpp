#include "platform/paths.h"

#include <algorithm>
#include <vector>

#include "platform/errors.h"
#include "platform/text.h"

namespace ryn {
namespace {

// Characters in the longest path that the system knows, terminator included.
constexpr DWORD kLongestPath = 32768;

// Characters up to the first separator that no ".." removes, included: "C:\\" or "\\\\server\\share\\".
size_t rootLength(std::wstring_view path) {
  if (!path.starts_with(L"\\\\")) return 3;
  const size_t server = path.find(L'\\', 2);
  const size_t share = server == std::wstring_view::npos ? server : path.find(L'\\', server + 1);
  return share == std::wstring_view::npos ? path.size() : share + 1;
}

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

bool isFullPath(std::wstring_view path) {
  const auto isSeparator = [](wchar_t c) { return c == L'\\' || c == L'/'; };
  if (path.size() < 3) return path.size() == 2 && path[1] == L':';
  return isSeparator(path[0]) ? isSeparator(path[1]) : path[1] == L':' && isSeparator(path[2]);
}

std::wstring withoutTrailingSeparators(std::wstring_view path) {
  while (path.ends_with(L'\\')) path.remove_suffix(1);
  return std::wstring(path);
}

std::wstring joinPath(std::wstring_view folder, std::wstring_view name) {
  std::wstring result(folder);
  if (result.empty() || result.back() != L'\\') result.push_back(L'\\');
  result += name;
  return result;
}

std::wstring resolvePath(std::wstring_view path, std::wstring_view baseFolder) {
  if (path.empty() || path.starts_with(L"\\\\?\\")) return std::wstring(path);
  std::wstring whole = replaceAll(path, L"/", L"\\");
  const bool hasDrive = whole.size() > 1 && whole[1] == L':';
  if (hasDrive && (whole.size() == 2 || whole[2] != L'\\')) {
    // Relative to the current folder of that drive, of which only one is known.
    const bool ofBase = equalIgnoringCase(whole.substr(0, 2), baseFolder.substr(0, 2));
    whole = joinPath(ofBase ? baseFolder : std::wstring_view(whole).substr(0, 2), whole.substr(2));
  } else if (!hasDrive && whole[0] != L'\\') {
    whole = joinPath(baseFolder, whole);
  } else if (!hasDrive && !whole.starts_with(L"\\\\")) {
    whole = std::wstring(baseFolder.substr(0, rootLength(baseFolder) - 1)) + whole;
  }

  const size_t root = rootLength(whole);
  std::wstring result = whole.substr(0, root);
  std::vector<size_t> starts;
  for (const std::wstring& segment :
       split(std::wstring_view(whole).substr(std::min(root, whole.size())), L'\\')) {
    if (segment.empty() || segment == L".") continue;
    if (segment == L"..") {
      if (starts.empty()) continue;
      result.resize(starts.back());
      starts.pop_back();
      continue;
    }
    starts.push_back(result.size());
    if (result.size() > root) result.push_back(L'\\');
    result += segment;
  }
  if (whole.back() == L'\\') return joinPath(result, L"");
  while (result.size() > root && (result.back() == L'.' || result.back() == L' ')) result.pop_back();
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
