#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/environment.h"
#include "properties/property_file.h"
#include "vmsearch/folder_walk.h"
#include "vmsearch/vm_choice.h"
#include "vmsearch/vm_probe.h"

namespace ryn {

/// The search that the descriptions drive. Those named by `jvmspecs` with the indexes 0 to `count` - 1 are
/// taken in order, and the first one through which an acceptable VM is found ends the search. For each, the
/// places that its path hints name are looked at; when no VM there is acceptable, so are the program folders
/// (from `environment`) and the roots of the drives with two levels of folders below them. Relative paths
/// count from the current folder. The answer records the VMs of every place that was looked at, each with the
/// description's path and the place.
VmChoice searchByDescriptions(const PropertyFile& jvmspecs, int count, const VmRules& rules,
                              const VmProbe& probe, const EnvironmentMap& environment,
                              const DriveList& drives = FixedDrives());

/// True when a description with these platform hints is for Windows, or does not say what it is for.
bool fitsPlatform(const std::vector<std::wstring>& hints);

/// `text` with each "%NAME%" replaced by that variable, names compared ignoring case; nothing when one of
/// them is unset or empty, because what is left would name some other place.
std::optional<std::wstring> expandVariables(std::wstring_view text, const EnvironmentMap& environment);

}  // namespace ryn
