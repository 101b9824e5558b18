#include "launcher/console.h"

#include <windows.h>

#include <cstdio>

#include "platform/output.h"
#include "platform/text.h"

namespace ryn {
namespace {

// The VM inherits these handles; those that AllocConsole leaves alone, because the process was started with
// redirected ones, would send its output past the console that was asked for.
void useAsStandardHandle(DWORD which, const wchar_t* device) {
  SECURITY_ATTRIBUTES inheritable = {sizeof(inheritable), nullptr, TRUE};
  const HANDLE handle = CreateFileW(device, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    &inheritable, OPEN_EXISTING, 0, nullptr);
  // The process keeps it to its end.
  if (handle != INVALID_HANDLE_VALUE) SetStdHandle(which, handle);
}

}  // namespace

ConsoleReason decideConsole(bool controlKeyDown, bool commandLineFlag, const std::wstring& stdoutRedirect,
                            const std::wstring& stderrRedirect) {
  if (controlKeyDown) return ConsoleReason::kControlKey;
  if (commandLineFlag) return ConsoleReason::kCommandLine;
  if (lowerCase(stderrRedirect) == L"console" || lowerCase(stdoutRedirect) == L"console") {
    return ConsoleReason::kProperties;
  }
  return ConsoleReason::kNone;
}

bool controlKeyIsDown() {
  return GetKeyState(VK_CONTROL) < 0;
}

Console& Console::instance() {
  static Console console;
  return console;
}

void Console::open(const std::wstring& title) {
  if (!allocated_) {
    AllocConsole();
    useAsStandardHandle(STD_INPUT_HANDLE, L"CONIN$");
    useAsStandardHandle(STD_OUTPUT_HANDLE, L"CONOUT$");
    useAsStandardHandle(STD_ERROR_HANDLE, L"CONOUT$");
    allocated_ = true;
  }
  SetConsoleTitleW(title.c_str());
  std::freopen("CONIN$", "r", stdin);
  std::freopen("CONOUT$", "w", stdout);
  std::freopen("CONOUT$", "w", stderr);
}

void Console::holdOpen() const {
  writeOutput(L"[press enter to close this window]\n");
  std::getchar();
}

}  // namespace ryn
