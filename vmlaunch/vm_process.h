#pragma once

#include <string>

#include "platform/unique_handle.h"
#include "vmlaunch/launch_request.h"

namespace ryn {

/// Starts the VM: the only place where that happens. The child gets this process's standard handles,
/// environment and console, and `request.workingDirectory` as its folder (the current one when empty, cut at
/// the classic path buffer). With `request.endsWithLauncher` it ends at the latest with this process, its own
/// children do not; where Windows does not allow that, it is logged, and the VM starts without. Folder and
/// command line are logged to standard error first. With `wait` the call returns after the process has ended.
/// Returns the process's handle; throws TerminalError with the Windows error number when it could not be
/// started.
UniqueHandle startVmProcess(const LaunchRequest& request, std::wstring commandLine, bool wait);

}  // namespace ryn
