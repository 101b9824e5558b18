#include "resolve/resolve_vm.h"

#include <algorithm>
#include <utility>

#include "properties/keys.h"
#include "provision/application_paths.h"
#include "provision/vm_plan.h"
#include "text/path_text.h"
#include "vmsearch/classify.h"
#include "vmsearch/described_search.h"
#include "vmsearch/installed_search.h"
#include "vmsearch/vm_description.h"
#include "vmsearch/vm_program.h"

namespace ryn {
namespace {

constexpr wchar_t kEnvironmentVmVariable[] = L"RYN_VM";
// Nothing when any image will do.
std::optional<ImageBitness> wantedBitness(const PropertyFile& properties) {
  const std::wstring bits = ryn::vmBits(properties);
  if (bits == L"64") return ImageBitness::k64;
  if (bits == L"32") return ImageBitness::k32;
  return std::nullopt;
}

constexpr wchar_t kValidatorJar[] = L"jvmspecs\\Verify.jar";

/// One question on its way to the answer.
class Resolver {
 public:
  Resolver(const VmQuestion& question, const VmProbe& probe)
      : question_(question), probe_(probe), rules_(rules()) {}

  VmChoice resolve(const PackFetcher& fetchPack) {
    takeNamed(VmSource::kEnvironment, variableIn(question_.environment, kEnvironmentVmVariable));
    if (!goesOn()) return std::move(choice_);
    if (question_.jvmspecs == nullptr) {
      searchInstalled();
      return std::move(choice_);
    }
    const BuildOptions options = readBuildOptions(*question_.jvmspecs);
    const VmPlan plan = planVm(options);
    if (plan.search == VmSearch::kInstalled) searchInstalled();
    if (plan.search == VmSearch::kDescribed) searchDescribed(options.jvmspecCount);
    if (plan.shippedVm && goesOn()) takeShipped();
    if (plan.pack != nullptr && goesOn()) takePack(plan, fetchPack);
    return std::move(choice_);
  }

 private:
  bool goesOn() const { return !choice_.chosen || question_.exhaustive; }

  // Paths that people write: classification knows only "\", and would take "C:/jdk/bin/java.exe" for a name
  // in the current folder.
  std::wstring absolute(const std::wstring& path) const {
    return resolvePath(path, question_.applicationFolder);
  }

  void searchInstalled() {
    std::wstring current = absolute(currentVm(question_.properties));
    if (!current.empty() && isHalfUnpacked(current)) {
      note(VmSource::kCurrentVm, std::exchange(current, {}), VmOutcome::kHalfUnpacked);
    }
    append(choice_, searchInstalledVms(current, pathVariable(question_.environment), rules_, probe_,
                                       question_.exhaustive));
  }

  void searchDescribed(int count) {
    std::vector<std::wstring> paths = descriptionPaths(*question_.jvmspecs, count);
    for (std::wstring& path : paths) path = absolute(path);
    append(choice_, searchByDescriptions(paths, question_.applicationFolder, rules_, question_.environment,
                                         probe_, question_.exhaustive));
  }

  void takeNamed(VmSource source, const std::wstring& path) {
    if (path.empty()) return;
    const std::wstring executable = absolute(path);
    if (probe_.fileExists(executable)) {
      take(source, executable, executable);
    } else {
      note(source, executable, VmOutcome::kMissing);
    }
  }

  void takeShipped() {
    const std::vector<std::wstring> places = shippedVmPaths(question_.applicationFolder);
    VmOutcome outcome = VmOutcome::kMissing;
    for (const std::wstring& path : places) {
      if (!probe_.fileExists(path)) continue;
      if (!isHalfUnpacked(path)) return take(VmSource::kShipped, path, path);
      outcome = VmOutcome::kHalfUnpacked;
    }
    note(VmSource::kShipped, places.front(), outcome);
  }

  void takePack(const VmPlan& plan, const PackFetcher& fetchPack) {
    const bool fetches = fetchPack && !choice_.chosen;
    const std::wstring executable = fetches ? fetchPack(*plan.pack, plan.digestFailureText) : std::wstring();
    if (!executable.empty()) return take(VmSource::kPack, plan.pack->url, executable);
    note(VmSource::kPack, plan.pack->url, VmOutcome::kNotFetched);
  }

  void note(VmSource source, std::wstring where, VmOutcome outcome) {
    choice_.considered.push_back(emptyPlace(source, std::move(where), outcome));
  }

  // A pack's unpacking was begun there and never ended.
  bool isHalfUnpacked(const std::wstring& executable) const {
    const std::vector<std::wstring> markers = unpackMarkers(folderPart(executable));
    return std::any_of(markers.begin(), markers.end(),
                       [this](const auto& path) { return probe_.exists(path); });
  }

  void take(VmSource source, const std::wstring& where, const std::wstring& executable) {
    ConsideredVm vm;
    vm.candidate = classifyNamedExecutable(executable, probe_);
    vm.source = source;
    vm.where = where;
    append(choice_, takeVm(std::move(vm), rules_));
  }

  std::wstring programOf(const VmCandidate& vm) const { return vmProgram(vm, question_.console, probe_); }

  VmRules rules() const {
    VmRules rules;
    rules.validVmList = validVmList(question_.properties);
    rules.platform = launcherPlatform(question_.properties);
    rules.jvmHigh = jvmHigh(question_.properties);
    rules.console = question_.console;
    if (probe_.fileExists(absolute(kValidatorJar))) {
      rules.validator = [this](const VmCandidate& vm, const std::wstring& token) {
        return validate(vm, token);
      };
    }
    if (const std::optional<ImageBitness> wanted = wantedBitness(question_.properties)) {
      rules.wrongBits = [this, wanted](const VmCandidate& vm) {
        return probe_.imageBitness(programOf(vm)) != wanted;
      };
    }
    if (secureFolderCheck(question_.properties) == L"true") {
      // A VM that the launch would refuse must not win over one that it would start.
      rules.unsafeFolder = [this](const VmCandidate& vm) {
        return probe_.refusesFolder(folderPart(programOf(vm)));
      };
    }
    return rules;
  }

  // The Microsoft VM, which is too old for the validator's class, is never asked.
  std::optional<ValidatorAnswer> validate(const VmCandidate& vm, const std::wstring& token) const {
    if (vm.kind == VmKind::kMsj || token.find(L'"') != std::wstring::npos) return std::nullopt;
    // The program with an output, where there is one.
    for (const bool console : {true, false}) {
      const std::wstring program = vmProgram(vm, console, probe_);
      if (probe_.fileExists(program)) return probe_.validate(program, absolute(kValidatorJar), token);
    }
    return ValidatorAnswer::kNotStarted;
  }

  const VmQuestion& question_;
  const VmProbe& probe_;
  const VmRules rules_;
  VmChoice choice_;
};

}  // namespace

VmChoice resolveVm(const VmQuestion& question, const VmProbe& probe, const PackFetcher& fetchPack) {
  return Resolver(question, probe).resolve(fetchPack);
}

}  // namespace ryn
