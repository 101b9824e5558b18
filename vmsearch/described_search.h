#pragma once

#include <string>
#include <vector>

#include "text/environment_map.h"
#include "vmsearch/vm_choice.h"
#include "vmsearch/vm_probe.h"

namespace ryn {

/// The search that description files drive. The places that the path hints of `descriptions` (absolute paths)
/// name are looked at, one description after the other; when no VM there is acceptable, the program folders
/// (from `environment`) with two levels of folders below them, and last the roots of the drives, for a user
/// who is no administrator. The first acceptable VM ends the search, unless it is `exhaustive`. Relative
/// hints count from `applicationFolder`. The answer records the VMs of every place that was looked at, each
/// with the description's path and the place.
VmChoice searchByDescriptions(const std::vector<std::wstring>& descriptions,
                              const std::wstring& applicationFolder, const VmRules& rules,
                              const EnvironmentMap& environment, const VmProbe& probe, bool exhaustive);

/// True when a description with these platform hints is for Windows, or does not say what it is for.
bool fitsPlatform(const std::vector<std::wstring>& hints);

}  // namespace ryn
