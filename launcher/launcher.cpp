#include "launcher/launcher.h"

#include "launcher/console.h"
#include "platform/environment.h"
#include "platform/errors.h"
#include "platform/files.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "platform/wow64.h"
#include "properties/environment_export.h"
#include "properties/keys.h"
#include "properties/temp_properties_file.h"
#include "provision/application_layout.h"
#include "provision/pack_decision.h"
#include "provision/pack_steps.h"
#include "resources/string_table.h"
#include "vmsearch/classify.h"
#include "vmsearch/folder_security.h"
#include "vmsearch/jvmspecs_search.h"

namespace ryn {
namespace {

constexpr wchar_t kPropertiesExtension[] = L".ryn";
constexpr wchar_t kEnvironmentVmVariable[] = L"RYN_VM";
constexpr wchar_t kSilentUi[] = L"SILENT";

bool isComplete(const PropertyFile& properties) {
  return !classPath(properties).empty() && !mainClass(properties).empty() &&
         !(currentVm(properties).empty() && validVmList(properties).empty());
}

}  // namespace

/// The ways to a VM that the build options choose from.
class Launcher::Sources final : public VmSources {
 public:
  Sources(Launcher& launcher, const BuildOptions& options) : launcher_(launcher), options_(options) {}

  bool search() override {
    return options_.usesJvmspecs() ? launcher_.searchDescribedVms(options_.jvmspecCount)
                                   : launcher_.searchInstalledVms();
  }

  std::wstring shippedVm() override { return findShippedVm(launcher_.folder_); }

  std::wstring fetchPack(const PackSource& pack, const std::wstring& digestFailureText) override {
    const DownloadSettings settings{.owner = launcher_.instance_,
                                    .showProgress = launcher_.showProgress_ && !launcher_.silent_,
                                    .quiet = launcher_.silent_};
    return ryn::fetchPack(pack, digestFailureText, launcher_.folder_, settings, launcher_.prompt_);
  }

 private:
  Launcher& launcher_;
  const BuildOptions& options_;
};

Launcher::Launcher(CommandLine commandLine, UserPrompt& prompt)
    : prompt_(prompt),
      commandLine_(std::move(commandLine)),
      // Any extension is replaced: a copy that was renamed to .scr or .com still finds its file.
      propertiesPath_(replaceExtension(replaceAll(modulePath(), L"/", L"\\"), kPropertiesExtension)),
      folder_(folderPart(propertiesPath_)),
      installedVms_(SearchSystem::current(pathVariable(readEnvironment())), probe_),
      validator_(folder_) {
  loadProperties();

  startFolder_ = currentFolder();
  // With the separator: "C:" alone is the folder that was last current there, not the root.
  SetCurrentDirectoryW(joinPath(folder_, L"").c_str());

  // Before anything asks for a temporary file.
  if (!commandLine_.tempFolder.empty()) {
    SetEnvironmentVariableW(L"TMP", commandLine_.tempFolder.c_str());
    SetEnvironmentVariableW(L"TEMP", commandLine_.tempFolder.c_str());
  }
  openConsole();
}

std::wstring Launcher::requiredVm() const {
  return validVmList(properties_);
}

void Launcher::loadProperties() {
  if (!pathExists(propertiesPath_)) throw TerminalError(StringTable::get(IDS_PROPERTIES_MISSING));
  properties_.load(propertiesPath_);
  silent_ = installerUi(properties_) == kSilentUi;
  if (!isComplete(properties_)) throw TerminalError(StringTable::get(IDS_PROPERTIES_INVALID));

  const std::wstring jvmspecsPath = findJvmspecs(folder_);
  hasJvmspecs_ = !jvmspecsPath.empty();
  if (hasJvmspecs_) jvmspecs_.load(jvmspecsPath);
}

void Launcher::openConsole() {
  const ConsoleReason reason = decideConsole(controlKeyIsDown(), commandLine_.console,
                                             stdoutRedirect(properties_), stderrRedirect(properties_));
  if (reason == ConsoleReason::kNone) return;
  Console::instance().open(applicationName(properties_));
  // The Java side reads the other two reasons itself; this one it could not know.
  if (reason == ConsoleReason::kControlKey) {
    TempPropertiesFile::instance().append(concat({keys::kControlKey, L"=true\n", keys::kStderrRedirect,
                                                  L"=console\n", keys::kStdoutRedirect, L"=console\n"}));
  }
}

void Launcher::run(bool wait) {
  showProgress_ = !commandLine_.console && !commandLine_.service;
  chooseVm();
  if (!vm_) throw NoValidVmError(StringTable::get(IDS_NO_VALID_VM));
  startVm();
  if (!wait || !vmProcess_) return;
  WaitForSingleObject(vmProcess_.get(), INFINITE);
  GetExitCodeProcess(vmProcess_.get(), &exitCode_);
}

// Both paths that people write themselves are normalised: classification knows only "\", and would take
// "C:/jdk/bin/java.exe" for a name in the current folder.
void Launcher::chooseVm() {
  const std::wstring environmentVm = normalisePath(environmentVariable(kEnvironmentVmVariable));
  if (fileExists(environmentVm)) {
    useExecutable(environmentVm, VmSource::kEnvironment);
    return;
  }
  if (!hasJvmspecs_) {
    searchInstalledVms();
    return;
  }
  const BuildOptions options = readBuildOptions(jvmspecs_);
  Sources sources(*this, options);
  const VmDecision decision = decideVm(options, sources);
  if (decision.executable.empty()) return;
  useExecutable(decision.executable, options.option == L"withvm" ? VmSource::kShipped : VmSource::kPack);
}

bool Launcher::searchInstalledVms() {
  std::wstring first = currentVm(properties_);
  if (!first.empty() && !isAbsolutePath(first)) first = joinPath(folder_, first);
  return useResultOf(ryn::chooseVm(normalisePath(first), vmRules(), installedVms_, probe_));
}

bool Launcher::searchDescribedVms(int count) {
  return useResultOf(searchByDescriptions(jvmspecs_, count, vmRules(), probe_, readEnvironment()));
}

bool Launcher::useResultOf(VmChoice choice) {
  considered_ = std::move(choice.considered);
  if (choice.chosen) use(*choice.chosen);
  return choice.chosen.has_value();
}

VmRules Launcher::vmRules() {
  VmRules rules;
  rules.validVmList = validVmList(properties_);
  rules.preference = launcherPlatform(properties_);
  rules.jvmHigh = jvmHigh(properties_);
  rules.validator = [this](const VmCandidate& candidate, const std::wstring& token) {
    return validator_.accepts(candidate, token);
  };
  if (secureFolderCheck(properties_) == L"true") {
    // A VM that the launch would refuse must not win over one that it would start.
    rules.folderRefusal = [this](const VmCandidate& candidate) {
      return refusesVmFolder(folderPart(makeJavaVm(candidate, vmHost())->executablePath()));
    };
  }
  return rules;
}

VmHost Launcher::vmHost() const {
  return {Console::instance().isAllocated(), prompt_, &refusesVmFolder};
}

void Launcher::use(const VmCandidate& candidate) {
  vm_ = makeJavaVm(candidate, vmHost());
}

void Launcher::useExecutable(const std::wstring& path, VmSource source) {
  ConsideredVm vm;
  vm.candidate = classifyExecutable(path, probe_, runsUnderWow64());
  vm.source = source;
  vm.where = path;
  vm.outcome = VmOutcome::kChosen;
  use(vm.candidate);
  considered_.push_back(std::move(vm));
}

void Launcher::startVm() {
  const TempPropertiesFile& temporary = TempPropertiesFile::instance();
  temporary.appendCurrentVm(vm_->executablePath());
  exportEnvironment(readEnvironment());

  LaunchRequest request;
  LaunchRequest::fillFromProperties({.properties = properties_,
                                     .propertiesPath = propertiesPath_,
                                     .tempPropertiesPath = temporary.path(),
                                     .defaultFolder = startFolder_,
                                     .arguments = commandLine_.arguments,
                                     .service = isService()},
                                    request);
  vmProcess_ = vm_->launchDefault(request);
}

}  // namespace ryn
