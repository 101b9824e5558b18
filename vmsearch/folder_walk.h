#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "vmsearch/vm_probe.h"

namespace ryn {

/// The folders of `starts` and `levels` levels below them, at most `limit`. Level by level, so that the limit
/// takes the deepest folders away and not the last start. Links are not followed; a start that lies within
/// another is not walked twice.
std::vector<std::wstring> walkFolders(const std::vector<std::wstring>& starts, int levels, size_t limit,
                                      const VmProbe& probe);

/// The paths, at most `limit`, that `pattern` names. A part with "*" in it stands for the folders that match,
/// links included; what has none need not exist.
std::vector<std::wstring> expandWildcards(const std::wstring& pattern, size_t limit, const VmProbe& probe);

}  // namespace ryn
