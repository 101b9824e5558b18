#pragma once

#include <string>

#include "vmsearch/vm_probe.h"

namespace ryn {

/// A path as a VM can be given it.
struct WritablePath {
  std::wstring text;
  /// The path exists, and neither it nor its short form can be written in the ANSI code page: the VM would
  /// look for another one.
  bool isLost = false;
};

/// `path` (absolute) itself when the ANSI code page can write it, else with short names for what exists of
/// it: all, or the folders above a name that is not there yet or is the wildcard of a class path.
WritablePath writablePath(const std::wstring& path, const VmProbe& probe);

}  // namespace ryn
