#include "vmsearch/vm_choice.h"

#include <algorithm>
#include <iterator>

#include "text/text.h"
#include "vmsearch/version_range.h"

namespace ryn {
namespace {

bool admits(uint64_t platform, int bitnessClass) {
  return bitnessClass == 1 ? platform != 3 : platform != 1;
}

// Nothing for a word that is no keyword.
std::optional<bool> matchesKeyword(const VmCandidate& candidate, const std::wstring& word) {
  const int generation = candidate.version.generation();
  const bool isJdk = candidate.kind == VmKind::kJdk;
  const bool isJre = candidate.kind == VmKind::kJre;
  const bool isMsj = candidate.kind == VmKind::kMsj;
  if (word == L"ALL") return true;
  // J1 leaves the Microsoft VM out, J2 never looks at the kind.
  if (word == L"J1") return generation < 2 && !isMsj;
  if (word == L"J2") return generation >= 2;
  if (word == L"JDK") return isJdk;
  if (word == L"JRE") return isJre;
  if (word == L"JDK_J1") return isJdk && generation <= 1;
  if (word == L"JDK_J2") return isJdk && generation >= 2;
  if (word == L"JRE_J1") return isJre && generation <= 1;
  if (word == L"JRE_J2") return isJre && generation >= 2;
  if (word == L"MSJ") return isMsj;
  return std::nullopt;
}

VmOutcome outcomeOf(ValidatorAnswer refusal) {
  switch (refusal) {
    case ValidatorAnswer::kTimedOut:
      return VmOutcome::kValidatorTimedOut;
    case ValidatorAnswer::kNotStarted:
      return VmOutcome::kValidatorNotStarted;
    default:
      return VmOutcome::kValidatorRejected;
  }
}

bool refuses(const VmRefusal& refusal, const VmCandidate& candidate) {
  return refusal && refusal(candidate);
}

// What does not depend on the list, the cheap questions first; nothing for a VM that may be used.
std::optional<VmOutcome> refusalOf(const ConsideredVm& vm, const VmRules& rules) {
  if (vm.source != VmSource::kCurrentVm && !admits(rules.platform, vm.candidate.bitnessClass)) {
    return VmOutcome::kOtherBitness;
  }
  if (refuses(rules.wrongBits, vm.candidate)) return VmOutcome::kWrongBits;
  if (refuses(rules.unsafeFolder, vm.candidate)) return VmOutcome::kUnsafeFolder;
  return std::nullopt;
}

// Nothing when the token takes the VM. A VM that must not be used is not even started.
std::optional<VmOutcome> refusalByToken(const ConsideredVm& vm, const std::wstring& token,
                                        const VmRules& rules) {
  const bool keyword = matchesKeyword(vm.candidate, upperCase(token)).has_value();
  const std::optional<bool> match =
      keyword || !rules.validator ? matchesToken(vm.candidate, token) : std::optional(true);
  if (!match.value_or(false)) return VmOutcome::kNoMatchingToken;
  if (const auto refusal = refusalOf(vm, rules)) return refusal;
  if (keyword || !rules.validator) return std::nullopt;
  const std::optional<ValidatorAnswer> answer = rules.validator(vm.candidate, token);
  if (answer == ValidatorAnswer::kAccepted) return std::nullopt;
  return answer ? outcomeOf(*answer) : VmOutcome::kNoMatchingToken;
}

// Indexes of the accepted entries, first by the order of the tokens, then by that of the sources.
std::vector<size_t> filter(std::vector<ConsideredVm>& vms, const VmRules& rules) {
  std::vector<size_t> open;
  for (size_t i = 0; i < vms.size(); ++i) {
    if (vms[i].outcome != VmOutcome::kNotReached) continue;
    vms[i].outcome = VmOutcome::kNoMatchingToken;
    open.push_back(i);
  }
  std::vector<size_t> accepted;
  for (const std::wstring& token : validVmTokens(rules.validVmList)) {
    std::erase_if(open, [&](size_t i) {
      if (const std::optional<VmOutcome> refusal = refusalByToken(vms[i], token, rules)) {
        if (*refusal != VmOutcome::kNoMatchingToken) vms[i].outcome = *refusal;
        return false;
      }
      vms[i].outcome = rules.firstWins() ? VmOutcome::kNotFirst : VmOutcome::kOutranked;
      accepted.push_back(i);
      return true;
    });
  }
  return accepted;
}

}  // namespace

std::vector<std::wstring> validVmTokens(const std::wstring& list) {
  std::vector<std::wstring> tokens = split(list, L' ');
  std::erase(tokens, std::wstring());
  return tokens;
}

std::optional<bool> matchesToken(const VmCandidate& candidate, const std::wstring& token) {
  if (const std::optional<bool> answer = matchesKeyword(candidate, upperCase(token))) return answer;
  if (const std::optional<VersionRange> range = parseVersionRange(token)) return fitsRange(candidate, *range);
  return std::nullopt;
}

VmChoice takeVm(ConsideredVm vm, const VmRules& rules) {
  vm.outcome = refuses(rules.wrongBits, vm.candidate) ? VmOutcome::kWrongBits : VmOutcome::kChosen;
  VmChoice choice;
  if (vm.outcome == VmOutcome::kChosen) choice.chosen = vm.candidate;
  choice.considered.push_back(std::move(vm));
  return choice;
}

bool ranksBelow(const VmCandidate& a, const VmCandidate& b, uint64_t platform) {
  if (a.bitnessClass == b.bitnessClass) return a.version < b.version;
  const bool singleArchitecture = platform == 1 || platform == 3;
  return b.bitnessClass == (singleArchitecture ? 0 : 1);
}

VmChoice chooseAmong(std::vector<ConsideredVm> vms, const VmRules& rules) {
  VmChoice choice;
  const std::vector<size_t> accepted = filter(vms, rules);
  if (!accepted.empty()) {
    // Of equals the earliest stays, so that the order of the sources decides.
    const size_t best = rules.firstWins()
                            ? accepted.front()
                            : *std::max_element(accepted.begin(), accepted.end(), [&](size_t a, size_t b) {
                                return ranksBelow(vms[a].candidate, vms[b].candidate, rules.platform);
                              });
    vms[best].outcome = VmOutcome::kChosen;
    choice.chosen = vms[best].candidate;
  }
  choice.considered = std::move(vms);
  return choice;
}

void append(VmChoice& choice, VmChoice later) {
  for (ConsideredVm& vm : later.considered) {
    const bool acceptable = vm.outcome == VmOutcome::kChosen || vm.outcome == VmOutcome::kOutranked ||
                            vm.outcome == VmOutcome::kNotFirst;
    if (choice.chosen && acceptable) vm.outcome = VmOutcome::kNotReached;
  }
  std::move(later.considered.begin(), later.considered.end(), std::back_inserter(choice.considered));
  if (!choice.chosen) choice.chosen = std::move(later.chosen);
}

}  // namespace ryn
