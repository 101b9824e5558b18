// The least that a launcher can do: start the program of its command line and wait for it.
#include <windows.h>

int WINAPI wWinMain(HINSTANCE, HINSTANCE, PWSTR commandLine, int) {
  STARTUPINFOW info = {};
  GetStartupInfoW(&info);
  info.lpReserved = nullptr;
  info.cbReserved2 = 0;
  info.lpReserved2 = nullptr;
  PROCESS_INFORMATION started = {};
  if (!CreateProcessW(nullptr, commandLine, nullptr, nullptr, TRUE, 0, nullptr, nullptr, &info, &started))
    return 1;
  WaitForSingleObject(started.hProcess, INFINITE);
  DWORD exitCode = 0;
  GetExitCodeProcess(started.hProcess, &exitCode);
  return static_cast<int>(exitCode);
}
