#include "vmlaunch/vm_process.h"

#include "platform/errors.h"
#include "platform/output.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "resources/string_table.h"

namespace ryn {
namespace {

STARTUPINFOW startupInfo() {
  STARTUPINFOW info = {};
  GetStartupInfoW(&info);
  // The C runtime of whoever started us hands its files on in these fields. A VM's runtime would believe them
  // rather than the handles below, and miss the console that was opened since.
  info.lpReserved = nullptr;
  info.cbReserved2 = 0;
  info.lpReserved2 = nullptr;
  // A hot key would occupy the field of standard input.
  info.dwFlags &= ~static_cast<DWORD>(STARTF_USEHOTKEY);
  info.dwFlags |= STARTF_USESTDHANDLES;
  info.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
  info.hStdOutput = GetStdHandle(STD_OUTPUT_HANDLE);
  info.hStdError = GetStdHandle(STD_ERROR_HANDLE);
  return info;
}

// A job ends its processes when its last handle is closed. That of this one nobody inherits, so Windows
// closes it when this process ends, whatever ends it. What the VM starts is not in the job: a program may
// leave something running on purpose.
bool endWithThisProcess(HANDLE process) {
  UniqueHandle job(CreateJobObjectW(nullptr, nullptr));
  JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits = {};
  limits.BasicLimitInformation.LimitFlags =
      JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE | JOB_OBJECT_LIMIT_SILENT_BREAKAWAY_OK;
  if (!job ||
      !SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation, &limits, sizeof(limits)) ||
      !AssignProcessToJobObject(job.get(), process)) {
    return false;
  }
  job.release();
  return true;
}

}  // namespace

UniqueHandle startVmProcess(const LaunchRequest& request, std::wstring commandLine, bool wait) {
  STARTUPINFOW info = startupInfo();
  std::wstring folder = normalisePath(request.workingDirectory);
  if (folder.size() >= kPathBufferSize) folder.resize(kPathBufferSize - 1);

  writeError(concat({L"cwd: ", folder, L"\ncmd: ", commandLine, L"\n"}));

  PROCESS_INFORMATION started = {};
  // Nothing may be started by a VM that is not yet in its job.
  const DWORD flags = request.endsWithLauncher ? CREATE_SUSPENDED : 0;
  const BOOL created = CreateProcessW(nullptr, commandLine.data(), nullptr, nullptr, TRUE, flags, nullptr,
                                      folder.empty() ? nullptr : folder.c_str(), &info, &started);
  const DWORD error = GetLastError();
  if (!created) {
    throw TerminalError(replaceFirst(StringTable::get(IDS_VM_START_FAILED), L"%d", decimal(error)));
  }
  const UniqueHandle thread(started.hThread);
  UniqueHandle process(started.hProcess);
  if (request.endsWithLauncher) {
    // Before Windows 8 a process that inherits a job, as from some remote sessions, can be in no other.
    if (!endWithThisProcess(process.get())) {
      writeError(concat({L"job: Windows error ", decimal(GetLastError()), L"\n"}));
    }
    ResumeThread(thread.get());
  }
  if (wait) WaitForSingleObject(process.get(), INFINITE);
  return process;
}

}  // namespace ryn
