#include "launcher/launcher.h"

#include "launcher/console.h"
#include "launcher/console_reason.h"
#include "platform/environment.h"
#include "platform/errors.h"
#include "platform/files.h"
#include "platform/output.h"
#include "platform/paths.h"
#include "platform/quiet_drives.h"
#include "platform/text.h"
#include "properties/environment_export.h"
#include "properties/keys.h"
#include "properties/temp_properties_file.h"
#include "provision/application_layout.h"
#include "provision/pack_steps.h"
#include "resolve/resolve_vm.h"
#include "resources/string_table.h"
#include "vmlaunch/java_vm.h"

namespace ryn {
namespace {

constexpr wchar_t kSilentUi[] = L"SILENT";

}  // namespace

Launcher::Launcher(CommandLine commandLine, UserPrompt& prompt)
    : prompt_(prompt),
      commandLine_(std::move(commandLine)),
      // Any extension is replaced: a copy that was renamed to .scr or .com still finds its file.
      propertiesPath_(replaceExtension(replaceAll(modulePath(), L"/", L"\\"), kPropertiesExtension)),
      folder_(folderPart(propertiesPath_)),
      environment_(readEnvironment()) {
  loadProperties();

  startFolder_ = currentFolder();
  // With the separator: "C:" alone is the folder that was last current there, not the root.
  SetCurrentDirectoryW(joinPath(folder_, L"").c_str());

  // Before anything asks for a temporary file.
  if (!commandLine_.tempFolder.empty()) {
    SetEnvironmentVariableW(L"TMP", commandLine_.tempFolder.c_str());
    SetEnvironmentVariableW(L"TEMP", commandLine_.tempFolder.c_str());
    environment_ = readEnvironment();
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
  if (!isComplete(properties_, environment_)) throw TerminalError(StringTable::get(IDS_PROPERTIES_INVALID));

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
  const VmChoice choice = chooseVm();
  if (!choice.chosen) throw NoValidVmError(StringTable::get(IDS_NO_VALID_VM));
  const LaunchPlan plan = planLaunch(choice);
  handOver(plan);
  vmProcess_ = makeJavaVm(plan, prompt_)->launchDefault(plan.request);
  if (!wait || !vmProcess_) return;
  WaitForSingleObject(vmProcess_.get(), INFINITE);
  GetExitCodeProcess(vmProcess_.get(), &exitCode_);
}

VmChoice Launcher::chooseVm() const {
  const QuietDrives quiet;
  return resolveVm({.properties = properties_,
                    .jvmspecs = hasJvmspecs_ ? &jvmspecs_ : nullptr,
                    .applicationFolder = folder_,
                    .environment = environment_,
                    .console = Console::instance().isAllocated(),
                    .exhaustive = false},
                   probe_, [this](const VmPack& pack, std::wstring_view digestFailureText) {
                     return fetchVmPack(pack, digestFailureText);
                   });
}

std::wstring Launcher::fetchVmPack(const VmPack& pack, std::wstring_view digestFailureText) const {
  const bool hasWindows = !commandLine_.console && !commandLine_.service;
  return fetchPack(pack, digestFailureText, folder_,
                   {.owner = instance_, .showProgress = hasWindows && !silent_, .quiet = silent_}, prompt_);
}

LaunchPlan Launcher::planLaunch(const VmChoice& choice) const {
  return ryn::planLaunch(choice,
                         {.properties = properties_,
                          .propertiesPath = propertiesPath_,
                          .tempPropertiesPath = TempPropertiesFile::instance().path(),
                          .programPath = modulePath(),
                          .defaultFolder = startFolder_,
                          .commandLine = commandLine_.text,
                          .arguments = commandLine_.arguments,
                          .environment = environment_,
                          .console = Console::instance().isAllocated(),
                          .service = isService(),
                          .stopInput = canAskVmToEnd()},
                         probe_);
}

void Launcher::handOver(const LaunchPlan& plan) const {
  TempPropertiesFile::instance().appendCurrentVm(plan.program);
  if (!plan.facts.empty()) TempPropertiesFile::instance().append(plan.facts);
  exportEnvironment(environment_);
  for (const auto& [name, value] : plan.variables) SetEnvironmentVariableW(name.c_str(), value.c_str());
  writeError(plan.request.diagnostics);
}

}  // namespace ryn
