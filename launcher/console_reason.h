#pragma once

#include <string>

namespace ryn {

/// Why a console is opened, if it is.
enum class ConsoleReason { kNone, kControlKey, kCommandLine, kProperties };

/// First match wins: the Ctrl key, the command line, a redirect to "console" in any letter case.
ConsoleReason decideConsole(bool controlKeyDown, bool commandLineFlag, const std::wstring& stdoutRedirect,
                            const std::wstring& stderrRedirect);

}  // namespace ryn
