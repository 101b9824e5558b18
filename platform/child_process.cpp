#include "platform/child_process.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "platform/unique_handle.h"

namespace ryn {
namespace {

constexpr DWORD kPipeSize = 65536;
constexpr DWORD kDrainIntervalMs = 10;

// The list of attributes by which a process inherits `handle` and nothing else.
class InheritOnly {
 public:
  explicit InheritOnly(HANDLE handle) : handle_(handle) {
    SIZE_T size = 0;
    InitializeProcThreadAttributeList(nullptr, 1, 0, &size);
    memory_.resize(size);
    auto* list = reinterpret_cast<LPPROC_THREAD_ATTRIBUTE_LIST>(memory_.data());
    if (!InitializeProcThreadAttributeList(list, 1, 0, &size)) return;
    list_ = list;
    complete_ = UpdateProcThreadAttribute(list, 0, PROC_THREAD_ATTRIBUTE_HANDLE_LIST, &handle_,
                                          sizeof(handle_), nullptr, nullptr);
  }
  InheritOnly(const InheritOnly&) = delete;
  InheritOnly& operator=(const InheritOnly&) = delete;
  ~InheritOnly() {
    if (list_ != nullptr) DeleteProcThreadAttributeList(list_);
  }

  // Null when the system refused it.
  LPPROC_THREAD_ATTRIBUTE_LIST get() const { return complete_ ? list_ : nullptr; }

 private:
  HANDLE handle_;
  std::vector<std::byte> memory_;
  LPPROC_THREAD_ATTRIBUTE_LIST list_ = nullptr;
  bool complete_ = false;
};

// A process without a window whose standard output is `output`; null when it cannot be started.
UniqueHandle start(const std::wstring& executable, std::wstring command, HANDLE output) {
  SetHandleInformation(output, HANDLE_FLAG_INHERIT, HANDLE_FLAG_INHERIT);
  const InheritOnly attributes(output);
  if (attributes.get() == nullptr) return UniqueHandle();
  STARTUPINFOEXW info = {};
  info.StartupInfo.cb = sizeof(info);
  info.StartupInfo.dwFlags = STARTF_USESTDHANDLES;
  info.StartupInfo.hStdOutput = output;
  info.StartupInfo.hStdError = output;
  info.lpAttributeList = attributes.get();
  PROCESS_INFORMATION started = {};
  if (!CreateProcessW(executable.c_str(), command.data(), nullptr, nullptr, TRUE,
                      CREATE_NO_WINDOW | EXTENDED_STARTUPINFO_PRESENT, nullptr, nullptr, &info.StartupInfo,
                      &started)) {
    return UniqueHandle();
  }
  const UniqueHandle thread(started.hThread);
  return UniqueHandle(started.hProcess);
}

// Takes what the pipe holds now, about its size at most. It never waits: a child of the process could keep
// the pipe open for ever.
void drain(HANDLE pipe, std::string& kept) {
  char buffer[4096];
  DWORD available = 0;
  for (DWORD taken = 0; taken < kPipeSize;) {
    if (!PeekNamedPipe(pipe, nullptr, 0, nullptr, &available, nullptr) || available == 0) return;
    DWORD count = 0;
    if (!ReadFile(pipe, buffer, sizeof(buffer), &count, nullptr)) return;
    kept.append(buffer, std::min<size_t>(count, kKeptChildOutput - kept.size()));
    taken += count;
  }
}

}  // namespace

ChildResult runChild(const std::wstring& executable, std::wstring commandLine, DWORD limitMs) {
  ChildResult result;
  const ULONGLONG begin = GetTickCount64();
  UniqueHandle readEnd;
  UniqueHandle writeEnd;
  if (!CreatePipe(readEnd.receive(), writeEnd.receive(), nullptr, kPipeSize)) return result;
  const UniqueHandle process = start(executable, std::move(commandLine), writeEnd.get());
  if (!process) return result;
  writeEnd.reset();

  // A process whose output nobody takes stops once the pipe is full.
  for (;;) {
    drain(readEnd.get(), result.output);
    if (WaitForSingleObject(process.get(), kDrainIntervalMs) == WAIT_OBJECT_0) break;
    if (GetTickCount64() - begin >= limitMs) {
      TerminateProcess(process.get(), 1);
      result.end = ChildEnd::kTimedOut;
      return result;
    }
  }
  drain(readEnd.get(), result.output);
  // Cannot fail for a process that we started.
  GetExitCodeProcess(process.get(), &result.exitCode);
  result.end = ChildEnd::kEnded;
  return result;
}

}  // namespace ryn
