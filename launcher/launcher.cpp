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
#include "resources/string_table.h"
#include "vmsearch/classify.h"
#include "vmsearch/folder_security.h"

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

Launcher::Launcher(CommandLine commandLine, UserPrompt& prompt)
    : prompt_(prompt),
      commandLine_(std::move(commandLine)),
      installedVms_(SearchSystem::current(pathVariable(readEnvironment())), probe_) {
  loadProperties();

  startFolder_ = currentFolder();
  SetCurrentDirectoryW(folderPart(propertiesPath_).c_str());

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
  // Any extension is replaced: a copy that was renamed to .scr or .com still finds its file.
  propertiesPath_ = replaceExtension(replaceAll(modulePath(), L"/", L"\\"), kPropertiesExtension);
  if (!pathExists(propertiesPath_)) throw TerminalError(StringTable::get(IDS_PROPERTIES_MISSING));
  properties_.load(propertiesPath_);
  silent_ = installerUi(properties_) == kSilentUi;
  if (!isComplete(properties_)) throw TerminalError(StringTable::get(IDS_PROPERTIES_INVALID));
}

void Launcher::openConsole() {
  const ConsoleReason reason = decideConsole(controlKeyIsDown(), commandLine_.console,
                                             stdoutRedirect(properties_), stderrRedirect(properties_));
  if (reason == ConsoleReason::kNone) return;
  Console::instance().open(applicationName(properties_));
  // The Java side reads the other two reasons itself; this one it could not know.
  if (reason == ConsoleReason::kControlKey) {
    TempPropertiesFile::instance().append(std::wstring(keys::kControlKey) + L"=true\n" +
                                          std::wstring(keys::kStderrRedirect) + L"=console\n" +
                                          std::wstring(keys::kStdoutRedirect) + L"=console\n");
  }
}

void Launcher::run(bool wait) {
  showProgress_ = !commandLine_.console && !commandLine_.service;
  chooseVm();
  if (!vm_) throw TerminalError(StringTable::get(IDS_NO_VALID_VM));
  startVm();
  if (!wait || !vmProcess_) return;
  WaitForSingleObject(vmProcess_.get(), INFINITE);
  GetExitCodeProcess(vmProcess_.get(), &exitCode_);
}

void Launcher::chooseVm() {
  const std::wstring environmentVm = environmentVariable(kEnvironmentVmVariable);
  if (fileExists(environmentVm)) {
    use(classifyExecutable(environmentVm, probe_, runsUnderWow64()));
    return;
  }
  searchInstalledVms();
}

VmRules Launcher::vmRules() const {
  VmRules rules;
  rules.validVmList = validVmList(properties_);
  rules.preference = launcherPlatform(properties_);
  rules.jvmHigh = jvmHigh(properties_);
  if (secureFolderCheck(properties_) == L"true") {
    // A VM that the launch would refuse must not win over one that it would start.
    rules.folderRefusal = [this](const VmCandidate& candidate) {
      return refusesVmFolder(folderPart(makeJavaVm(candidate, vmHost())->executablePath()));
    };
  }
  return rules;
}

void Launcher::searchInstalledVms() {
  std::wstring first = currentVm(properties_);
  if (!first.empty() && !isAbsolutePath(first)) first = joinPath(folderPart(propertiesPath_), first);

  VmChoice choice = ryn::chooseVm(first, vmRules(), installedVms_, probe_);
  considered_ = std::move(choice.considered);
  if (choice.chosen) use(*choice.chosen);
}

VmHost Launcher::vmHost() const {
  return {Console::instance().isAllocated(), prompt_, &refusesVmFolder};
}

void Launcher::use(const VmCandidate& candidate) {
  vm_ = makeJavaVm(candidate, vmHost());
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
