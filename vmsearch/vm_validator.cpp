#include "vmsearch/vm_validator.h"

#include "platform/child_process.h"
#include "platform/files.h"
#include "platform/output.h"
#include "platform/paths.h"
#include "platform/text.h"

namespace ryn {
namespace {

constexpr wchar_t kMainClass[] = L"com.vantu.util.jvm.Validator";

std::wstring commandLine(const std::wstring& executable, const std::wstring& jar, const std::wstring& token) {
  // In quotes, or Java would replace a token with "*" by the files that match it. Backslashes before the
  // closing quote would take it away.
  const size_t last = token.find_last_not_of(L'\\');
  const size_t backslashes = token.size() - (last == std::wstring::npos ? 0 : last + 1);
  return concat({L"\"", executable, L"\" -classpath \"", jar, L"\" ", kMainClass, L" \"", token,
                 std::wstring(backslashes, L'\\'), L"\""});
}

}  // namespace

ValidatorAnswer VmValidator::ask(const std::wstring& executable, const std::wstring& jar,
                                 const std::wstring& token) {
  const auto [known, isNew] =
      answers_.try_emplace(concat({foldCase(executable), L"\"", token}), ValidatorAnswer::kRejected);
  ValidatorAnswer& answer = known->second;
  if (!isNew) return answer;
  const ChildResult child = runChild(executable, commandLine(executable, jar, token), limitMs_);
  const bool ended = child.end == ChildEnd::kEnded;
  if (child.end == ChildEnd::kNotStarted) answer = ValidatorAnswer::kNotStarted;
  if (child.end == ChildEnd::kTimedOut) answer = ValidatorAnswer::kTimedOut;
  if (ended && child.exitCode == 0) answer = ValidatorAnswer::kAccepted;

  const std::wstring text = ended ? fromUtf8(child.output) : L"no answer";
  writeError(concat({L"validator: ", token, L", ", executable, L": "}));
  writeError(trim(text));
  writeError(L"\n");
  return answer;
}

}  // namespace ryn
