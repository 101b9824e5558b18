#include "vmsearch/described_search.h"

#include <algorithm>
#include <set>

#include "text/fold_case.h"
#include "text/path_text.h"
#include "text/text.h"
#include "vmsearch/classify.h"
#include "vmsearch/folder_walk.h"
#include "vmsearch/registry_locations.h"
#include "vmsearch/vm_description.h"

namespace ryn {
namespace {

// A hint that begins so names a registry key, any other one folders.
constexpr wchar_t kRegistryHint[] = L"\\HKEY_";
// Where vendors leave the folder of a VM in its key.
constexpr const wchar_t* kHomeValues[] = {kJavaHomeValue, L"Path", L"InstallationPath", L""};
constexpr wchar_t kDefaultExecutable[] = L"java.exe";
constexpr const wchar_t* kProgramFolders[] = {L"%ProgramFiles%", L"%ProgramW6432%", L"%ProgramFiles(x86)%"};
constexpr int kWalkedLevels = 2;
// Of the walk, of one hint with "*" and of all hints of a description.
constexpr size_t kMaxFolders = 4000;
// No path and no variable is longer.
constexpr size_t kLongestHint = 32'767;
// What the record of each place has of it.
constexpr size_t kLongestOrigin = 1000;

// A folder to look into, or the path of an executable.
struct Place {
  std::wstring path;
  // What named it, for the record.
  std::wstring origin;
};

std::wstring executableName(const VmDescription& description) {
  if (description.executable.empty()) return kDefaultExecutable;
  std::wstring name = replaceAll(description.executable, L"/", L"\\");
  // Descriptions that serve several systems leave the extension out.
  if (fileName(name).find(L'.') == std::wstring::npos) name += L".exe";
  return name;
}

// What a search needs of a description that has something to say about VMs of this system.
struct Described {
  std::wstring path;
  std::wstring executable;
  std::vector<std::wstring> hints;
};

class Search {
 public:
  Search(const std::wstring& applicationFolder, const VmRules& rules, const EnvironmentMap& environment,
         const VmProbe& probe, bool exhaustive)
      : applicationFolder_(applicationFolder),
        rules_(rules),
        environment_(environment),
        probe_(probe),
        exhaustive_(exhaustive) {}

  VmChoice search(const std::vector<std::wstring>& paths) {
    std::vector<Described> descriptions;
    for (const std::wstring& path : paths) {
      const VmDescription description = VmDescription::parse(probe_.readText(path).value_or(L""));
      // Nothing is known of VMs whose file is missing; any VM of the machine would do otherwise.
      if (description.empty()) {
        note(path, VmOutcome::kNoDescription);
      } else if (!fitsPlatform(description.platformHints)) {
        note(path, VmOutcome::kOtherSystem);
      } else {
        descriptions.push_back({path, executableName(description), description.pathHints});
      }
    }
    if (descriptions.empty()) return std::move(choice_);
    for (const Described& described : descriptions) lookInto(hintedPlaces(described), described);
    // The places that only administrators can write to come first. A root that anyone can is no place to look
    // for a program to run with more rights than theirs.
    if (goesOn()) walk(programFolders(), descriptions);
    if (goesOn() && !probe_.isAdministrator())
      walk(probe_.fixedDrives().value_or(std::vector<std::wstring>()), descriptions);
    return std::move(choice_);
  }

 private:
  bool goesOn() const { return !choice_.chosen || exhaustive_; }

  void note(const std::wstring& path, VmOutcome outcome) {
    choice_.considered.push_back(emptyPlace(VmSource::kDescription, path, outcome));
  }

  std::vector<Place> hintedPlaces(const Described& described) const {
    std::vector<Place> places;
    for (const std::wstring& hint : described.hints) {
      if (hint.size() > kLongestHint) continue;
      if (hint.starts_with(kRegistryHint)) {
        for (const std::wstring& key : expandKeys(hint)) addRegisteredPlaces(key, places);
      } else {
        addFolders(hint, hint.substr(0, kLongestOrigin), places);
      }
    }
    return places;
  }

  // Variables such as PATH hold several folders, and quotes around some.
  void addFolders(const std::wstring& text, const std::wstring& origin, std::vector<Place>& places) const {
    const std::optional<std::wstring> expanded = expandVariables(text, environment_);
    if (!expanded) return;
    for (const std::wstring& piece : split(replaceAll(*expanded, L"\"", L""), L';')) {
      if (piece.empty()) continue;
      if (places.size() >= kMaxFolders) return;
      for (std::wstring& path :
           expandWildcards(resolvePath(piece, applicationFolder_), kMaxFolders, probe_)) {
        places.push_back({std::move(path), origin});
      }
    }
  }

  // A part that is "*" stands for every key at its place.
  std::vector<std::wstring> expandKeys(const std::wstring& hint) const {
    std::vector<std::wstring> keys(1);
    // The first part is the empty text before the root.
    for (const std::wstring& part : split(std::wstring_view(hint).substr(1), L'\\')) {
      std::vector<std::wstring> longer;
      for (const std::wstring& key : keys) {
        if (part != L"*") {
          longer.push_back(concat({key, L"\\", part}));
          continue;
        }
        for (const std::wstring& name :
             probe_.subkeyNames(key, RegistryView::kNative).value_or(std::vector<std::wstring>())) {
          if (longer.size() < kMaxFolders) longer.push_back(concat({key, L"\\", name}));
        }
      }
      keys = std::move(longer);
    }
    return keys;
  }

  // The key itself can be a VM's, or its subkeys are.
  void addRegisteredPlaces(const std::wstring& key, std::vector<Place>& places) const {
    const auto subkeys = probe_.subkeyNames(key, RegistryView::kNative);
    if (!subkeys) return;
    addHome(key, places);
    for (const std::wstring& name : *subkeys) addHome(joinPath(key, name), places);
  }

  void addHome(const std::wstring& key, std::vector<Place>& places) const {
    for (const wchar_t* value : kHomeValues) {
      const auto home = probe_.registryText(key, RegistryView::kNative, value);
      // Other texts are names and versions.
      if (home && (isAbsolutePath(*home) || home->starts_with(L'%') || home->starts_with(L'"'))) {
        return addFolders(*home, key, places);
      }
    }
  }

  std::vector<std::wstring> programFolders() const {
    std::vector<std::wstring> folders;
    for (const wchar_t* variable : kProgramFolders) {
      if (auto folder = expandVariables(variable, environment_)) folders.push_back(std::move(*folder));
    }
    return folders;
  }

  void walk(const std::vector<std::wstring>& starts, const std::vector<Described>& descriptions) {
    std::vector<Place> places;
    for (const std::wstring& folder : walkFolders(starts, kWalkedLevels, kMaxFolders, probe_)) {
      places.push_back({folder, folder});
    }
    for (const Described& described : descriptions) lookInto(places, described);
  }

  void lookInto(const std::vector<Place>& places, const Described& described) {
    if (!goesOn()) return;
    std::vector<ConsideredVm> found;
    for (const Place& place : places) {
      for (const wchar_t* folder : {L"", L"bin\\", L"jre\\bin\\"}) {
        const std::wstring path = joinPath(place.path, folder + described.executable);
        if (probe_.fileExists(path)) found.push_back(candidate(path, place, described.path));
      }
      // The place itself can be the program.
      if (equalIgnoringCase(fileName(place.path), fileName(described.executable)) &&
          probe_.fileExists(place.path)) {
        found.push_back(candidate(place.path, place, described.path));
      }
    }
    append(choice_, chooseAmong(std::move(found), rules_));
  }

  ConsideredVm candidate(const std::wstring& path, const Place& place, const std::wstring& description) {
    ConsideredVm vm;
    vm.source = VmSource::kDescription;
    vm.where = concat({description, L": ", place.origin});
    const std::wstring executable = probe_.resolveLink(resolvePath(path, applicationFolder_));
    // The rules are the same for all descriptions: what they refused once stays refused.
    if (!seen_.insert(foldCase(executable)).second) {
      vm.candidate.executable = executable;
      vm.candidate.folder = folderPart(executable);
      vm.outcome = VmOutcome::kDuplicate;
    } else {
      vm.candidate = classifyNamedExecutable(executable, probe_);
    }
    return vm;
  }

  const std::wstring& applicationFolder_;
  const VmRules& rules_;
  const EnvironmentMap& environment_;
  const VmProbe& probe_;
  const bool exhaustive_;
  VmChoice choice_;
  std::set<std::wstring> seen_;
};

bool isWindowsHint(const std::wstring& hint) {
  const std::wstring word = lowerCase(hint);
  if (word == L"all" || word == L"any" || word == L"*") return true;
  return word.find(L"win") != std::wstring::npos && word.find(L"darwin") == std::wstring::npos;
}

}  // namespace

bool fitsPlatform(const std::vector<std::wstring>& hints) {
  return hints.empty() || std::any_of(hints.begin(), hints.end(), isWindowsHint);
}

VmChoice searchByDescriptions(const std::vector<std::wstring>& descriptions,
                              const std::wstring& applicationFolder, const VmRules& rules,
                              const EnvironmentMap& environment, const VmProbe& probe, bool exhaustive) {
  return Search(applicationFolder, rules, environment, probe, exhaustive).search(descriptions);
}

}  // namespace ryn
