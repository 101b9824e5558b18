#include "vmsearch/vm_validator.h"

#include "platform/child_process.h"
#include "platform/files.h"
#include "platform/output.h"
#include "platform/paths.h"
#include "platform/text.h"

namespace ryn {
namespace {

constexpr wchar_t kJar[] = L"jvmspecs\\Verify.jar";
constexpr wchar_t kMainClass[] = L"com.vantu.util.jvm.Validator";

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

}  // namespace

VmValidator::VmValidator(const std::wstring& applicationFolder, DWORD limitMs)
    : jar_(joinPath(applicationFolder, kJar)), limitMs_(limitMs) {}

bool VmValidator::accepts(const VmCandidate& candidate, const std::wstring& token) {
  const std::wstring executable = consoleExecutable(candidate);
  if (executable.empty() || token.find(L'"') != std::wstring::npos || !fileExists(jar_)) return false;

  const auto [answer, isNew] = answers_.try_emplace(upperCase(executable) + L"\"" + token, false);
  if (!isNew) return answer->second;
  const ChildResult child = runChild(executable, commandLine(executable, jar_, token), limitMs_);
  const bool ended = child.end == ChildEnd::kEnded;
  answer->second = ended && child.exitCode == 0;

  const std::wstring text = ended ? fromUtf8(child.output) : L"no answer";
  writeError(concat({L"validator: ", token, L", ", executable, L": "}));
  writeError(trim(text));
  writeError(L"\n");
  return answer->second;
}

}  // namespace ryn
