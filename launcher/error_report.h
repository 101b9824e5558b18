#pragma once

#include <exception>
#include <string>

#include "platform/user_prompt.h"

namespace ryn {

/// Exit codes other than the VM's own.
inline constexpr int kExitReportedError = 0;
inline constexpr int kExitNoValidVm = 106;

/// Shows an error that ends the launch and returns the exit code of the process. Only NoValidVmError has a
/// code of its own; its box names the acceptable VMs, `requiredVm`, and its text goes to the console as well.
int reportError(const std::exception& error, const std::wstring& requiredVm, UserPrompt& prompt);

}  // namespace ryn
