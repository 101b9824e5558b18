#include "launcher/entry.h"

#include <shellapi.h>

#include <string>

#include "launcher/command_line.h"
#include "launcher/console.h"
#include "launcher/error_report.h"
#include "launcher/launcher.h"
#include "launcher/service.h"
#include "launcher/switches.h"
#include "platform/event_log_prompt.h"
#include "platform/text.h"
#include "platform/unique_handle.h"
#include "platform/user_prompt.h"
#include "platform/wow64.h"
#include "properties/keys.h"

namespace ryn {
namespace {

// Class, menu and icon of the download's window all bear this name.
constexpr wchar_t kWindowClass[] = L"Downloading JVM Pack";

LRESULT CALLBACK windowProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_CREATE:
      return 0;
    case WM_DESTROY:
      PostQuitMessage(0);
      return 0;
    default:
      return DefWindowProcW(window, message, wParam, lParam);
  }
}

// A failure would only cost the download its window.
void registerWindowClass(HINSTANCE instance) {
  WNDCLASSEXW windowClass = {};
  windowClass.cbSize = sizeof(windowClass);
  windowClass.style = CS_HREDRAW | CS_VREDRAW;
  windowClass.lpfnWndProc = windowProcedure;
  windowClass.hInstance = instance;
  windowClass.hIcon = LoadIconW(instance, kWindowClass);
  windowClass.hIconSm = windowClass.hIcon;
  windowClass.hCursor = LoadCursorW(nullptr, IDC_ARROW);
  windowClass.hbrBackground = static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH));
  windowClass.lpszMenuName = kWindowClass;
  windowClass.lpszClassName = kWindowClass;
  RegisterClassExW(&windowClass);
}

// Every argument overwrites what the one before said, so only the last one decides.
void applySilentArgument(Launcher& launcher) {
  int count = 0;
  const UniqueLocalMemory memory(CommandLineToArgvW(GetCommandLineW(), &count));
  if (!memory) return;
  auto* const* arguments = static_cast<wchar_t* const*>(memory.get());
  for (int i = 1; i < count; ++i) launcher.setSilent(equalIgnoringCase(arguments[i], switches::kSilent));
}

void launch(Launcher& launcher, HINSTANCE instance) {
  applySilentArgument(launcher);
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
  EventLogPrompt prompt(commandLine.serviceName);
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
  registerWindowClass(instance);
  if (runsUnderWow64()) disableFileSystemRedirection();

  const CommandLine commandLine = parseCommandLine(GetCommandLineW());
  return commandLine.service ? runService(commandLine, instance) : runLaunch(commandLine, instance);
}

}  // namespace ryn
