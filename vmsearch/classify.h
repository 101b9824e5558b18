#pragma once

#include <string>

#include "vmsearch/vm_candidate.h"
#include "vmsearch/vm_probe.h"

namespace ryn {

/// By the file name, and by the compiler beside the file.
VmKind kindOfExecutable(const std::wstring& path, const VmProbe& probe);

/// The candidate for an executable: kind, vendor, version and folder. Its bitness class is 0 unless under
/// WOW64, where a 64-bit image has class 1. Nothing is an error: what cannot be had leaves the vendor "Sun"
/// and the version unknown.
VmCandidate classifyExecutable(const std::wstring& path, const VmProbe& probe);

/// The same for an executable that somebody named: when it lies in "bin", the VM's folder is the one above.
VmCandidate classifyNamedExecutable(const std::wstring& path, const VmProbe& probe);

/// The version rules alone, for any kind but the Microsoft VM, whose version is fixed.
VmVersion versionOfExecutable(const std::wstring& path, VmKind kind, const VersionResource& resource,
                              const VmProbe& probe);

}  // namespace ryn
