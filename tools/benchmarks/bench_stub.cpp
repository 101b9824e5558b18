// The least that a launcher can do: start the program of its command line and wait for it. With BENCH_FAIR it
// also does what no launcher with this one's tasks can leave out: it loads the library of windows, asks for
// the Ctrl key, and hands its standard handles on in the start-up record.
#include <windows.h>

int WINAPI wWinMain(HINSTANCE, HINSTANCE, PWSTR commandLine, int) {
  STARTUPINFOW info = {};
  GetStartupInfoW(&info);
  info.lpReserved = nullptr;
  info.cbReserved2 = 0;
  info.lpReserved2 = nullptr;
#ifdef BENCH_FAIR
  if (GetKeyState(VK_CONTROL) < 0) return 1;
  info.dwFlags &= ~static_cast<DWORD>(STARTF_USEHOTKEY);
  info.dwFlags |= STARTF_USESTDHANDLES;
  info.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
  info.hStdOutput = GetStdHandle(STD_OUTPUT_HANDLE);
  info.hStdError = GetStdHandle(STD_ERROR_HANDLE);
#endif
  PROCESS_INFORMATION started = {};
  if (!CreateProcessW(nullptr, commandLine, nullptr, nullptr, TRUE, 0, nullptr, nullptr, &info, &started))
    return 1;
  WaitForSingleObject(started.hProcess, INFINITE);
  DWORD exitCode = 0;
  GetExitCodeProcess(started.hProcess, &exitCode);
  return static_cast<int>(exitCode);
}
