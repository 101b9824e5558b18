#include "vmsearch/jvmspecs_search.h"

#include <windows.h>

#include <algorithm>
#include <iterator>
#include <set>

#include "platform/files.h"
#include "platform/output.h"
#include "platform/paths.h"
#include "platform/registry_key.h"
#include "platform/text.h"
#include "platform/wow64.h"
#include "vmsearch/classify.h"
#include "vmsearch/registry_locations.h"
#include "vmsearch/vm_description.h"

namespace ryn {
namespace {

constexpr wchar_t kDefaultExecutable[] = L"java.exe";
constexpr const wchar_t* kProgramFolders[] = {L"%ProgramFiles%", L"%ProgramW6432%", L"%ProgramFiles(x86)%"};
constexpr int kWalkedLevels = 2;
// Of the walk, and of one hint with "*".
constexpr size_t kMaxFolders = 4000;

// A hint may name a drive without a medium; Windows would ask the user to insert one.
class QuietDrives {
 public:
  QuietDrives() { SetThreadErrorMode(SEM_FAILCRITICALERRORS, &old_); }
  QuietDrives(const QuietDrives&) = delete;
  QuietDrives& operator=(const QuietDrives&) = delete;
  ~QuietDrives() { SetThreadErrorMode(old_, nullptr); }

 private:
  DWORD old_ = 0;
};

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

std::wstring homeValue(const RegistryKey& key) {
  for (const wchar_t* name : {kJavaHomeValue, L""}) {
    try {
      std::wstring value = key.queryString(name);
      if (!value.empty()) return value;
    } catch (const KeyException&) {
      // Nothing under this name.
    }
  }
  return {};
}

class Search {
 public:
  Search(const VmRules& rules, const VmProbe& probe, const EnvironmentMap& environment,
         const DriveList& drives)
      : rules_(rules), probe_(probe), environment_(environment), drives_(drives) {}

  // True when the search is over.
  bool tryDescription(const std::wstring& path) {
    const VmDescription description = VmDescription::load(path);
    // Nothing is known of VMs whose file is missing; any VM of the machine would do otherwise.
    if (description.empty() || !fitsPlatform(description.platformHints)) return false;
    const std::wstring executable = executableName(description);
    return choose(find(hintedPlaces(description), executable, path)) ||
           choose(find(walk(), executable, path));
  }

  VmChoice takeResult() { return std::move(result_); }

 private:
  std::vector<Place> hintedPlaces(const VmDescription& description) const {
    std::vector<Place> places;
    for (const std::wstring& hint : description.pathHints) {
      if (HKEY root = rootKeyFromPath(hint); root != nullptr) {
        addRegisteredPlaces(root, hint, places);
      } else {
        addFolders(hint, hint, places);
      }
    }
    return places;
  }

  void addFolders(const std::wstring& text, const std::wstring& origin, std::vector<Place>& places) const {
    const std::optional<std::wstring> expanded = expandVariables(text, environment_);
    // Quotes come from variables that were set with them.
    const std::wstring pattern = expanded ? replaceAll(*expanded, L"\"", L"") : std::wstring();
    if (pattern.empty()) return;
    for (std::wstring& path : expandWildcards(normalisePath(pattern), kMaxFolders))
      places.push_back({std::move(path), origin});
  }

  // The key itself can be a VM's, or its subkeys are.
  void addRegisteredPlaces(HKEY root, const std::wstring& hint, std::vector<Place>& places) const {
    const size_t separator = hint.find(L'\\', 1);
    if (separator == std::wstring::npos || separator + 1 == hint.size()) return;
    try {
      const RegistryKey key(root, hint.substr(separator + 1), KEY_READ);
      addHome(key, hint, places);
      for (const std::wstring& name : key.subkeyNames()) {
        try {
          addHome(RegistryKey(key, name), joinPath(hint, name), places);
        } catch (const KeyException&) {
          // A subkey that is closed to us; the next one may not be.
        }
      }
    } catch (const KeyException&) {
      // Nothing of this kind is installed.
    }
  }

  void addHome(const RegistryKey& key, const std::wstring& origin, std::vector<Place>& places) const {
    const std::wstring home = homeValue(key);
    // Other texts are names and versions.
    if (isAbsolutePath(home) || home.starts_with(L'%') || home.starts_with(L'"'))
      addFolders(home, origin, places);
  }

  // The folders of the machine, listed once for all descriptions.
  const std::vector<Place>& walk() {
    if (walked_) return walkedPlaces_;
    walked_ = true;
    std::vector<std::wstring> starts;
    for (const wchar_t* variable : kProgramFolders) {
      if (auto folder = expandVariables(variable, environment_)) starts.push_back(std::move(*folder));
    }
    if (const auto roots = drives_.roots()) {
      starts.insert(starts.end(), roots->begin(), roots->end());
    } else {
      writeError(L"Could not get the logical drives for the windows system\n");
    }
    for (const std::wstring& folder : walkFolders(starts, kWalkedLevels, kMaxFolders)) {
      walkedPlaces_.push_back({folder, folder});
    }
    return walkedPlaces_;
  }

  std::vector<ConsideredVm> find(const std::vector<Place>& places, const std::wstring& executable,
                                 const std::wstring& description) {
    std::vector<ConsideredVm> found;
    for (const Place& place : places) {
      const bool namesExecutable = equalIgnoringCase(fileName(place.path), fileName(executable));
      for (const wchar_t* folder : {L"", L"bin\\", L"jre\\bin\\"}) {
        const std::wstring path = joinPath(place.path, folder + executable);
        if (fileExists(path)) found.push_back(candidate(path, place, description));
      }
      if (namesExecutable && fileExists(place.path))
        found.push_back(candidate(place.path, place, description));
    }
    return found;
  }

  ConsideredVm candidate(const std::wstring& path, const Place& place, const std::wstring& description) {
    ConsideredVm vm;
    vm.source = VmSource::kDescription;
    vm.where = concat({description, L": ", place.origin});
    vm.candidate.executable = resolveReparsePoint(normalisePath(path));
    vm.candidate.folder = folderPart(vm.candidate.executable);
    // The rules are the same for all descriptions: what they refused once stays refused.
    if (!seen_.insert(upperCase(vm.candidate.executable)).second) {
      vm.outcome = VmOutcome::kDuplicate;
      return vm;
    }
    vm.candidate = classifyExecutable(vm.candidate.executable, probe_, runsUnderWow64());
    return vm;
  }

  bool choose(std::vector<ConsideredVm> found) {
    VmChoice choice = chooseAmong(std::move(found), rules_, wantsSingleArchitecture(rules_.preference));
    std::move(choice.considered.begin(), choice.considered.end(), std::back_inserter(result_.considered));
    result_.chosen = std::move(choice.chosen);
    return result_.chosen.has_value();
  }

  const VmRules& rules_;
  const VmProbe& probe_;
  const EnvironmentMap& environment_;
  const DriveList& drives_;
  VmChoice result_;
  std::set<std::wstring> seen_;
  bool walked_ = false;
  std::vector<Place> walkedPlaces_;
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

std::optional<std::wstring> expandVariables(std::wstring_view text, const EnvironmentMap& environment) {
  std::wstring result;
  for (;;) {
    const size_t begin = text.find(L'%');
    const size_t end = begin == std::wstring_view::npos ? begin : text.find(L'%', begin + 1);
    if (end == std::wstring_view::npos) return result.append(text);
    result += text.substr(0, begin);
    const std::wstring_view name = text.substr(begin + 1, end - begin - 1);
    const auto variable = std::find_if(environment.begin(), environment.end(), [&](const auto& entry) {
      return equalIgnoringCase(entry.first, name);
    });
    if (variable == environment.end() || variable->second.empty()) return std::nullopt;
    result += variable->second;
    text.remove_prefix(end + 1);
  }
}

VmChoice searchByDescriptions(const PropertyFile& jvmspecs, int count, const VmRules& rules,
                              const VmProbe& probe, const EnvironmentMap& environment,
                              const DriveList& drives) {
  const QuietDrives quiet;
  Search search(rules, probe, environment, drives);
  for (int index = 0; index < count; ++index) {
    if (search.tryDescription(descriptionPath(jvmspecs, index))) break;
  }
  return search.takeResult();
}

}  // namespace ryn
