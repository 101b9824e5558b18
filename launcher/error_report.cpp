#include "launcher/error_report.h"

#include "platform/errors.h"
#include "platform/output.h"
#include "platform/text.h"
#include "resources/string_table.h"

namespace ryn {
namespace {

// A box lays its text out at every length, for minutes if need be.
constexpr size_t kLongestList = 2000;

std::wstring shown(const std::wstring& list) {
  return list.size() > kLongestList ? list.substr(0, kLongestList) + L"..." : list;
}

void writeNoValidVm(const std::wstring& text, const std::wstring& title) {
  // A redirected stream gets the exit code alone.
  writeErrorToConsole(concat({title, L": ", text, L"\n"}));
  writeOutput(concat({L"\nexit code : ", decimal(kExitNoValidVm), L"\n"}));
}

}  // namespace

int reportError(const std::exception& error, const std::wstring& requiredVm, UserPrompt& prompt) {
  const std::wstring title = StringTable::get(IDS_ERROR_TITLE);
  const auto* terminal = dynamic_cast<const TerminalError*>(&error);
  if (terminal == nullptr) {
    prompt.showError(L"an unknown exception has occurrred.\n" + widenBytes(error.what()), title);
    return kExitReportedError;
  }
  if (dynamic_cast<const NoValidVmError*>(terminal) == nullptr) {
    prompt.showError(terminal->message(), title);
    return kExitReportedError;
  }
  const std::wstring text = concat({terminal->message(), L"\n\nRequired Java VM : ", shown(requiredVm)});
  writeNoValidVm(text, title);
  prompt.showError(text, title);
  return kExitNoValidVm;
}

}  // namespace ryn
