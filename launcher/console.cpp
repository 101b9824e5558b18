#include "launcher/console.h"

#include <io.h>
#include <windows.h>

#include <cstdio>

#include "platform/output.h"
#include "platform/text.h"

namespace ryn {
namespace {

void reopen(std::FILE* stream, const char* device, const char* mode) {
  if (_fileno(stream) >= 0) {
    std::freopen(device, mode, stream);
    return;
  }
  // Started without standard handles, the process has streams that not every C runtime reopens. That of this
  // program lets them be replaced.
  std::FILE* opened = std::fopen(device, mode);
  if (opened != nullptr) *stream = *opened;  // NOLINT(misc-non-copyable-objects)
}

// The VM inherits these handles; those that AllocConsole leaves alone, because the process was started with
// redirected ones, would send its output past the console that was asked for. Readable and writable, as a
// console's own handles are: a VM that asks for the console's mode needs both.
void useAsStandardHandle(DWORD which, const wchar_t* device) {
  SECURITY_ATTRIBUTES inheritable = {sizeof(inheritable), nullptr, TRUE};
  HANDLE handle = CreateFileW(device, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
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
    allocated_ = true;
  }
  SetConsoleTitleW(title.c_str());
  reopen(stdin, "CONIN$", "r");
  reopen(stdout, "CONOUT$", "w");
  reopen(stderr, "CONOUT$", "w");
  // Last: reopening a stream closes the standard handle behind it.
  useAsStandardHandle(STD_INPUT_HANDLE, L"CONIN$");
  useAsStandardHandle(STD_OUTPUT_HANDLE, L"CONOUT$");
  useAsStandardHandle(STD_ERROR_HANDLE, L"CONOUT$");
}

void Console::holdOpen() const {
  writeOutput(L"[press enter to close this window]\n");
  std::getchar();
}

}  // namespace ryn
