#pragma once

#include <string>
#include <vector>

#include "vmsearch/vm_candidate.h"
#include "vmsearch/vm_choice.h"
#include "vmsearch/vm_probe.h"

namespace ryn {

/// The VMs that the registry and `path` (the value of PATH) know, in the order of the sources: the registry
/// first, unless `pathFirst`. Entries that are no candidates carry the outcome that says why.
std::vector<ConsideredVm> findInstalledVms(const std::wstring& path, bool pathFirst, const VmProbe& probe);

/// The ordinary search. `currentVm` (an absolute path, or empty) is tried first: it is taken when it names a
/// file and the valid-VM list is empty or has a token for it. Then come the installed VMs; with `exhaustive`
/// also behind a current VM that was taken.
VmChoice searchInstalledVms(const std::wstring& currentVm, const std::wstring& path, const VmRules& rules,
                            const VmProbe& probe, bool exhaustive);

}  // namespace ryn
