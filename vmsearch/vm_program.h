#pragma once

#include <string>

#include "vmsearch/vm_candidate.h"
#include "vmsearch/vm_probe.h"

namespace ryn {

/// The program that `candidate` is started with, by the rules of its kind: the one for a console or the
/// windowless one. The last resort of each kind is given without a look at the disk, so it may not exist.
std::wstring vmProgram(const VmCandidate& candidate, bool console, const VmProbe& probe);

}  // namespace ryn
