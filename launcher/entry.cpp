#include "launcher/entry.h"

#include <shellapi.h>

#include <optional>
#include <string>

#include "launcher/command_line.h"
#include "launcher/console.h"
#include "launcher/launcher.h"
#include "launcher/switches.h"
#include "platform/errors.h"
#include "platform/output.h"
#include "platform/text.h"
#include "platform/unique_handle.h"
#include "platform/user_prompt.h"
#include "platform/wow64.h"
#include "properties/keys.h"
#include "resources/string_table.h"

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

int showNoValidVm(const TerminalError& error, const std::wstring& requiredVm, UserPrompt& prompt) {
  const std::wstring title = StringTable::get(IDS_ERROR_TITLE);
  const std::wstring text = error.message() + L"\n\nRequired Java VM : " + requiredVm;

  // Only a console takes this; a redirected stream gets the exit code alone.
  const std::wstring line = title + L": " + text + L"\r\n";
  DWORD written = 0;
  WriteConsoleW(GetStdHandle(STD_ERROR_HANDLE), line.c_str(), static_cast<DWORD>(line.size()), &written,
                nullptr);
  writeOutput(L"\nexit code : " + decimal(kExitNoValidVm) + L"\n");

  prompt.showError(text, title);
  return kExitNoValidVm;
}

void launch(Launcher& launcher, HINSTANCE instance) {
  applySilentArgument(launcher);
  launcher.setInstanceHandle(instance);
  launcher.run(true);
  const Console& console = Console::instance();
  if (console.isAllocated() && (consolePause(launcher.properties()) || controlKeyIsDown()))
    console.holdOpen();
}

}  // namespace

int runEntry(HINSTANCE instance) {
  registerWindowClass(instance);
  if (runsUnderWow64()) disableFileSystemRedirection();

  MessageBoxPrompt prompt;
  std::wstring requiredVm;
  try {
    const CommandLine commandLine = parseCommandLine(GetCommandLineW());
    Launcher launcher(commandLine, prompt);
    requiredVm = validVmList(launcher.properties());
    launch(launcher, instance);
    return static_cast<int>(launcher.exitCode());
  } catch (const TerminalError& error) {
    if (error.message() == StringTable::get(IDS_NO_VALID_VM)) return showNoValidVm(error, requiredVm, prompt);
    prompt.showError(error.message(), StringTable::get(IDS_ERROR_TITLE));
    return kExitReportedError;
  } catch (const std::exception& error) {
    prompt.showError(L"an unknown exception has occurrred.\n" + widenBytes(error.what()),
                     StringTable::get(IDS_ERROR_TITLE));
    return kExitReportedError;
  }
}

}  // namespace ryn
