#include "vmsearch/vm_choice.h"

#include <gmock/gmock.h>

namespace ryn {
namespace {

using testing::ElementsAre;

/// A found VM in one word: kind, generation and bitness class, as in "jdk8/0".
ConsideredVm vm(const std::wstring& word) {
  ConsideredVm result;
  result.where = word;
  result.candidate.folder = L"C:\\" + word;
  const std::wstring kind = word.substr(0, 3);
  result.candidate.kind = kind == L"jdk" ? VmKind::kJdk : kind == L"jre" ? VmKind::kJre : VmKind::kMsj;
  result.candidate.version = VmVersion(static_cast<int16_t>(std::stoi(word.substr(3))), 0, 0);
  result.candidate.bitnessClass = word.back() - L'0';
  return result;
}

std::vector<ConsideredVm> vms(const std::vector<const wchar_t*>& words) {
  std::vector<ConsideredVm> result;
  for (const wchar_t* word : words) result.push_back(vm(word));
  return result;
}

std::vector<VmOutcome> outcomes(const VmChoice& choice) {
  std::vector<VmOutcome> result;
  for (const ConsideredVm& considered : choice.considered) result.push_back(considered.outcome);
  return result;
}

std::wstring chosen(const VmChoice& choice) {
  return choice.chosen ? choice.chosen->folder.substr(3) : L"none";
}

TEST(VmChoiceTest, MatchesEachKeyword) {
  const std::vector<ConsideredVm> columns =
      vms({L"jdk0/0", L"jdk1/0", L"jdk2/0", L"jre1/0", L"jre2/0", L"jre11/0", L"msj1/0", L"msj2/0"});
  const std::pair<const wchar_t*, const char*> rows[] = {
      {L"ALL", "11111111"},    {L"J1", "11010000"},     {L"J2", "00101101"},     {L"JDK", "11100000"},
      {L"JRE", "00011100"},    {L"JDK_J1", "11000000"}, {L"JDK_J2", "00100000"}, {L"JRE_J1", "00010000"},
      {L"JRE_J2", "00001100"}, {L"MSJ", "00000011"},    {L"msj", "00000011"},    {L"Jre_j2", "00001100"},
      {L"1.8+", "00000000"},   {L"", "00000000"},
  };
  for (const auto& [token, expected] : rows) {
    std::string matches;
    for (const ConsideredVm& column : columns)
      matches += matchesToken(column.candidate, token, VmRules()) ? '1' : '0';
    EXPECT_EQ(matches, expected) << testing::PrintToString(token);
  }
}

TEST(VmChoiceTest, AsksTheValidatorForUnknownTokensOnly) {
  std::vector<std::wstring> asked;
  VmRules rules;
  rules.validVmList = L"JDK  Like_8  jre9";
  rules.preference = 2;
  rules.validator = [&](const VmCandidate& candidate, const std::wstring& token) {
    asked.push_back(candidate.folder.substr(3) + L" " + token);
    return candidate.version.generation() == 8;
  };
  const VmChoice choice = chooseAmong(vms({L"jdk7/0", L"jre7/0", L"jre8/0"}), rules, false);
  EXPECT_EQ(chosen(choice), L"jre8/0");
  EXPECT_THAT(asked, ElementsAre(L"jre7/0 Like_8", L"jre8/0 Like_8", L"jre7/0 jre9"));
}

TEST(VmChoiceTest, FiltersAndChooses) {
  using enum VmOutcome;
  const struct {
    const wchar_t* list;
    uint64_t preference;
    const wchar_t* jvmHigh;
    std::vector<const wchar_t*> found;
    const wchar_t* chosen;
    std::vector<VmOutcome> outcomes;
  } rows[] = {
      // First by the order of the tokens, then by that of the sources.
      {L"JDK JRE", 3, L"0", {L"jre17/0", L"jdk8/0", L"jdk11/0"}, L"jdk8/0", {kNotFirst, kChosen, kNotFirst}},
      {L"ALL JDK", 3, L"0", {L"jre17/0", L"jdk8/0", L"jdk11/0"}, L"jre17/0", {kChosen, kNotFirst, kNotFirst}},
      // The highest, of equals the first; anything but "0" asks for it.
      {L"JDK JRE",
       3,
       L"",
       {L"jre17/0", L"jdk8/0", L"jdk11/0"},
       L"jre17/0",
       {kChosen, kOutranked, kOutranked}},
      {L"ALL", 3, L"00", {L"jdk8/0", L"jre8/0", L"jre7/0"}, L"jdk8/0", {kChosen, kOutranked, kOutranked}},
      {L"j1 j2",
       2,
       L"1",
       {L"jre1/0", L"msj1/0", L"jre2/0"},
       L"jre2/0",
       {kOutranked, kNoMatchingToken, kChosen}},
      // A VM of the other bitness is none, and a later token does not bring it back.
      {L"JRE ALL",
       1,
       L"",
       {L"jre17/0", L"jre8/1", L"jdk9/0"},
       L"jre8/1",
       {kOtherBitness, kChosen, kOtherBitness}},
      {L"JRE ALL", 3, L"0", {L"jre17/1", L"jre8/0"}, L"jre8/0", {kOtherBitness, kChosen}},
      {L"ALL", 1, L"", {L"jre17/0"}, L"none", {kOtherBitness}},
      // Where both are admitted class 1 beats any version of class 0.
      {L"ALL", 2, L"", {L"jre17/0", L"jre5/1", L"jre6/1"}, L"jre6/1", {kOutranked, kOutranked, kChosen}},
      {L"ALL", 0, L"0", {L"jre17/0", L"jre5/1"}, L"jre17/0", {kChosen, kNotFirst}},
      {L"ALL", 64, L"0", {L"jre17/1", L"jre5/0"}, L"jre17/1", {kChosen, kNotFirst}},
      {L"", 2, L"", {L"jre17/0"}, L"none", {kNoMatchingToken}},
      {L"ALL", 2, L"", {}, L"none", {}},
  };
  for (const auto& row : rows) {
    VmRules rules;
    rules.validVmList = row.list;
    rules.preference = row.preference;
    rules.jvmHigh = row.jvmHigh;
    const VmChoice choice = chooseAmong(vms(row.found), rules, wantsSingleArchitecture(row.preference));
    EXPECT_EQ(chosen(choice), row.chosen) << testing::PrintToString(row.list) << row.preference;
    EXPECT_EQ(outcomes(choice), row.outcomes) << testing::PrintToString(row.list) << row.preference;
  }
}

TEST(VmChoiceTest, RanksClassesByTheFlagAndVersionsWithinOne) {
  const struct {
    const wchar_t* a;
    const wchar_t* b;
    bool single;
    bool below;
  } rows[] = {
      {L"jre5/0", L"jre6/0", false, true},  {L"jre6/0", L"jre5/0", false, false},
      {L"jre5/1", L"jre6/1", true, true},   {L"jre6/0", L"jre6/0", true, false},
      {L"jre17/0", L"jre5/1", false, true}, {L"jre5/1", L"jre17/0", false, false},
      {L"jre17/0", L"jre5/1", true, false}, {L"jre5/1", L"jre17/0", true, true},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(ranksBelow(vm(row.a).candidate, vm(row.b).candidate, row.single), row.below)
        << testing::PrintToString(row.a) << testing::PrintToString(row.b) << row.single;
  }
}

TEST(VmChoiceTest, RefusesUnsafeFoldersAndLeavesSettledEntriesAlone) {
  using enum VmOutcome;
  std::vector<ConsideredVm> found = vms({L"jre21/0", L"jre17/0", L"jdk25/0", L"jre11/0", L"jre25/0"});
  found.back().outcome = kDuplicate;
  std::vector<std::wstring> asked;
  VmRules rules;
  rules.validVmList = L"JRE";
  rules.preference = 3;
  rules.folderRefusal = [&](const VmCandidate& candidate) {
    asked.push_back(candidate.folder.substr(3));
    return candidate.version.generation() == 21;
  };
  const VmChoice choice = chooseAmong(std::move(found), rules, true);
  EXPECT_EQ(chosen(choice), L"jre17/0");
  EXPECT_THAT(outcomes(choice),
              ElementsAre(kUnsafeFolder, kChosen, kNoMatchingToken, kOutranked, kDuplicate));
  EXPECT_THAT(asked, ElementsAre(L"jre21/0", L"jre17/0", L"jre11/0"));
}

}  // namespace
}  // namespace ryn
