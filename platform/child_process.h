#pragma once

#include <windows.h>

#include <string>

namespace ryn {

enum class ChildEnd {
  /// Windows could not start it.
  kNotStarted,
  /// It was ended by us because its time was over.
  kTimedOut,
  kEnded,
};

struct ChildResult {
  ChildEnd end = ChildEnd::kNotStarted;
  /// Counts only when it ended by itself.
  DWORD exitCode = 0;
  /// The first kKeptChildOutput bytes of what it wrote to its standard output and error; what it wrote until
  /// then when its time was over.
  std::string output;
};

/// A child may say more.
inline constexpr size_t kKeptChildOutput = 1024;

/// Runs a program without a window and waits for its end, at most `limitMs` from the call. It has no standard
/// input and inherits no handle but that of its output. Children of its own are neither waited for nor ended.
[[nodiscard]] ChildResult runChild(const std::wstring& executable, std::wstring commandLine, DWORD limitMs);

}  // namespace ryn
