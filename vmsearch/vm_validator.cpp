#include "vmsearch/vm_validator.h"

#include <algorithm>
#include <cstddef>
#include <optional>
#include <vector>

#include "platform/files.h"
#include "platform/output.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "platform/unique_handle.h"

namespace ryn {
namespace {

constexpr wchar_t kJar[] = L"jvmspecs\\Verify.jar";
constexpr wchar_t kMainClass[] = L"com.vantu.util.jvm.Validator";
constexpr DWORD kPipeSize = 65536;
constexpr DWORD kDrainIntervalMs = 10;
// What is kept of the output; a validator may say more.
constexpr size_t kKeptOutput = 1024;

// The program of `candidate` that waits for Java and has an output; empty when there is none.
std::wstring consoleExecutable(const VmCandidate& candidate) {
  if (candidate.kind == VmKind::kMsj) return {};
  if (candidate.executable.empty()) {
    for (const wchar_t* name : {L"bin\\java.exe", L"jre\\bin\\java.exe"}) {
      std::wstring path = joinPath(candidate.folder, name);
      if (fileExists(path)) return path;
    }
    return {};
  }
  const std::wstring name = lowerCase(fileName(candidate.executable));
  if (name == L"javaw.exe" || name == L"jrew.exe") {
    std::wstring path = joinPath(folderPart(candidate.executable), L"java.exe");
    if (fileExists(path)) return path;
  }
  return candidate.executable;
}

std::wstring commandLine(const std::wstring& executable, const std::wstring& jar, const std::wstring& token) {
  // In quotes, or Java would replace a token with "*" by the files that match it. Backslashes before the
  // closing quote would take it away.
  const size_t last = token.find_last_not_of(L'\\');
  const size_t backslashes = token.size() - (last == std::wstring::npos ? 0 : last + 1);
  return concat({L"\"", executable, L"\" -classpath \"", jar, L"\" ", kMainClass, L" \"", token,
                 std::wstring(backslashes, L'\\'), L"\""});
}

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
    kept.append(buffer, std::min<size_t>(count, kKeptOutput - kept.size()));
    taken += count;
  }
}

// Exit code of the process; nothing when it did not start or did not end in time.
std::optional<DWORD> runProcess(const std::wstring& executable, std::wstring command, DWORD limitMs,
                                std::string& output) {
  const ULONGLONG begin = GetTickCount64();
  UniqueHandle readEnd;
  UniqueHandle writeEnd;
  if (!CreatePipe(readEnd.receive(), writeEnd.receive(), nullptr, kPipeSize)) return std::nullopt;
  const UniqueHandle process = start(executable, std::move(command), writeEnd.get());
  if (!process) return std::nullopt;
  writeEnd.reset();

  // A process whose output nobody takes stops once the pipe is full.
  for (;;) {
    drain(readEnd.get(), output);
    if (WaitForSingleObject(process.get(), kDrainIntervalMs) == WAIT_OBJECT_0) break;
    if (GetTickCount64() - begin >= limitMs) {
      TerminateProcess(process.get(), 1);
      return std::nullopt;
    }
  }
  drain(readEnd.get(), output);
  DWORD exitCode = 0;
  if (!GetExitCodeProcess(process.get(), &exitCode)) return std::nullopt;
  return exitCode;
}

}  // namespace

VmValidator::VmValidator(const std::wstring& applicationFolder, DWORD limitMs)
    : jar_(joinPath(applicationFolder, kJar)), limitMs_(limitMs) {}

bool VmValidator::accepts(const VmCandidate& candidate, const std::wstring& token) {
  const std::wstring executable = consoleExecutable(candidate);
  if (executable.empty() || token.find(L'"') != std::wstring::npos || !fileExists(jar_)) return false;

  const auto [answer, isNew] = answers_.try_emplace(upperCase(executable) + L"\"" + token, false);
  if (!isNew) return answer->second;
  std::string output;
  const std::optional<DWORD> exitCode =
      runProcess(executable, commandLine(executable, jar_, token), limitMs_, output);
  answer->second = exitCode == DWORD{0};

  const std::wstring text = exitCode ? fromUtf8(output) : L"no answer";
  writeError(concat({L"validator: ", token, L", ", executable, L": "}));
  writeError(trim(text));
  writeError(L"\n");
  return answer->second;
}

}  // namespace ryn
