#include "vmsearch/vm_choice.h"

#include <algorithm>

#include "platform/files.h"
#include "platform/text.h"
#include "platform/wow64.h"
#include "vmsearch/classify.h"

namespace ryn {
namespace {

bool admits(uint64_t preference, int bitnessClass) {
  return bitnessClass == 1 ? preference != 3 : preference != 1;
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

bool isRefused(const VmCandidate& candidate, const VmRules& rules) {
  return rules.folderRefusal && rules.folderRefusal(candidate);
}

// What to record of a candidate that no token took: its folder, if that kept the validator from being asked.
VmOutcome outcomeOfUnmatched(const VmCandidate& candidate, const VmRules& rules,
                             const std::vector<std::wstring>& tokens) {
  const bool validatorWanted = std::any_of(tokens.begin(), tokens.end(), [&](const std::wstring& token) {
    return !matchesKeyword(candidate, upperCase(token));
  });
  return validatorWanted && isRefused(candidate, rules) ? VmOutcome::kUnsafeFolder
                                                        : VmOutcome::kNoMatchingToken;
}

// Indexes of the accepted entries, first by the order of the tokens, then by that of the sources.
std::vector<size_t> filter(std::vector<ConsideredVm>& vms, const VmRules& rules) {
  std::vector<size_t> accepted;
  const std::vector<std::wstring> tokens = validVmTokens(rules.validVmList);
  for (const std::wstring& token : tokens) {
    for (size_t i = 0; i < vms.size(); ++i) {
      if (vms[i].outcome != VmOutcome::kNotReached) continue;
      if (!matchesToken(vms[i].candidate, token, rules)) continue;
      vms[i].outcome = VmOutcome::kOtherBitness;
      if (!admits(rules.preference, vms[i].candidate.bitnessClass)) continue;
      // Until the choice is made.
      vms[i].outcome = VmOutcome::kOutranked;
      accepted.push_back(i);
    }
  }
  for (ConsideredVm& vm : vms) {
    if (vm.outcome == VmOutcome::kNotReached) vm.outcome = outcomeOfUnmatched(vm.candidate, rules, tokens);
  }
  std::erase_if(accepted, [&](size_t i) {
    if (!isRefused(vms[i].candidate, rules)) return false;
    vms[i].outcome = VmOutcome::kUnsafeFolder;
    return true;
  });
  return accepted;
}

}  // namespace

std::vector<std::wstring> validVmTokens(const std::wstring& list) {
  std::vector<std::wstring> tokens = split(list, L' ');
  std::erase(tokens, std::wstring());
  return tokens;
}

bool matchesToken(const VmCandidate& candidate, const std::wstring& token, const VmRules& rules) {
  if (const std::optional<bool> answer = matchesKeyword(candidate, upperCase(token))) return *answer;
  // A validator runs the candidate, and what lies in a refused folder must not run at all.
  return rules.validator && !isRefused(candidate, rules) && rules.validator(candidate, token);
}

bool ranksBelow(const VmCandidate& a, const VmCandidate& b, bool singleArchitecture) {
  if (a.bitnessClass == b.bitnessClass) return a.version < b.version;
  return b.bitnessClass == (singleArchitecture ? 0 : 1);
}

VmChoice chooseAmong(std::vector<ConsideredVm> vms, const VmRules& rules, bool singleArchitecture) {
  VmChoice choice;
  const std::vector<size_t> accepted = filter(vms, rules);
  if (!accepted.empty()) {
    const bool firstWins = rules.jvmHigh == L"0";
    // Of equals the earliest stays, so that the order of the sources decides.
    const size_t best = firstWins
                            ? accepted.front()
                            : *std::max_element(accepted.begin(), accepted.end(), [&](size_t a, size_t b) {
                                return ranksBelow(vms[a].candidate, vms[b].candidate, singleArchitecture);
                              });
    if (firstWins) {
      for (const size_t i : accepted) vms[i].outcome = VmOutcome::kNotFirst;
    }
    vms[best].outcome = VmOutcome::kChosen;
    choice.chosen = vms[best].candidate;
  }
  choice.considered = std::move(vms);
  return choice;
}

VmChoice chooseVm(const std::wstring& currentVm, const VmRules& rules, InstalledVms& installed,
                  const VmProbe& probe) {
  std::vector<ConsideredVm> first;
  if (fileExists(currentVm)) {
    ConsideredVm vm;
    vm.source = VmSource::kCurrentVm;
    vm.where = currentVm;
    vm.candidate = classifyExecutable(currentVm, probe, runsUnderWow64());
    const std::vector<std::wstring> tokens = validVmTokens(rules.validVmList);
    const bool acceptable =
        tokens.empty() || std::any_of(tokens.begin(), tokens.end(), [&](const auto& token) {
          return matchesToken(vm.candidate, token, rules);
        });
    vm.outcome = acceptable ? VmOutcome::kChosen : VmOutcome::kNoMatchingToken;
    first.push_back(std::move(vm));
    if (acceptable) return {first.front().candidate, std::move(first)};
  }
  const std::vector<ConsideredVm>& found =
      installed.find(wantsSingleArchitecture(rules.preference), rules.jvmHigh);
  first.insert(first.end(), found.begin(), found.end());
  return chooseAmong(std::move(first), rules, installed.singleArchitecture());
}

}  // namespace ryn
