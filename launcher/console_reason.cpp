#include "launcher/console_reason.h"

#include "text/text.h"

namespace ryn {

ConsoleReason decideConsole(bool controlKeyDown, bool commandLineFlag, const std::wstring& stdoutRedirect,
                            const std::wstring& stderrRedirect) {
  if (controlKeyDown) return ConsoleReason::kControlKey;
  if (commandLineFlag) return ConsoleReason::kCommandLine;
  if (lowerCase(stderrRedirect) == L"console" || lowerCase(stdoutRedirect) == L"console") {
    return ConsoleReason::kProperties;
  }
  return ConsoleReason::kNone;
}

}  // namespace ryn
