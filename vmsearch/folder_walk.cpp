#include "vmsearch/folder_walk.h"

#include <windows.h>

#include <set>
#include <string_view>

#include "platform/paths.h"
#include "platform/text.h"
#include "platform/unique_handle.h"

namespace ryn {
namespace {

enum class Links { kFollow, kSkip };

std::vector<std::wstring> subfolders(const std::wstring& folder, const std::wstring& pattern, Links links) {
  std::vector<std::wstring> names;
  WIN32_FIND_DATAW entry;
  const UniqueFind find(FindFirstFileExW(joinPath(folder, pattern).c_str(), FindExInfoBasic, &entry,
                                         FindExSearchLimitToDirectories, nullptr, 0));
  for (BOOL more = static_cast<bool>(find); more; more = FindNextFileW(find.get(), &entry)) {
    const std::wstring_view name = entry.cFileName;
    if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0 || name == L"." || name == L"..") continue;
    const bool link = (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    if (link && links == Links::kSkip) continue;
    names.emplace_back(name);
  }
  return names;
}

}  // namespace

std::optional<std::vector<std::wstring>> FixedDrives::roots() const {
  const DWORD drives = GetLogicalDrives();
  if (drives == 0) return std::nullopt;
  std::vector<std::wstring> roots;
  for (wchar_t letter = L'A'; letter <= L'Z'; ++letter) {
    std::wstring root = std::wstring(1, letter) + L":\\";
    if ((drives >> (letter - L'A') & 1) != 0 && GetDriveTypeW(root.c_str()) == DRIVE_FIXED) {
      roots.push_back(std::move(root));
    }
  }
  return roots;
}

std::vector<std::wstring> walkFolders(const std::vector<std::wstring>& starts, int levels, size_t limit) {
  std::vector<std::wstring> folders;
  std::set<std::wstring> known;
  const auto add = [&](const std::wstring& folder) {
    if (folders.size() < limit && known.insert(upperCase(folder)).second) folders.push_back(folder);
  };
  for (const std::wstring& start : starts) add(start);
  size_t next = 0;
  for (int level = 0; level < levels; ++level) {
    for (const size_t end = folders.size(); next < end && folders.size() < limit; ++next) {
      const std::wstring folder = folders[next];
      for (const std::wstring& name : subfolders(folder, L"*", Links::kSkip)) add(joinPath(folder, name));
    }
  }
  return folders;
}

std::vector<std::wstring> expandWildcards(const std::wstring& pattern, size_t limit) {
  std::vector<std::wstring> paths(1);
  const std::vector<std::wstring> parts = split(pattern, L'\\');
  for (size_t i = 0; i < parts.size(); ++i) {
    const bool wild = parts[i].find(L'*') != std::wstring::npos;
    std::vector<std::wstring> longer;
    for (std::wstring& path : paths) {
      const std::vector<std::wstring> names =
          wild ? subfolders(path, parts[i], Links::kFollow) : std::vector{parts[i]};
      if (i != 0) path.push_back(L'\\');
      for (const std::wstring& name : names) {
        if (longer.size() < limit) longer.push_back(path + name);
      }
      if (longer.size() >= limit) break;
    }
    paths = std::move(longer);
  }
  return paths;
}

}  // namespace ryn
