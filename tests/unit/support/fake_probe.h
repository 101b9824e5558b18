#pragma once

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "text/path_text.h"
#include "text/text.h"
#include "vmsearch/vm_probe.h"

namespace ryn::test {

/// A machine as a test describes it. Names of files and keys are compared exactly.
class FakeProbe final : public VmProbe {
 public:
  /// A file and its folders.
  void file(const std::wstring& path) {
    files.insert(path);
    for (std::wstring folder = folderPart(path); folder != L"."; folder = folderPart(folder))
      folders.insert(folder);
  }

  void folder(const std::wstring& path) { file(joinPath(path, L"~")), files.erase(joinPath(path, L"~")); }

  /// A VM's programs in `bin`, with the version (product version a.b.c.0) in their resources.
  void vm(const std::wstring& bin, FourPartVersion version, bool compiler = false) {
    for (const wchar_t* name : {L"java.exe", L"javaw.exe"}) {
      file(joinPath(bin, name));
      resources[joinPath(bin, name)].productVersion = version;
    }
    if (compiler) file(joinPath(bin, L"javac.exe"));
  }

  /// A value of a registry key, "HKLM\..." or "HKCU\..."; the key exists from then on.
  void value(const std::wstring& key, const std::wstring& name, const std::wstring& text) {
    registry[fullKey(key)][name] = text;
  }

  static std::wstring fullKey(const std::wstring& key) {
    return replaceFirst(replaceFirst(key, L"HKLM\\", L"\\HKEY_LOCAL_MACHINE\\"), L"HKCU\\",
                        L"\\HKEY_CURRENT_USER\\");
  }

  PathKind pathKind(const std::wstring& path) const override {
    asked.insert(path);
    if (files.contains(path)) return PathKind::kFile;
    return folders.contains(path) ? PathKind::kFolder : PathKind::kNone;
  }
  std::wstring resolveLink(const std::wstring& path) const override {
    const auto found = links.find(path);
    return found == links.end() ? path : found->second;
  }
  std::vector<Subfolder> subfolders(const std::wstring& folder, const std::wstring& pattern) const override {
    // One "*" is as much as a test needs.
    const size_t star = pattern.find(L'*');
    const std::wstring begin = pattern.substr(0, star), end = pattern.substr(star + 1);
    std::vector<Subfolder> result;
    for (const std::wstring& path : folders) {
      const std::wstring name = fileName(path);
      if (folderPart(path) != folder && folderPart(path) + L"\\" != folder) continue;
      if (name.size() + 1 >= pattern.size() && name.starts_with(begin) && name.ends_with(end)) {
        result.push_back({name, links.contains(path)});
      }
    }
    return result;
  }
  std::optional<std::vector<std::wstring>> fixedDrives() const override { return drives; }
  std::optional<std::wstring> readText(const std::wstring& path) const override {
    const auto found = texts.find(path);
    return found == texts.end() ? std::nullopt : std::optional(found->second);
  }
  VersionResource versionResource(const std::wstring& path) const override {
    const auto found = resources.find(path);
    return found == resources.end() ? VersionResource() : found->second;
  }
  ImageBitness imageBitness(const std::wstring& path) const override {
    return images32.contains(path) ? ImageBitness::k32 : ImageBitness::k64;
  }
  bool underWow64() const override { return wow64; }
  std::wstring wow64SystemFolder() const override { return L"C:\\Windows\\SysWOW64"; }
  std::optional<std::vector<std::wstring>> subkeyNames(const std::wstring& key,
                                                       RegistryView view) const override {
    std::vector<std::wstring> names;
    bool exists = false;
    for (const auto& [path, values] : view == RegistryView::k64 ? registry64 : registry) {
      exists = exists || path == key;
      if (!path.starts_with(key + L"\\")) continue;
      exists = true;
      const std::wstring name =
          path.substr(key.size() + 1, path.find(L'\\', key.size() + 1) - key.size() - 1);
      if (names.empty() || names.back() != name) names.push_back(name);
    }
    return exists ? std::optional(names) : std::nullopt;
  }
  std::optional<std::wstring> registryText(const std::wstring& key, RegistryView view,
                                           const std::wstring& name) const override {
    const auto& keys = view == RegistryView::k64 ? registry64 : registry;
    const auto values = keys.find(key);
    if (values == keys.end() || !values->second.contains(name)) return std::nullopt;
    return values->second.at(name);
  }
  bool isAdministrator() const override { return administrator; }
  bool isElevated() const override { return elevated; }
  bool fitsAnsi(const std::wstring& text) const override {
    return std::all_of(text.begin(), text.end(), [](wchar_t c) { return c < 256; });
  }
  std::optional<std::wstring> shortPath(const std::wstring& path) const override {
    const auto found = shortPaths.find(path);
    return found == shortPaths.end() ? path : found->second;
  }
  bool refusesFolder(const std::wstring& folder) const override {
    return administrator && unsafe.contains(folder);
  }
  ValidatorAnswer validate(const std::wstring& executable, const std::wstring& /*jar*/,
                           const std::wstring& token) const override {
    validated.push_back(executable + L" " + token);
    const auto found = answers.find(executable);
    return found == answers.end() ? ValidatorAnswer::kRejected : found->second;
  }

  std::set<std::wstring> files, folders;
  /// Path to target.
  std::map<std::wstring, std::wstring> links;
  std::map<std::wstring, std::wstring> texts;
  std::map<std::wstring, VersionResource> resources;
  std::set<std::wstring> images32;
  std::map<std::wstring, std::map<std::wstring, std::wstring>> registry, registry64;
  std::optional<std::vector<std::wstring>> drives = std::vector<std::wstring>{L"C:\\"};
  bool wow64 = false;
  bool administrator = false;
  bool elevated = false;
  std::map<std::wstring, std::wstring> shortPaths;
  std::set<std::wstring> unsafe;
  std::map<std::wstring, ValidatorAnswer> answers;

  mutable std::set<std::wstring> asked;
  mutable std::vector<std::wstring> validated;
};

}  // namespace ryn::test
