#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "vmsearch/vm_version.h"

namespace ryn {

/// The values are those of the valid-VM list.
enum class VmKind {
  kJdk = 0,  ///< a compiler lies beside the VM's executable
  kJre = 1,  ///< no compiler, or one of the old runtime launchers
  kMsj = 2,  ///< the Microsoft VM
};

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

/// What named a VM.
enum class VmSource { kEnvironment, kCurrentVm, kRegistry, kPath, kDescription, kShipped, kPack };

/// What became of a VM that was seen, or of the place that should have had one. All but kChosen tell why it
/// is not the one.
enum class VmOutcome {
  kNotReached,  ///< the choice was made, or abandoned, before its turn came
  kChosen,
  kMissing,              ///< the place that names it has no such file
  kHalfUnpacked,         ///< a pack was begun to be unpacked there, and never ended
  kUnreadableKey,        ///< its registry key lacks a value that is needed
  kNoUsableHome,         ///< its registry key names no folder with the program that would be started
  kDuplicate,            ///< an earlier find is the same VM
  kNoMatchingToken,      ///< the valid-VM list has no token for it
  kValidatorRejected,    ///< the application's validator refused it
  kValidatorTimedOut,    ///< the validator did not end in time
  kValidatorNotStarted,  ///< the validator could not be started with it
  kOtherBitness,         ///< matched, but the platform number does not admit its bitness class
  kWrongBits,            ///< matched, but its image is not of the bitness that the application asks for
  kUnsafeFolder,         ///< refused by the folder security check
  kNotFirst,             ///< acceptable, but first in the list wins and another was
  kOutranked,            ///< acceptable, but another has a higher rank
  kNoDescription,        ///< the description file is missing or says nothing
  kOtherSystem,          ///< the description is for another system
  kNotFetched,           ///< the VM pack could not be had, or was not to be fetched
};

/// One line of the record that a search keeps.
struct ConsideredVm {
  VmCandidate candidate;
  VmSource source = VmSource::kRegistry;
  /// What led there: the registry key, folder, description, variable's value or URL.
  std::wstring where;
  VmOutcome outcome = VmOutcome::kNotReached;
};

/// The line for a place that has no VM to show.
ConsideredVm emptyPlace(VmSource source, std::wstring where, VmOutcome outcome);

}  // namespace ryn
