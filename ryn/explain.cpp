#include "ryn/explain.h"

#include <algorithm>
#include <set>

#include "image/image_bitness.h"
#include "image/image_error.h"
#include "image/resources.h"
#include "image/version_info.h"
#include "launcher/console_reason.h"
#include "properties/keys.h"
#include "provision/application_paths.h"
#include "resolve/resolve_vm.h"
#include "ryn/branding.h"
#include "ryn/embedded.h"
#include "ryn/forwarding_probe.h"
#include "ryn/output.h"
#include "text/fold_case.h"
#include "text/path_text.h"
#include "text/text.h"
#include "vmsearch/vm_choice.h"
#include "vmsearch/vm_description.h"
#include "vmsearch/vm_program.h"

namespace ryn {
namespace {
namespace fs = std::filesystem;

// Windows' limit for a command line, in UTF-16 units, its terminator included; and what is near it.
constexpr size_t kCommandLineLimit = 32767;
constexpr size_t kNearTheLimit = 30000;
constexpr int kNoValidVmCode = 106;

// What a temporary file of the launcher is called, but for its number.
constexpr wchar_t kTemporaryFile[] = L"ryn0.tmp";

/// The machine with the vendors' description in the application's folder. Nothing is looked for but what that
/// names: a walk over the program folders and drives would take long and tell much that is nobody's business.
class VendorsProbe final : public ForwardingProbe {
 public:
  VendorsProbe(const VmProbe& machine, std::wstring path, const EnvironmentMap& environment)
      : ForwardingProbe(machine), path_(std::move(path)) {
    for (const wchar_t* name : {L"ProgramFiles", L"ProgramW6432", L"ProgramFiles(x86)"})
      walked_.insert(foldCase(variableIn(environment, name)));
  }

  std::optional<std::wstring> readText(const std::wstring& path) const override {
    return path == path_ ? textOfBytes(embeddedVendors()) : ForwardingProbe::readText(path);
  }
  std::vector<Subfolder> subfolders(const std::wstring& folder, const std::wstring& pattern) const override {
    if (pattern == L"*" && walked_.contains(foldCase(folder))) return {};
    return ForwardingProbe::subfolders(folder, pattern);
  }
  std::optional<std::vector<std::wstring>> fixedDrives() const override { return std::nullopt; }

 private:
  const std::wstring path_;
  std::set<std::wstring> walked_;
};

/// Everything that one explanation is made from.
class Explainer {
 public:
  Explainer(const Application& application, const Situation& situation, const VmProbe& machine)
      : application_(application),
        properties_(application.properties),
        situation_(situation),
        machine_(machine),
        environment_(situation.environment),
        folder_(folderPart(situation.programPath)) {
    if (situation.commandLine.tempFolder.empty()) return;
    std::erase_if(environment_, [](const auto& variable) {
      return equalIgnoringCase(variable.first, L"TMP") || equalIgnoringCase(variable.first, L"TEMP");
    });
    environment_[L"TMP"] = environment_[L"TEMP"] = situation.commandLine.tempFolder;
  }

  Explanation explain(bool all) {
    describe();
    if (!isComplete(properties_, environment_)) {
      throw CommandError(kNegative,
                         toUtf8(result_.propertiesPath) +
                             ": a launch ends at once, for want of a class path, a main class, or a "
                             "VM or the list of valid ones");
    }
    console_ = decideConsole(false, situation_.commandLine.console, stdoutRedirect(properties_),
                             stderrRedirect(properties_)) != ConsoleReason::kNone;
    const bool hasJvmspecs = !application_.jvmspecsPath.empty();
    const VmChoice choice = resolveVm({.properties = properties_,
                                       .jvmspecs = hasJvmspecs ? &application_.jvmspecs : nullptr,
                                       .applicationFolder = folder_,
                                       .environment = environment_,
                                       .console = console_,
                                       .exhaustive = all},
                                      machine_, nullptr);
    for (const ConsideredVm& vm : choice.considered) {
      if (vm.outcome == VmOutcome::kChosen) result_.chosen = result_.considered.size();
      if (vm.outcome == VmOutcome::kNotFetched && !choice.chosen) result_.packUrl = vm.where;
      result_.considered.push_back(seen(vm));
    }
    if (choice.chosen) plan(choice);
    if (all || !choice.chosen) searchMachine();
    if (!choice.chosen) {
      if (result_.packUrl.empty()) result_.exitCode = kNoValidVmCode;
      advise();
    }
    return std::move(result_);
  }

 private:
  void describe() {
    result_.programPath = situation_.programPath;
    result_.propertiesPath = replaceExtension(situation_.programPath, kPropertiesExtension);
    if (!application_.jvmspecsPath.empty())
      result_.jvmspecsPath = joinPath(folder_, application_.jvmspecsPath);
    result_.signature = situation_.signature;
    result_.hasLauncher = !application_.launcher.empty();
    describeLauncher();
    result_.tokens = validVmTokens(validVmList(properties_));
    result_.platform = launcherPlatform(properties_);
    const std::wstring bits = vmBits(properties_);
    if (bits == L"32" || bits == L"64") result_.bits = bits == L"32" ? 32 : 64;
    result_.takesHighest = jvmHigh(properties_) != L"0";
    result_.asksValidator = machine_.fileExists(joinPath(folder_, kValidatorJar));
  }

  void describeLauncher() {
    if (!result_.hasLauncher) return warn(toUtf8(fileName(result_.programPath)) + " is not in the folder.");
    if (bitnessOfImage(application_.launcher) == ImageBitness::k32)
      warn(
          "The launcher is a 32-bit program, which sees other parts of the registry and of the file system.");
    try {
      const Resources resources = readResources(PeImage(application_.launcher));
      const auto language = firstLanguage(resources, kRtVersion, 1);
      if (!language) return;
      const VersionInfo info = readVersionInfo(resources.at({kRtVersion, 1, *language}).data);
      result_.programVersion = versionText(info.fileVersion);
      result_.launcherVersion = info.text(kLauncherVersion);
      if (result_.launcherVersion.empty()) result_.launcherVersion = versionText(info.productVersion);
    } catch (const ImageError& error) {
      warn(toUtf8(fileName(result_.programPath)) + ": " + error.what() + ".");
    }
  }

  SeenVm seen(const ConsideredVm& vm) const {
    SeenVm result{vm, {}, false};
    if (!result.isVm()) return result;
    const ImageBitness bitness = machine_.imageBitness(programOf(vm.candidate));
    if (bitness != ImageBitness::kUnknown) result.bits = bitness == ImageBitness::k64 ? 64 : 32;
    return result;
  }

  std::wstring programOf(const VmCandidate& vm) const { return vmProgram(vm, console_, machine_); }

  std::wstring temporaryFile() const {
    for (const wchar_t* name : {L"TMP", L"TEMP", L"USERPROFILE"}) {
      const std::wstring folder = variableIn(environment_, name);
      if (!folder.empty()) return joinPath(folder, kTemporaryFile);
    }
    return {};
  }

  void plan(const VmChoice& choice) {
    const bool service = situation_.commandLine.service;
    result_.plan = planLaunch(choice,
                              {.properties = properties_,
                               .propertiesPath = result_.propertiesPath,
                               .tempPropertiesPath = temporaryFile(),
                               .programPath = situation_.programPath,
                               .defaultFolder = situation_.startFolder,
                               .commandLine = situation_.commandLine.text,
                               .arguments = situation_.commandLine.arguments,
                               .environment = environment_,
                               .console = console_,
                               .service = service,
                               .stopInput = service && serviceStopSeconds(properties_) > 0},
                              machine_);
    result_.arguments = splitAsWindows(result_.plan->commandLine);
    judge(*result_.plan);
  }

  void judge(const LaunchPlan& plan) {
    switch (plan.refusal) {
      case LaunchRefusal::kNone:
        break;
      case LaunchRefusal::kUnsafeFolder:
        warn("The VM is not started: ordinary users can write to " + toUtf8(folderPart(plan.program)) +
             ", and the user is an administrator.");
        break;
      case LaunchRefusal::kLostPath:
        warn("The VM is not started: the code page lacks characters of " + toUtf8(plan.lostPath) +
             ", which has no short name.");
        break;
      case LaunchRefusal::kVmTooOld:
        warn("The VM is not started: its build is below ryn.nl.win32.microsoftvm.min.version.");
        result_.exitCode = kNoValidVmCode;
        break;
    }
    if (!machine_.fileExists(plan.program))
      warn(toUtf8(plan.program) + " is not there: the start fails with Windows' error 2.");
    if (!machine_.folderExists(plan.request.workingDirectory)) {
      warn("The working folder " + toUtf8(plan.request.workingDirectory) +
           " is not there: the start fails with Windows' error 267.");
    }
    const size_t length = plan.commandLine.size();
    if (length >= kNearTheLimit) {
      warn("The command line has " + std::to_string(length) + " characters; from " +
           std::to_string(kCommandLineLimit) + " on the start fails.");
    }
    if (result_.considered[*result_.chosen].bits == 32)
      warn("The VM is a 32-bit one: its heap ends below 2 GB, and 64-bit libraries do not load.");
    if (plan.request.userOptions.isRefused) {
      warn("The user's options in " + toUtf8(plan.request.userOptions.path) +
           " are not read: the process has more rights than its user's others.");
    }
    if (!plan.request.diagnostics.empty())
      warn(toUtf8(plan.request.diagnostics.substr(0, plan.request.diagnostics.size() - 1)));
    judgeCodePage(plan);
  }

  // A VM reads its command line in the ANSI code page.
  void judgeCodePage(const LaunchPlan& plan) {
    std::vector<std::wstring> texts = {result_.arguments.front()};
    const auto add = [&](const std::vector<std::wstring>& more) {
      texts.insert(texts.end(), more.begin(), more.end());
    };
    add(plan.request.classpath.entries);
    add(plan.request.leadingArguments);
    for (const VmOption& option : plan.options) texts.push_back(option.text);
    if (!exactArguments(properties_)) add(plan.request.applicationArguments);
    for (const std::wstring& text : texts) {
      if (!machine_.fitsAnsi(text))
        warn("The code page lacks characters of " + toUtf8(text) + ", which Java will read as others.");
    }
  }

  void searchMachine() {
    PropertyFile options;
    options.parse(textOfBytes(embeddedVendorsOptions()));
    const std::wstring description = joinPath(folder_, descriptionPath(options, 0));
    const VendorsProbe machine(machine_, description, environment_);
    EnvironmentMap environment = environment_;
    std::erase_if(environment,
                  [](const auto& variable) { return equalIgnoringCase(variable.first, L"RYN_VM"); });
    const VmChoice choice = resolveVm({.properties = properties_,
                                       .jvmspecs = &options,
                                       .applicationFolder = folder_,
                                       .environment = environment,
                                       .console = console_,
                                       .exhaustive = true},
                                      machine, nullptr);
    std::set<std::wstring> known;
    for (const SeenVm& seen : result_.considered) {
      if (isUsableFind(seen)) known.insert(foldCase(programOf(seen.vm.candidate)));
    }
    result_.onMachine.emplace();
    for (const ConsideredVm& vm : choice.considered) {
      SeenVm found = seen(vm);
      if (!isUsableFind(found) || !known.insert(foldCase(programOf(vm.candidate))).second) continue;
      found.isAccepted = vm.outcome == VmOutcome::kChosen || vm.outcome == VmOutcome::kNotFirst ||
                         vm.outcome == VmOutcome::kOutranked || vm.outcome == VmOutcome::kNotReached;
      if (found.isAccepted) found.vm.outcome = VmOutcome::kNotReached;
      found.vm.where = replaceFirst(vm.where, description + L": ", L"");
      found.vm.source = sourceOf(found.vm.where);
      result_.onMachine->push_back(std::move(found));
    }
  }

  static bool isUsableFind(const SeenVm& seen) {
    return seen.isVm() && seen.vm.outcome != VmOutcome::kNoUsableHome &&
           seen.vm.outcome != VmOutcome::kUnreadableKey && seen.vm.outcome != VmOutcome::kDuplicate;
  }

  static VmSource sourceOf(const std::wstring& hint) {
    if (hint.starts_with(L'\\')) return VmSource::kRegistry;
    if (hint == L"%PATH%") return VmSource::kPath;
    return hint == L"%JAVA_HOME%" ? VmSource::kEnvironment : VmSource::kDescription;
  }

  void warn(std::string text) { result_.warnings.push_back(std::move(text)); }

  static void add(std::vector<std::string>& list, std::string text) {
    if (std::find(list.begin(), list.end(), text) == list.end()) list.push_back(std::move(text));
  }

  bool wasSeen(VmOutcome outcome) const {
    return std::any_of(result_.considered.begin(), result_.considered.end(),
                       [&](const SeenVm& seen) { return seen.vm.outcome == outcome; });
  }

  std::string wantedText() const {
    std::string text;
    for (const std::wstring& token : result_.tokens) text += (text.empty() ? "" : " or ") + toUtf8(token);
    if (text.empty()) text = "any kind";
    return text + (result_.bits ? ", " + std::to_string(*result_.bits) + "-bit" : "");
  }

  void advise() {
    adviseUser();
    adviseMaker();
  }

  void adviseUser() {
    std::vector<std::string>& now = result_.helpsNow;
    const SeenVm* best = nullptr;
    for (const SeenVm& seen : *result_.onMachine) {
      if (seen.isAccepted &&
          (best == nullptr || ranksBelow(best->vm.candidate, seen.vm.candidate, result_.platform)))
        best = &seen;
    }
    for (const SeenVm& seen : result_.considered) {
      const std::string where = toUtf8(seen.vm.where);
      if (seen.vm.outcome == VmOutcome::kHalfUnpacked)
        add(now, "Delete the folder of " + where +
                     " and start the application again, so that its pack is unpacked anew.");
      if (seen.vm.source == VmSource::kEnvironment && seen.vm.outcome == VmOutcome::kMissing)
        add(now, "Correct or remove the environment variable RYN_VM: there is no " + where + ".");
      if (seen.vm.outcome == VmOutcome::kUnsafeFolder)
        add(now, "Take from ordinary users the right to write to " +
                     toUtf8(folderPart(programOf(seen.vm.candidate))) + ".");
    }
    if (!result_.packUrl.empty())
      add(now, "Start the application with a connection to " + toUtf8(result_.packUrl) +
                   ": it fetches its Java from there.");
    if (best != nullptr) {
      add(now, "Set the environment variable RYN_VM to " + toUtf8(best->vm.candidate.executable) + ".");
    } else {
      add(now, "Install a Java (" + wantedText() + ") for all users.");
    }
  }

  void adviseMaker() {
    std::vector<std::string>& maker = result_.forMaker;
    const bool isAnywhere = std::any_of(result_.onMachine->begin(), result_.onMachine->end(),
                                        [](const SeenVm& seen) { return seen.isAccepted; });
    if (wasSeen(VmOutcome::kOtherBitness))
      add(maker, "Write ryn.nl.win32.java.launcher.platform=2: with " + std::to_string(result_.platform) +
                     " VMs of this class are left out.");
    if (wasSeen(VmOutcome::kWrongBits)) {
      add(maker, "Leave ryn.win32.vm.bits out, unless the application needs " +
                     std::to_string(*result_.bits) + " bits.");
    }
    if (isAnywhere) add(maker, "Search where vendors leave their VMs: ryn make --vendors.");
    if (wasSeen(VmOutcome::kNoMatchingToken))
      add(maker, "Let ryn.nl.valid.vm.list, now " + wantedText() +
                     ", admit what was found, if the application runs with it.");
    if (wasSeen(VmOutcome::kNoDescription) || wasSeen(VmOutcome::kOtherSystem))
      add(maker,
          "Ship the descriptions that jvmspecs.properties names, with something about Windows in them.");
    if (wasSeen(VmOutcome::kValidatorRejected) || wasSeen(VmOutcome::kValidatorTimedOut) ||
        wasSeen(VmOutcome::kValidatorNotStarted)) {
      add(maker, "Look into Verify.jar; where a version range such as 17+ says what it asks, leave it out.");
    }
    add(maker, "Bring a Java along (ryn make --runtime), or have one fetched (--pack).");
  }

  static constexpr wchar_t kValidatorJar[] = L"jvmspecs\\Verify.jar";

  const Application& application_;
  const PropertyFile& properties_;
  const Situation& situation_;
  const VmProbe& machine_;
  EnvironmentMap environment_;
  const std::wstring folder_;
  bool console_ = false;
  Explanation result_;
};

}  // namespace

Application::Application(const fs::path& given)
    : folder(fs::absolute(propertyFileOf(given)).parent_path()), here(folder) {
  const fs::path file = propertyFileOf(given);
  name = fromUtf8(textOf(file.stem()));
  properties.parse(textFile(file));
  for (const std::wstring& path : jvmspecsPaths(FolderProbe::kFolder)) {
    if (!here.fileExists(path)) continue;
    jvmspecsPath = *FolderProbe::inside(path);
    jvmspecs.parse(*here.readText(path));
    break;
  }
  const auto program = here.find(FolderProbe::resolved(name + L".exe"));
  if (program) launcher = readFile(*program);
}

Explanation explain(const Application& application, const Situation& situation, const VmProbe& machine,
                    bool all) {
  return Explainer(application, situation, machine).explain(all);
}

}  // namespace ryn
