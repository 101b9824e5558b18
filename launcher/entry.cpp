#include "launcher/entry.h"

#include <string>

#include "launcher/command_line.h"
#include "launcher/console.h"
#include "launcher/error_report.h"
#include "launcher/launcher.h"
#include "launcher/service.h"
#include "platform/event_log_prompt.h"
#include "platform/files.h"
#include "platform/paths.h"
#include "platform/user_prompt.h"
#include "platform/wow64.h"
#include "properties/keys.h"

namespace ryn {
namespace {

void launch(Launcher& launcher, HINSTANCE instance) {
  // It replaces what the property file says.
  if (const std::optional<bool> silent = silentArgument(GetCommandLineW())) launcher.setSilent(*silent);
  launcher.setInstanceHandle(instance);
  launcher.run(true);
  const Console& console = Console::instance();
  if (console.isAllocated() && (consolePause(launcher.properties()) || controlKeyIsDown()))
    console.holdOpen();
}

int runLaunch(const CommandLine& commandLine, HINSTANCE instance) {
  MessageBoxPrompt prompt;
  std::wstring requiredVm;
  try {
    Launcher launcher(commandLine, prompt);
    requiredVm = launcher.requiredVm();
    launch(launcher, instance);
    return static_cast<int>(launcher.exitCode());
  } catch (const std::exception& error) {
    return reportError(error, requiredVm, prompt);
  }
}

int runService(const CommandLine& commandLine, HINSTANCE instance) {
  EventLogPrompt eventLog(commandLine.serviceName);
  MessageBoxPrompt boxes;
  // Windows gives a service no window that could be seen; somebody who typed the switch sees his.
  UserPrompt& prompt = hasVisibleWindowStation() ? static_cast<UserPrompt&>(boxes) : eventLog;
  try {
    ServiceRYN& service = ServiceRYN::instance(commandLine, prompt);
    service.setInstanceHandle(instance);
    service.startService();
    return 0;
  } catch (const std::exception& error) {
    return reportError(error, L"", prompt);
  }
}

}  // namespace

int runEntry(HINSTANCE instance) {
  if (runsUnderWow64()) disableFileSystemRedirection();

  const CommandLine commandLine = parseCommandLine(
      GetCommandLineW(),
      {.exists = pathExists, .folderExists = folderExists, .normalise = normalisePath, .expand = expandPath});
  return commandLine.service ? runService(commandLine, instance) : runLaunch(commandLine, instance);
}

}  // namespace ryn
