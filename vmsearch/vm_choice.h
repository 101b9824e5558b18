#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "vmsearch/vm_candidate.h"
#include "vmsearch/vm_probe.h"

namespace ryn {

/// Answers a valid-VM list token that is no keyword; nothing for a VM that cannot be asked.
using TokenValidator =
    std::function<std::optional<ValidatorAnswer>(const VmCandidate& candidate, const std::wstring& token)>;

/// Something that keeps a VM from being used.
using VmRefusal = std::function<bool(const VmCandidate& candidate)>;

/// What an application accepts.
struct VmRules {
  /// Tokens separated by blanks; runs of blanks count as one.
  std::wstring validVmList;
  /// The launcher platform number: 1 admits bitness class 1 only, 3 class 0 only, 2 and any other number
  /// both.
  uint64_t platform = 1;
  /// "0" takes the first acceptable VM, any other text the highest.
  std::wstring jvmHigh;
  /// The launcher has a console: a VM is judged by its console program, else by its windowless one.
  bool console = false;
  /// Null: tokens that are no keywords are version ranges, or match nothing. Asked last, because it starts
  /// the VM.
  TokenValidator validator;
  /// The VM's image is not of the bitness that the application asks for. Null: any will do.
  VmRefusal wrongBits;
  /// The VM's folder is not safe. Null: no folder is refused.
  VmRefusal unsafeFolder;

  /// The first acceptable VM is taken, not the highest.
  bool firstWins() const { return jvmHigh == L"0"; }
};

/// The result of a search: the VM, if any, and everything that was seen on the way with what became of it.
struct VmChoice {
  std::optional<VmCandidate> chosen;
  std::vector<ConsideredVm> considered;
};

/// Puts the result of a later search behind `choice`, whose VM stays chosen if it has one.
void append(VmChoice& choice, VmChoice later);

std::vector<std::wstring> validVmTokens(const std::wstring& list);

/// A VM that is taken whatever the valid-VM list and the platform number say.
VmChoice takeVm(ConsideredVm vm, const VmRules& rules);

/// True when one token of the list, in any letter case, takes `candidate` without asking it: a keyword or a
/// version range. Nothing for a token that is neither.
std::optional<bool> matchesToken(const VmCandidate& candidate, const std::wstring& token);

/// Filters `vms` by the rules and chooses among what is left. Only entries with the outcome kNotReached take
/// part; every one of them leaves with the outcome that it met. The platform number does not count for a
/// current VM.
VmChoice chooseAmong(std::vector<ConsideredVm> vms, const VmRules& rules);

/// Strict weak order of the ranking: is `a` less than `b` for an application with this platform number?
bool ranksBelow(const VmCandidate& a, const VmCandidate& b, uint64_t platform);

}  // namespace ryn
