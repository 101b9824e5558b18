// Times command lines against each other: bench_launch ROUNDS EXIT_CODE COMMAND... Each round runs every
// command once, so that whatever else the machine does falls on all of them alike. Prints each round's
// milliseconds, a line a round. A command that ends with another code has failed, and a failure is not worth
// timing.
#include <windows.h>

#include <cstdio>
#include <string>

namespace {

double run(std::wstring command, DWORD expectedCode) {
  LARGE_INTEGER frequency, before, after;
  QueryPerformanceFrequency(&frequency);
  STARTUPINFOW info = {};
  info.cb = sizeof(info);
  PROCESS_INFORMATION started = {};
  QueryPerformanceCounter(&before);
  if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &info,
                      &started)) {
    std::fprintf(stderr, "not started: error %lu\n", GetLastError());
    return -1;
  }
  const DWORD waited = WaitForSingleObject(started.hProcess, 60000);
  QueryPerformanceCounter(&after);
  DWORD exitCode = 0;
  GetExitCodeProcess(started.hProcess, &exitCode);
  CloseHandle(started.hProcess);
  CloseHandle(started.hThread);
  if (waited != WAIT_OBJECT_0 || exitCode != expectedCode) {
    std::fprintf(stderr, "wait %lu, exit code %lu\n", waited, exitCode);
    return -1;
  }
  return 1000.0 * static_cast<double>(after.QuadPart - before.QuadPart) /
         static_cast<double>(frequency.QuadPart);
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
  if (count < 4) return 2;
  const int rounds = _wtoi(arguments[1]);
  const auto expectedCode = static_cast<DWORD>(_wtoi(arguments[2]));
  for (int round = 0; round < rounds; ++round) {
    for (int i = 3; i < count; ++i) {
      const double ms = run(arguments[i], expectedCode);
      if (ms < 0) {
        std::fprintf(stderr, "failed: %ls\n", arguments[i]);
        return 1;
      }
      std::printf("%s%.3f", i == 3 ? "" : " ", ms);
    }
    std::printf("\n");
    std::fflush(stdout);
  }
  return 0;
}
