#include "launcher/console.h"

#include <windows.h>

#include "platform/output.h"

namespace ryn {
namespace {

// Windows wants titles of less than 64 KB; nobody sees that much of one.
constexpr size_t kLongestTitle = 4096;

// Readable and writable, as a console's own handles are: who asks for the console's mode, this program or the
// VM that inherits the handle, needs both.
void useConsoleFor(DWORD stream, const wchar_t* device) {
  SECURITY_ATTRIBUTES inheritable = {sizeof(inheritable), nullptr, TRUE};
  const HANDLE console = CreateFileW(device, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                     &inheritable, OPEN_EXISTING, 0, nullptr);
  if (console == INVALID_HANDLE_VALUE) return;
  // A redirected stream is not for the VM: the reader of a pipe would wait for all that the VM leaves
  // running.
  SetHandleInformation(GetStdHandle(stream), HANDLE_FLAG_INHERIT, 0);
  // The process keeps it to its end.
  SetStdHandle(stream, console);
}

// In the launcher's own console both are meant for the VM, whose exit code the launcher waits for. A routine
// and not the flag to ignore them, which the VM would inherit.
BOOL WINAPI leaveToVm(DWORD event) {
  return event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT;
}

}  // namespace

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
    SetConsoleCtrlHandler(leaveToVm, TRUE);
    allocated_ = true;
  }
  SetConsoleTitleW(title.substr(0, kLongestTitle).c_str());
  useConsoleFor(STD_INPUT_HANDLE, L"CONIN$");
  useConsoleFor(STD_OUTPUT_HANDLE, L"CONOUT$");
  useConsoleFor(STD_ERROR_HANDLE, L"CONOUT$");
}

void Console::holdOpen() const {
  writeOutput(L"[press enter to close this window]\n");
  wchar_t character = 0;
  DWORD count = 0;
  do {
    SetLastError(ERROR_SUCCESS);
    // Ctrl+C ends the wait, and is no answer.
  } while (ReadConsoleW(GetStdHandle(STD_INPUT_HANDLE), &character, 1, &count, nullptr) && count == 0 &&
           GetLastError() == ERROR_OPERATION_ABORTED);
}

}  // namespace ryn
