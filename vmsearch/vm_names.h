#pragma once

#include <string_view>

#include "vmsearch/vm_candidate.h"

namespace ryn {

/// Names for people and other programs: "JDK", "JRE" or "MSJ"; "environment", "currentVm", ...; "chosen",
/// "noMatchingToken", ... Each is the enumerator without its "k".
///@{
std::wstring_view nameOf(VmKind kind);
std::wstring_view nameOf(VmSource source);
std::wstring_view nameOf(VmOutcome outcome);
///@}

}  // namespace ryn
