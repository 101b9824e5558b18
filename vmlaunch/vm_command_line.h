#pragma once

#include <string>
#include <vector>

#include "vmlaunch/launch_request.h"
#include "vmsearch/vm_candidate.h"
#include "vmsearch/vm_version.h"

namespace ryn {

/// The VM's packed version, seen from its command line.
using JavaVersion = VmVersion;

/// Who asked for an option.
enum class OptionOrigin {
  kLauncher,    ///< nobody: VMs of this version, or this kind of start, need it
  kProperties,  ///< the application's property file
  kUser,        ///< the user's own file
};

/// One or more options as they stand on the command line.
struct VmOption {
  OptionOrigin origin;
  std::wstring text;
};

/// The options between the VM's program and its class path, in their order, in the VM's dialect.
std::vector<VmOption> vmOptions(const VmCandidate& vm, const LaunchRequest& request);

/// The arguments of the main class. Leading arguments come first, with "/" for "\", each between double
/// quotes and followed by a blank. Application arguments get each "\" doubled and double quotes when they
/// hold a blank; a blank stands between two of them. Nothing else is escaped.
std::wstring applicationArgumentText(const LaunchRequest& request);

/// Command lines of the three dialects; `executable` is the full path of the program to run.
///@{
/// `home` is the installation folder, whose old class library joins the class path.
std::wstring classicCommandLine(const LaunchRequest& request, const std::wstring& executable,
                                const std::wstring& home);
/// `version` decides about options that older VMs would refuse.
std::wstring modernCommandLine(const LaunchRequest& request, const std::wstring& executable,
                               JavaVersion version);
std::wstring microsoftCommandLine(const LaunchRequest& request, const std::wstring& executable);
///@}

/// The command line that starts `vm` by its program `executable`, in its dialect.
std::wstring vmCommandLine(const VmCandidate& vm, const LaunchRequest& request,
                           const std::wstring& executable);

}  // namespace ryn
