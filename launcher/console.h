#pragma once

#include <string>

namespace ryn {

/// Why a console is opened, if it is.
enum class ConsoleReason { kNone, kControlKey, kCommandLine, kProperties };

/// First match wins: the Ctrl key, the command line, a redirect to "console" in any letter case.
ConsoleReason decideConsole(bool controlKeyDown, bool commandLineFlag, const std::wstring& stdoutRedirect,
                            const std::wstring& stderrRedirect);

/// The Ctrl key is held down at this moment.
bool controlKeyIsDown();

/// The console of the process, opened at most once and kept to the end.
class Console {
 public:
  static Console& instance();

  /// True once `open` has been called.
  bool isAllocated() const { return allocated_; }

  /// Opens the console window and makes it the process's standard handles, which a child started later
  /// inherits. From then on Ctrl+C and Ctrl+Break there are left to that child. Failures are not reported:
  /// the launch goes on without visible output.
  void open(const std::wstring& title);

  /// Writes the prompt and waits for Enter in the console.
  void holdOpen() const;

 private:
  bool allocated_ = false;
};

}  // namespace ryn
