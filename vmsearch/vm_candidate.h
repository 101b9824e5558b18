#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "vmsearch/vm_version.h"

namespace ryn {

/// The values and names are those of the valid-VM list.
enum class VmKind {
  kJdk = 0,  ///< a compiler lies beside the VM's executable
  kJre = 1,  ///< no compiler, or one of the old runtime launchers
  kMsj = 2,  ///< the Microsoft VM
};

/// "JDK", "JRE" or "MSJ".
std::wstring_view kindName(VmKind kind);

/// Which command-line dialect a VM speaks.
enum class VmDialect { kClassic, kModern, kMicrosoft };

/// A VM that was found.
struct VmCandidate {
  /// What was classified; empty for a VM that is known by its folder only.
  std::wstring executable;
  /// The installation folder of a registered VM, the folder of the executable of any other.
  std::wstring folder;
  VmVersion version;
  /// "Microsoft", "IBM" or "Sun": a literal.
  std::wstring_view vendor;
  VmKind kind = VmKind::kJre;
  /// 0 or 1; what the launcher's platform number admits or not.
  int bitnessClass = 0;
};

VmDialect dialectOf(const VmCandidate& candidate);

/// The source that named a VM.
enum class VmSource { kEnvironment, kCurrentVm, kRegistry, kPath, kDescription, kShipped, kPack };

/// What became of a VM that was seen. All but kChosen name the rule that dropped it.
enum class VmOutcome {
  kNotReached,  ///< the choice was made, or abandoned, before its turn came
  kChosen,
  kUnreadableKey,    ///< its registry key lacks a value that is needed
  kNoUsableHome,     ///< its registry key names no existing folder
  kDuplicate,        ///< an earlier find has the same folder and executable
  kNoMatchingToken,  ///< the valid-VM list has no token for it
  kOtherBitness,     ///< matched, but the platform number does not admit its bitness class
  kUnsafeFolder,     ///< refused by the folder security check
  kNotFirst,         ///< acceptable, but first in the list wins and another was
  kOutranked,        ///< acceptable, but another has a higher rank
};

/// One line of the record that a search keeps.
struct ConsideredVm {
  VmCandidate candidate;
  VmSource source = VmSource::kRegistry;
  /// The registry key, folder or description that it came from.
  std::wstring where;
  VmOutcome outcome = VmOutcome::kNotReached;
};

}  // namespace ryn
