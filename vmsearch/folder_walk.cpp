#include "vmsearch/folder_walk.h"

#include <set>

#include "text/fold_case.h"
#include "text/path_text.h"
#include "text/text.h"

namespace ryn {

std::vector<std::wstring> walkFolders(const std::vector<std::wstring>& starts, int levels, size_t limit,
                                      const VmProbe& probe) {
  std::vector<std::wstring> folders;
  std::set<std::wstring> known;
  const auto add = [&](const std::wstring& folder) {
    if (folders.size() < limit && known.insert(foldCase(folder)).second) folders.push_back(folder);
  };
  for (const std::wstring& start : starts) add(start);
  size_t next = 0;
  for (int level = 0; level < levels; ++level) {
    for (const size_t end = folders.size(); next < end && folders.size() < limit; ++next) {
      const std::wstring folder = folders[next];
      for (const Subfolder& subfolder : probe.subfolders(folder, L"*")) {
        if (!subfolder.isLink) add(joinPath(folder, subfolder.name));
      }
    }
  }
  return folders;
}

std::vector<std::wstring> expandWildcards(const std::wstring& pattern, size_t limit, const VmProbe& probe) {
  std::vector<std::wstring> paths(1);
  const std::vector<std::wstring> parts = split(pattern, L'\\');
  for (size_t i = 0; i < parts.size(); ++i) {
    const bool wild = parts[i].find(L'*') != std::wstring::npos;
    std::vector<std::wstring> longer;
    for (std::wstring& path : paths) {
      const std::vector<Subfolder> found =
          wild ? probe.subfolders(path, parts[i]) : std::vector<Subfolder>{{parts[i]}};
      if (i != 0) path.push_back(L'\\');
      for (const Subfolder& subfolder : found) {
        if (longer.size() < limit) longer.push_back(path + subfolder.name);
      }
      if (longer.size() >= limit) break;
    }
    paths = std::move(longer);
  }
  return paths;
}

}  // namespace ryn
