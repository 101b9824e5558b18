#include "vmsearch/installed_vms.h"

#include <set>

#include "platform/files.h"
#include "platform/paths.h"
#include "platform/registry_key.h"
#include "platform/text.h"
#include "platform/wow64.h"
#include "vmsearch/classify.h"
#include "vmsearch/registry_locations.h"

namespace ryn {
namespace {

constexpr const wchar_t* kExecutableNames[] = {L"java.exe", L"jre.exe", L"javaw.exe", L"jrew.exe",
                                               L"jview.exe"};

ConsideredVm registeredVm(const RegistryLocation& location, int bitnessClass, const RegistryKey& key,
                          const std::wstring& subkey) {
  ConsideredVm vm;
  vm.source = VmSource::kRegistry;
  vm.where = key.path() + L"\\" + subkey;
  vm.candidate.kind = location.kind;
  vm.candidate.vendor = location.vendor;
  vm.candidate.bitnessClass = bitnessClass;
  vm.candidate.version = parseVmVersion(subkey);
  try {
    const RegistryKey values(key, subkey);
    // Old installers keep the minor number in a value of its own.
    int minor = 0;
    if (vm.candidate.version.generation() <= 8) minor = parseInteger(values.queryString(kMicroVersionValue));
    vm.candidate.version.setMinor(static_cast<int16_t>(minor));
    vm.candidate.folder = values.queryString(kJavaHomeValue);
  } catch (const KeyException&) {
    vm.outcome = VmOutcome::kUnreadableKey;
    return vm;
  }
  // Uninstalled VMs leave their keys behind.
  if (!folderExists(vm.candidate.folder)) vm.outcome = VmOutcome::kNoUsableHome;
  return vm;
}

std::wstring foldCase(std::wstring text) {
  CharUpperBuffW(text.data(), static_cast<DWORD>(text.size()));
  return text;
}

}  // namespace

SearchSystem SearchSystem::current(std::wstring path) {
  SearchSystem system;
  system.path = std::move(path);
  system.underWow64 = runsUnderWow64();
  if (system.underWow64) system.wow64SystemFolder = ryn::wow64SystemFolder();
  return system;
}

std::vector<std::wstring> pathFolders(const std::wstring& path) {
  std::vector<std::wstring> folders;
  for (std::wstring& folder : split(path, L';')) {
    if (folder.size() >= 2 && folder.front() == L'"' && folder.back() == L'"') {
      folder = folder.substr(1, folder.size() - 2);
    }
    if (isAbsolutePath(folder)) folders.push_back(std::move(folder));
  }
  return folders;
}

void markDuplicates(std::vector<ConsideredVm>& vms) {
  std::set<std::wstring> known;
  for (ConsideredVm& vm : vms) {
    if (vm.outcome != VmOutcome::kNotReached) continue;
    // "|" occurs in no path.
    if (!known.insert(foldCase(vm.candidate.folder + L"|" + vm.candidate.executable)).second) {
      vm.outcome = VmOutcome::kDuplicate;
    }
  }
}

const std::vector<ConsideredVm>& InstalledVms::find(bool singleArchitecture, const std::wstring& jvmHigh) {
  if (searched_) return found_;
  searched_ = true;
  singleArchitecture_ = singleArchitecture;
  const bool pathFirst = jvmHigh == L"0";
  if (pathFirst) searchPath();
  searchRegistry();
  if (!pathFirst) searchPath();
  markDuplicates(found_);
  return found_;
}

void InstalledVms::searchRegistry() {
  searchRegistryView(KEY_READ, 0);
  if (system_.underWow64) searchRegistryView(KEY_READ | KEY_WOW64_64KEY, 1);
}

void InstalledVms::searchRegistryView(REGSAM access, int bitnessClass) {
  for (const RegistryLocation& location : kRegistryLocations) {
    try {
      const RegistryKey key(location.key, access);
      for (const std::wstring& subkey : key.subkeyNames()) {
        found_.push_back(registeredVm(location, bitnessClass, key, subkey));
      }
    } catch (const KeyException&) {
      // No such key: nothing of this kind is installed.
    }
  }
}

void InstalledVms::searchPath() {
  std::vector<std::wstring> folders = pathFolders(system_.path);
  if (system_.underWow64 && !system_.wow64SystemFolder.empty()) folders.push_back(system_.wow64SystemFolder);
  for (const std::wstring& folder : folders) {
    for (const wchar_t* name : kExecutableNames) {
      const std::wstring path = joinPath(folder, name);
      if (!fileExists(path)) continue;
      ConsideredVm vm;
      vm.source = VmSource::kPath;
      vm.where = folder;
      vm.candidate = classifyExecutable(resolveReparsePoint(path), probe_, system_.underWow64);
      found_.push_back(std::move(vm));
    }
  }
}

}  // namespace ryn
