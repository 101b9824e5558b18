#include "vmsearch/installed_search.h"

#include <set>

#include "text/fold_case.h"
#include "text/path_text.h"
#include "text/text.h"
#include "vmsearch/classify.h"
#include "vmsearch/registry_locations.h"
#include "vmsearch/vm_program.h"

namespace ryn {
namespace {

constexpr const wchar_t* kExecutableNames[] = {L"java.exe", L"jre.exe", L"javaw.exe", L"jrew.exe",
                                               L"jview.exe"};

ConsideredVm registeredVm(const RegistryLocation& location, RegistryView view, const std::wstring& subkey,
                          bool console, const VmProbe& probe) {
  ConsideredVm vm;
  vm.source = VmSource::kRegistry;
  vm.where = concat({location.key, L"\\", subkey});
  vm.candidate.kind = location.kind;
  vm.candidate.vendor = location.vendor;
  vm.candidate.bitnessClass = view == RegistryView::k64 ? 1 : 0;
  vm.candidate.version = parseVmVersion(subkey);

  const std::optional<std::wstring> home = probe.registryText(vm.where, view, kJavaHomeValue);
  std::optional<std::wstring> minor(L"0");
  // Old installers keep the minor number in a value of its own.
  if (vm.candidate.version.generation() <= 8) minor = probe.registryText(vm.where, view, kMicroVersionValue);
  if (!home || !minor) {
    vm.outcome = VmOutcome::kUnreadableKey;
    return vm;
  }
  vm.candidate.version.setMinor(static_cast<int16_t>(parseInteger(*minor)));
  vm.candidate.folder = withoutTrailingSeparators(*home);
  // Uninstalled VMs leave their keys behind, and often an empty folder.
  if (!isFullPath(vm.candidate.folder) || !probe.fileExists(vmProgram(vm.candidate, console, probe))) {
    vm.outcome = VmOutcome::kNoUsableHome;
  }
  return vm;
}

void searchRegistry(RegistryView view, bool console, const VmProbe& probe, std::vector<ConsideredVm>& found) {
  for (const RegistryLocation& location : kRegistryLocations) {
    const auto subkeys = probe.subkeyNames(location.key, view);
    if (!subkeys) continue;
    for (const std::wstring& subkey : *subkeys) {
      found.push_back(registeredVm(location, view, subkey, console, probe));
    }
  }
}

void searchRegistry(bool console, const VmProbe& probe, std::vector<ConsideredVm>& found) {
  searchRegistry(RegistryView::kNative, console, probe, found);
  if (probe.underWow64()) searchRegistry(RegistryView::k64, console, probe, found);
}

// In their order. Quotes around a folder are dropped. Empty and relative ones are left out: the launcher
// works in the application's folder, where they would mean something that whoever wrote PATH did not mean,
// and a program found there could be anybody's.
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

void searchPath(const std::wstring& path, const VmProbe& probe, std::vector<ConsideredVm>& found) {
  std::vector<std::wstring> folders = pathFolders(path);
  if (probe.underWow64()) folders.push_back(probe.wow64SystemFolder());
  std::set<std::wstring> known;
  for (const std::wstring& folder : folders) {
    // PATH grows by repetition, and by folders of what is gone or on a drive that is not there.
    if (folder.empty() || !known.insert(foldCase(withoutTrailingSeparators(folder))).second) continue;
    if (!probe.folderExists(folder)) continue;
    for (const wchar_t* name : kExecutableNames) {
      const std::wstring executable = joinPath(folder, name);
      if (!probe.fileExists(executable)) continue;
      ConsideredVm& vm = found.emplace_back();
      vm.source = VmSource::kPath;
      vm.where = folder;
      vm.candidate = classifyExecutable(probe.resolveLink(executable), probe);
    }
  }
}

// Two finds are the same VM when folder, executable, kind and version are the same.
void markDuplicates(std::vector<ConsideredVm>& vms) {
  std::set<std::wstring> known;
  for (ConsideredVm& vm : vms) {
    if (vm.outcome != VmOutcome::kNotReached) continue;
    const VmCandidate& found = vm.candidate;
    // "|" occurs in no path.
    const std::wstring identity = concat({foldCase(found.folder), L"|", foldCase(found.executable), L"|",
                                          decimal(static_cast<int>(found.kind)), L"|",
                                          decimal(static_cast<long long>(found.version.packed()))});
    if (!known.insert(identity).second) vm.outcome = VmOutcome::kDuplicate;
  }
}

}  // namespace

std::vector<ConsideredVm> findInstalledVms(const std::wstring& path, const VmRules& rules,
                                           const VmProbe& probe) {
  std::vector<ConsideredVm> found;
  if (rules.firstWins()) searchPath(path, probe, found);
  searchRegistry(rules.console, probe, found);
  if (!rules.firstWins()) searchPath(path, probe, found);
  markDuplicates(found);
  return found;
}

VmChoice searchInstalledVms(const std::wstring& currentVm, const std::wstring& path, const VmRules& rules,
                            const VmProbe& probe, bool exhaustive) {
  VmChoice choice;
  if (probe.fileExists(currentVm)) {
    ConsideredVm vm;
    vm.source = VmSource::kCurrentVm;
    vm.where = currentVm;
    vm.candidate = classifyNamedExecutable(currentVm, probe);
    choice =
        validVmTokens(rules.validVmList).empty() ? takeVm(std::move(vm), rules) : chooseAmong({vm}, rules);
  } else if (!currentVm.empty()) {
    choice.considered.push_back(emptyPlace(VmSource::kCurrentVm, currentVm, VmOutcome::kMissing));
  }
  if (!choice.chosen || exhaustive) {
    append(choice, chooseAmong(findInstalledVms(path, rules, probe), rules));
  }
  return choice;
}

}  // namespace ryn
