#include "vmsearch/vm_choice.h"

#include <gmock/gmock.h>

#include "platform/text.h"

namespace ryn {
namespace {

/// Found VMs, each in one word: kind, generation and bitness class, as in "jdk8/0".
std::vector<ConsideredVm> vms(const std::wstring& words) {
  std::vector<ConsideredVm> result;
  for (const std::wstring& word : validVmTokens(words)) {
    const std::wstring kind = word.substr(0, 3);
    ConsideredVm& vm = result.emplace_back();
    vm.candidate.folder = word;
    vm.candidate.kind = kind == L"jdk" ? VmKind::kJdk : kind == L"jre" ? VmKind::kJre : VmKind::kMsj;
    vm.candidate.version = VmVersion(static_cast<int16_t>(parseInteger(word.substr(3))), 0, 0);
    vm.candidate.bitnessClass = word.back() - L'0';
  }
  return result;
}

/// The outcomes, each as one letter, and a check that the choice is the one that is so marked.
std::string outcomes(const VmChoice& choice) {
  std::string letters;
  std::wstring chosen = L"none";
  for (const ConsideredVm& vm : choice.considered) {
    letters += "nCkhdTBUFO"[static_cast<int>(vm.outcome)];
    if (vm.outcome == VmOutcome::kChosen) chosen = vm.candidate.folder;
  }
  EXPECT_EQ(choice.chosen ? choice.chosen->folder : L"none", chosen);
  return letters;
}

TEST(VmChoiceTest, MatchesEachKeyword) {
  const auto columns = vms(L"jdk0/0 jdk1/0 jdk2/0 jre1/0 jre2/0 jre11/0 msj1/0 msj2/0");
  const std::pair<const wchar_t*, const char*> rows[] = {
      {L"ALL", "11111111"},    {L"J1", "11010000"},     {L"J2", "00101101"},     {L"JDK", "11100000"},
      {L"JRE", "00011100"},    {L"JDK_J1", "11000000"}, {L"JDK_J2", "00100000"}, {L"JRE_J1", "00010000"},
      {L"JRE_J2", "00001100"}, {L"MSJ", "00000011"},    {L"msj", "00000011"},    {L"Jre_j2", "00001100"},
      {L"1.8+", "00000000"},   {L"", "00000000"},
  };
  for (const auto& [token, expected] : rows) {
    std::string matches;
    for (const auto& column : columns)
      matches += matchesToken(column.candidate, token, VmRules()) ? '1' : '0';
    EXPECT_EQ(matches, expected) << testing::PrintToString(token);
  }
}

TEST(VmChoiceTest, FiltersAndChooses) {
  const std::tuple<const wchar_t*, uint64_t, const wchar_t*, const wchar_t*, const char*> rows[] = {
      // The first in the order of the tokens, then of the sources.
      {L"JDK JRE", 3, L"0", L"jre17/0 jdk8/0 jdk11/0", "FCF"},
      {L"ALL JDK", 3, L"0", L"jre17/0 jdk8/0 jdk11/0", "CFF"},
      // The highest, of equals the first; anything but "0" asks for it.
      {L"JDK JRE", 3, L"", L"jre17/0 jdk8/0 jdk11/0", "COO"},
      {L"ALL", 3, L"00", L"jre7/0 jdk8/0 jre8/0", "OCO"},
      {L"  j1   j2 ", 2, L"1", L"jre1/0 msj1/0 jre2/0", "OTC"},
      // A VM of the other bitness is none, and a later token does not bring it back.
      {L"JRE ALL", 1, L"", L"jre17/0 jre8/1 jdk9/0", "BCB"},
      {L"JRE ALL", 3, L"0", L"jre17/1 jre8/0", "BC"},
      {L"ALL", 1, L"", L"jre17/0", "B"},
      // Where both are admitted, class 1 beats any version of class 0.
      {L"ALL", 2, L"", L"jre17/0 jre5/1 jre6/1", "OOC"},
      {L"ALL", 0, L"0", L"jre17/0 jre5/1", "CF"},
      {L"ALL", 64, L"0", L"jre17/1 jre5/0", "CF"},
      {L"", 2, L"", L"jre17/0", "T"},
      {L"ALL", 2, L"", L"", ""},
  };
  for (const auto& [list, preference, jvmHigh, found, expected] : rows) {
    VmRules rules;
    rules.validVmList = list;
    rules.preference = preference;
    rules.jvmHigh = jvmHigh;
    EXPECT_EQ(outcomes(chooseAmong(vms(found), rules, wantsSingleArchitecture(preference))), expected)
        << testing::PrintToString(list) << preference << testing::PrintToString(found);
  }
}

TEST(VmChoiceTest, TheFlagRanksTheClasses) {
  const auto found = vms(L"jre17/0 jre5/1");
  for (const bool single : {false, true}) {
    EXPECT_EQ(ranksBelow(found[0].candidate, found[1].candidate, single), !single);
    EXPECT_EQ(ranksBelow(found[1].candidate, found[0].candidate, single), single);
    EXPECT_FALSE(ranksBelow(found[0].candidate, found[0].candidate, single));
  }
}

TEST(VmChoiceTest, AsksTheValidatorForUnknownTokensButNotInRefusedFolders) {
  std::wstring asked;
  VmRules rules;
  rules.validVmList = L"JDK Like_8";
  rules.preference = 3;
  rules.validator = [&](const VmCandidate& candidate, const std::wstring& token) {
    asked += candidate.folder + L" " + token + L", ";
    return candidate.version.generation() >= 8;
  };
  rules.folderRefusal = [](const VmCandidate& candidate) { return candidate.version.generation() == 21; };
  auto found = vms(L"jdk7/0 jre7/0 jre21/0 jdk21/0 jre8/0 jre25/0");
  found.back().outcome = VmOutcome::kDuplicate;
  EXPECT_EQ(outcomes(chooseAmong(std::move(found), rules, true)), "OTUUCd");
  EXPECT_EQ(asked, L"jre7/0 Like_8, jre8/0 Like_8, ");
}

}  // namespace
}  // namespace ryn
