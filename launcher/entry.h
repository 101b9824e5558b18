#pragma once

#include <windows.h>

namespace ryn {

/// Exit codes other than the VM's own.
inline constexpr int kExitReportedError = 0;
inline constexpr int kExitNoValidVm = 106;

/// The whole run of the program: one launch, or one service. Catches and shows every error that ends a
/// launch; returns the exit code of the process.
int runEntry(HINSTANCE instance);

}  // namespace ryn
