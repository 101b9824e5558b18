#pragma once

#include <string>
#include <vector>

#include "vmsearch/vm_probe.h"

namespace ryn {

struct LaunchFacts;

/// The options that a user keeps in a file of his own.
struct UserOptions {
  /// Full path of the file; empty when the properties name none, or one by a variable that is not set.
  std::wstring path;
  /// The file was not looked at: whoever can write it must not rule a process with more rights than his.
  bool isRefused = false;
  /// What goes to the VM, verbatim, one or more options each.
  std::vector<std::wstring> lines;
};

/// Reads the file that `ryn.user.options` names: UTF-8; blanks around a line, empty lines and those that
/// begin with "#" mean nothing. A missing file holds no options. A service and an elevated process read none.
UserOptions readUserOptions(const LaunchFacts& facts, const VmProbe& probe);

}  // namespace ryn
