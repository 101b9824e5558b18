#include "text/path_text.h"

#include <algorithm>

#include "text/text.h"

namespace ryn {
namespace {

bool isSeparator(wchar_t c) {
  return c == L'\\' || c == L'/';
}

// Characters up to the first separator that no ".." removes, included: "C:\" or "\\server\share\".
size_t rootLength(std::wstring_view path) {
  if (!path.starts_with(L"\\\\")) return std::min<size_t>(path.size(), 3);
  const size_t share = path.find(L'\\', std::min(path.find(L'\\', 2), path.size() - 1) + 1);
  return share == std::wstring_view::npos ? path.size() : share + 1;
}

// `path` with "\" as its only separator, and what it leaves open taken from `base`.
std::wstring completed(std::wstring path, std::wstring_view base) {
  if (path.starts_with(L"\\\\")) return path;
  if (path[0] == L'\\') return std::wstring(base.substr(0, rootLength(base) - 1)) + path;
  if (path.size() < 2 || path[1] != L':') return joinPath(base, path);
  if (path.size() > 2 && path[2] == L'\\') return path;
  // Relative to the current folder of that drive, of which only the base's is known.
  const std::wstring drive = path.substr(0, 2);
  return joinPath(lowerCase(drive) == lowerCase(base.substr(0, 2)) ? base : drive, path.substr(2));
}

}  // namespace

bool isAbsolutePath(std::wstring_view path) {
  return (!path.empty() && path[0] == L'\\') || (path.size() > 1 && path[1] == L':');
}

bool isFullPath(std::wstring_view path) {
  if (path.size() < 3) return path.size() == 2 && path[1] == L':';
  return isSeparator(path[0]) ? isSeparator(path[1]) : path[1] == L':' && isSeparator(path[2]);
}

std::wstring withoutTrailingSeparators(std::wstring_view path) {
  while (path.ends_with(L'\\')) path.remove_suffix(1);
  return std::wstring(path);
}

std::wstring resolvePath(std::wstring_view path, std::wstring_view baseFolder) {
  if (path.empty() || path.starts_with(L"\\\\?\\")) return std::wstring(path);
  const std::wstring whole = completed(replaceAll(path, L"/", L"\\"), baseFolder);
  const size_t root = rootLength(whole);
  std::wstring result = whole.substr(0, root);
  for (size_t at = root; at < whole.size();) {
    const size_t end = std::min(whole.find(L'\\', at), whole.size());
    const std::wstring_view segment = std::wstring_view(whole).substr(at, end - at);
    at = end + 1;
    if (segment.empty() || segment == L".") continue;
    if (segment == L"..") {
      // Of the root itself only the root is left.
      result.resize(std::max(root, result.size() > root ? result.rfind(L'\\') : root));
      continue;
    }
    if (result.size() > root) result.push_back(L'\\');
    result += segment;
  }
  if (whole.back() == L'\\') return joinPath(result, L"");
  while (result.size() > root && (result.back() == L'.' || result.back() == L' ')) result.pop_back();
  return result;
}

std::wstring joinPath(std::wstring_view folder, std::wstring_view name) {
  std::wstring result(folder);
  if (result.empty() || result.back() != L'\\') result.push_back(L'\\');
  result += name;
  return result;
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
