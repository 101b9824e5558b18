#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "vmsearch/installed_vms.h"
#include "vmsearch/vm_candidate.h"

namespace ryn {

/// Answers a valid-VM list token that is no keyword; true accepts the candidate.
using TokenValidator = std::function<bool(const VmCandidate& candidate, const std::wstring& token)>;

/// True when the VM must not be used because of its folder.
using FolderRefusal = std::function<bool(const VmCandidate& candidate)>;

/// What an application accepts, from its properties.
struct VmRules {
  /// Tokens separated by blanks; runs of blanks count as one.
  std::wstring validVmList;
  /// 1 admits bitness class 1 only, 3 class 0 only, 2 and any other number both.
  uint64_t preference = 1;
  /// "0" takes the first acceptable VM, any other text the highest.
  std::wstring jvmHigh;
  /// Null: tokens that are no keywords match nothing. Not asked about VMs whose folder is refused.
  TokenValidator validator;
  /// Null: no folder is refused.
  FolderRefusal folderRefusal;
};

/// The result of a search: the VM, if any, and everything that was seen on the way with what became of it.
struct VmChoice {
  std::optional<VmCandidate> chosen;
  std::vector<ConsideredVm> considered;
};

std::vector<std::wstring> validVmTokens(const std::wstring& list);

/// One token of the list, in any letter case, against one candidate. Of the rules only the validator and the
/// folder refusal count here.
bool matchesToken(const VmCandidate& candidate, const std::wstring& token, const VmRules& rules);

/// Filters `vms` by the rules and chooses among what is left. Only entries with the outcome kNotReached take
/// part; every one of them leaves with the outcome that it met.
VmChoice chooseAmong(std::vector<ConsideredVm> vms, const VmRules& rules, bool singleArchitecture);

/// True when only one architecture is wanted.
constexpr bool wantsSingleArchitecture(uint64_t preference) {
  return preference == 1 || preference == 3;
}

/// Strict weak order of the ranking: is `a` less than `b`?
bool ranksBelow(const VmCandidate& a, const VmCandidate& b, bool singleArchitecture);

/// The ordinary search. `currentVm` (an absolute path, or empty) is tried first: it is taken when it names a
/// file and the list is empty or has a token for it. Then come the installed VMs.
VmChoice chooseVm(const std::wstring& currentVm, const VmRules& rules, InstalledVms& installed,
                  const VmProbe& probe);

}  // namespace ryn
