#include "launcher/entry.h"

#include <shellapi.h>

#include <string>
#include <string_view>

#include "launcher/command_line.h"
#include "launcher/console.h"
#include "launcher/error_report.h"
#include "launcher/launcher.h"
#include "launcher/service.h"
#include "launcher/switches.h"
#include "platform/event_log_prompt.h"
#include "platform/system_library.h"
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

// What stands behind the program, which ends as the system's own split ends it: at the second double quote,
// or at the first blank.
std::wstring_view argumentText(std::wstring_view commandLine) {
  const bool quoted = commandLine.starts_with(L'"');
  const size_t end = quoted ? commandLine.find(L'"', 1) : commandLine.find_first_of(L" \t");
  return end == std::wstring_view::npos ? std::wstring_view() : trim(commandLine.substr(end + 1));
}

bool lastArgumentIsSilent() {
  const UniqueModule shell = loadSystemLibrary(L"shell32.dll");
  const RYN_FUNCTION(CommandLineToArgvW) splitCommandLine(shell.get());
  if (splitCommandLine == nullptr) return false;
  int count = 0;
  const UniqueLocalMemory memory(splitCommandLine(GetCommandLineW(), &count));
  if (!memory || count < 2) return false;
  return equalIgnoringCase(static_cast<wchar_t* const*>(memory.get())[count - 1], switches::kSilent);
}

// Every argument overwrites what the one before said, so only the last one decides. The shell's library,
// which costs as much to load as all others together, is loaded only for a command line that can have the
// word in it.
void applySilentArgument(Launcher& launcher) {
  const std::wstring_view arguments = argumentText(GetCommandLineW());
  if (arguments.empty()) return;
  // Double quotes within a word do not count.
  const std::wstring letters = lowerCase(replaceAll(arguments, L"\"", L""));
  const bool mayBeSilent = letters.find(switches::kSilent) != std::wstring::npos;
  launcher.setSilent(mayBeSilent && lastArgumentIsSilent());
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
  registerWindowClass(instance);
  if (runsUnderWow64()) disableFileSystemRedirection();

  const CommandLine commandLine = parseCommandLine(GetCommandLineW());
  return commandLine.service ? runService(commandLine, instance) : runLaunch(commandLine, instance);
}

}  // namespace ryn
