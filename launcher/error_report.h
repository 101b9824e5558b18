#pragma once

#include <exception>
#include <string>

#include "platform/user_prompt.h"

namespace ryn {

/// Exit codes other than the VM's own.
inline constexpr int kExitReportedError = 0;
inline constexpr int kExitNoValidVm = 106;

/// Shows an error that ends the launch and returns the exit code of the process. Only the case of no usable
/// VM, which is told by its text, has a code of its own; it names the acceptable VMs, `requiredVm`, and is
/// written to the console as well.
int reportError(const std::exception& error, const std::wstring& requiredVm, UserPrompt& prompt);

}  // namespace ryn
