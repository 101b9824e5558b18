#include "ryn/folder_probe.h"

#include "properties/keys.h"
#include "ryn/output.h"
#include "text/fold_case.h"
#include "text/path_text.h"
#include "text/text.h"

namespace ryn {
namespace {
namespace fs = std::filesystem;

bool matches(std::wstring_view name, std::wstring_view pattern) {
  if (pattern.empty()) return name.empty();
  if (pattern[0] == L'*') {
    return matches(name, pattern.substr(1)) || (!name.empty() && matches(name.substr(1), pattern));
  }
  return !name.empty() && name[0] == pattern[0] && matches(name.substr(1), pattern.substr(1));
}

std::map<std::wstring, fs::path> entriesOf(const fs::path& folder) {
  std::map<std::wstring, fs::path> entries;
  std::error_code error;
  for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error)) {
    entries.emplace(foldCase(fromUtf8(textOf(at->path().filename()))), at->path());
  }
  return entries;
}

}  // namespace

std::wstring FolderProbe::resolved(const std::wstring& path) {
  return resolvePath(path, kFolder);
}

std::optional<std::wstring> FolderProbe::inside(const std::wstring& path) {
  static constexpr std::wstring_view kBase = kFolder;
  if (!equalIgnoringCase(path.substr(0, kBase.size()), kBase)) return std::nullopt;
  if (path.size() == kBase.size()) return std::wstring();
  if (path[kBase.size()] != L'\\') return std::nullopt;
  return path.substr(kBase.size() + 1);
}

std::optional<fs::path> FolderProbe::find(const std::wstring& path) const {
  const std::optional<std::wstring> name = inside(withoutTrailingSeparators(resolved(path)));
  if (!name) return std::nullopt;
  fs::path found = name->empty() ? folder_.path() : folder_.find(*name);
  return found.empty() ? std::nullopt : std::optional(std::move(found));
}

std::map<std::wstring, fs::path> FolderProbe::list(const std::wstring& path) const {
  const std::optional<fs::path> folder = find(path);
  return folder ? entriesOf(*folder) : std::map<std::wstring, fs::path>();
}

PathKind FolderProbe::pathKind(const std::wstring& path) const {
  const std::optional<fs::path> found = find(path);
  std::error_code error;
  if (!found || !fs::exists(*found, error)) return PathKind::kNone;
  return fs::is_directory(*found, error) ? PathKind::kFolder : PathKind::kFile;
}

std::vector<Subfolder> FolderProbe::subfolders(const std::wstring& folder,
                                               const std::wstring& pattern) const {
  std::vector<Subfolder> folders;
  for (const auto& [name, path] : list(folder)) {
    if (fs::is_directory(path) && matches(name, foldCase(pattern))) {
      folders.push_back({.name = fromUtf8(textOf(path.filename())), .isLink = false});
    }
  }
  return folders;
}

std::optional<std::wstring> FolderProbe::readText(const std::wstring& path) const {
  if (!fileExists(path)) return std::nullopt;
  return textFile(*find(path));
}

VersionResource FolderProbe::versionResource(const std::wstring& path) const {
  return fileExists(path) ? versionResourceOf(readFile(*find(path))) : VersionResource();
}

ImageBitness FolderProbe::imageBitness(const std::wstring& path) const {
  return fileExists(path) ? bitnessOfImage(readFile(*find(path))) : ImageBitness::kUnknown;
}

fs::path propertyFileOf(const fs::path& application) {
  const bool isFolder = fs::is_directory(application);
  const fs::path above = application.parent_path();
  const fs::path folder = isFolder ? application : above.empty() ? "." : above;
  const std::wstring wanted =
      foldCase(replaceExtension(fromUtf8(textOf(application.filename())), kPropertiesExtension));
  std::vector<fs::path> files;
  for (const auto& [name, path] : entriesOf(folder)) {
    if (isFolder ? name.ends_with(foldCase(kPropertiesExtension)) : name == wanted) files.push_back(path);
  }
  if (files.size() == 1) return files.front();
  throw CommandError(
      kUsage, textOf(application) +
                  (files.empty() ? ": there is no .ryn file" : ": there are several .ryn files, name one"));
}

}  // namespace ryn
