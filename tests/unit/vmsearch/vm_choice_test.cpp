#include "vmsearch/vm_choice.h"

#include <gmock/gmock.h>

#include "text/text.h"

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
    letters += "nCmhkHdTRLSBWUFO"[static_cast<int>(vm.outcome)];
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
      {L"17+_", "00000000"},   {L"", "00000000"},
  };
  for (const auto& [token, expected] : rows) {
    std::string matches;
    for (const auto& column : columns)
      matches += matchesToken(column.candidate, token).value_or(false) ? '1' : '0';
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
      {L"JRE JDK", 1, L"", L"jre8/0", "B"},
      {L"JRE ALL", 3, L"0", L"jre17/1 jre8/0", "BC"},
      {L"ALL", 1, L"", L"jre17/0", "B"},
      // Where both are admitted, class 1 beats any version of class 0.
      {L"ALL", 2, L"", L"jre17/0 jre5/1 jre6/1", "OOC"},
      {L"ALL", 0, L"0", L"jre17/0 jre5/1", "CF"},
      {L"ALL", 64, L"0", L"jre17/1 jre5/0", "CF"},
      {L"", 2, L"", L"jre17/0", "T"},
      // Nobody is there to ask.
      {L"Like_8", 2, L"", L"jre8/0", "T"},
      {L"ALL", 2, L"", L"", ""},
  };
  for (const auto& [list, platform, jvmHigh, found, expected] : rows) {
    VmRules rules;
    rules.validVmList = list;
    rules.platform = platform;
    rules.jvmHigh = jvmHigh;
    EXPECT_EQ(outcomes(chooseAmong(vms(found), rules)), expected)
        << testing::PrintToString(list) << platform << testing::PrintToString(found);
  }
}

TEST(VmChoiceTest, AsksWhatIsCheapFirstAndTheValidatorLast) {
  std::wstring asked;
  const auto note = [&](const wchar_t* what, const VmCandidate& vm) {
    asked += concat({what, vm.folder, L" "});
  };
  VmRules rules;
  rules.validVmList = L"JDK Like_8 Like_9";
  rules.platform = 3;
  rules.validator = [&](const VmCandidate& vm, const std::wstring& token) {
    note((token + L":").c_str(), vm);
    const int generation = vm.version.generation();
    return std::optional(generation == 8   ? ValidatorAnswer::kAccepted
                         : generation == 5 ? ValidatorAnswer::kTimedOut
                         : generation == 4 ? ValidatorAnswer::kNotStarted
                                           : ValidatorAnswer::kRejected);
  };
  rules.wrongBits = [&](const VmCandidate& vm) { return note(L"bits:", vm), vm.version.generation() == 20; };
  rules.unsafeFolder = [&](const VmCandidate& vm) {
    return note(L"folder:", vm), vm.version.generation() == 21;
  };
  auto found = vms(L"jdk7/0 jre8/1 jdk20/0 jdk21/0 jre21/0 jre7/0 jre4/0 jre5/0 jre8/0 jre25/0");
  found.back().outcome = VmOutcome::kDuplicate;
  EXPECT_EQ(outcomes(chooseAmong(std::move(found), rules)), "OBWUURSLCd");
  EXPECT_EQ(asked.find(L"jre8/1"), asked.npos);
  EXPECT_EQ(asked.find(L"folder:jdk20"), asked.npos);
  EXPECT_EQ(asked.find(L"Like_8:jre21"), asked.npos);
  EXPECT_NE(asked.find(L"bits:jre8/0 folder:jre8/0 Like_8:jre8/0 "), asked.npos)
      << testing::PrintToString(asked);
}

TEST(VersionRangeTest, TakesVersionsByTheirNumbers) {
  // Registered VMs, 8u202 and 17.0.9 among them, and one found by its executable, which carries 2020.
  std::vector<VmCandidate> found(8);
  const VmVersion versions[] = {VmVersion(),         VmVersion(7, 0, 80),  VmVersion(8, 0, 202),
                                VmVersion(11, 0, 2), VmVersion(17, 0, 9),  VmVersion(17, 0, 10),
                                VmVersion(21, 0, 8), VmVersion(8, 0, 2020)};
  for (size_t i = 0; i < found.size(); ++i) found[i].version = versions[i];
  found.back().executable = L"C:\\jre\\bin\\java.exe";
  const std::pair<const wchar_t*, const char*> rows[] = {
      {L"17", "00001100"},
      {L"17+", "00001110"},
      {L"11-21", "00011110"},
      {L"17.0.9", "00001000"},
      {L"17.0.10+", "00000110"},
      {L"1.8", "00100001"},
      {L"8", "00100001"},
      {L"1.8+", "00111111"},
      {L"1.8.0_202", "00100001"},
      {L"1.8.0_203+", "00011110"},
      {L"17.0.9-17.0.9", "00001000"},
      {L"21-11", "00000000"},
      {L"8-17.0.9", "00111001"},
      {L"0+", "01111111"},
      {L"12345+", "00000000"},
      {L"1", "00000000"},
      // No ranges.
      {L"+", ""},
      {L"-", ""},
      {L"17-", ""},
      {L"-17", ""},
      {L"17++", ""},
      {L"1.8.0.1.2", ""},
      {L"a17", ""},
      {L"17 ", ""},
      {L"123456", ""},
      {L"17..9", ""},
      {L"JRE_11+", ""},
  };
  for (const auto& [token, expected] : rows) {
    std::string fits;
    for (const VmCandidate& vm : found) {
      if (const auto match = matchesToken(vm, token)) fits += *match ? '1' : '0';
    }
    EXPECT_EQ(fits, expected) << testing::PrintToString(token);
  }
  // Ten times its update number is what an executable carries from 5 to 8.
  for (const auto& [version, token] : {std::pair{VmVersion(4, 0, 20), L"4.0.20"},
                                       {VmVersion(5, 0, 220), L"5.0.22"},
                                       {VmVersion(8, 0, 2020), L"8.0.202"},
                                       {VmVersion(9, 0, 40), L"9.0.40"}}) {
    VmCandidate vm;
    vm.version = version;
    vm.executable = L"C:\\java.exe";
    EXPECT_EQ(matchesToken(vm, token), true) << std::wstring(token);
  }
}

TEST(VmChoiceTest, WhatFollowsAChoiceIsNotReached) {
  VmRules all;
  all.validVmList = L"JRE";
  all.platform = 2;
  VmChoice choice = chooseAmong(vms(L"jre8/0"), all);
  append(choice, chooseAmong(vms(L"jre7/0 jre9/0 jdk9/0"), all));
  all.jvmHigh = L"0";
  append(choice, chooseAmong(vms(L"jre7/0 jre9/0"), all));
  EXPECT_EQ(outcomes(choice), "CnnTnn");
}

TEST(VmChoiceTest, ThePlatformRanksTheClasses) {
  const auto found = vms(L"jre9/0 jre8/1");
  for (const auto& [platform, expected] :
       {std::pair{1, false}, {3, false}, {0, true}, {2, true}, {4, true}}) {
    const auto number = static_cast<uint64_t>(platform);
    EXPECT_EQ(ranksBelow(found[0].candidate, found[1].candidate, number), expected) << platform;
    EXPECT_EQ(ranksBelow(found[1].candidate, found[0].candidate, number), !expected) << platform;
  }
}

TEST(VmDialectTest, FollowsKindAndGeneration) {
  const auto found = vms(L"jre0/0 jre1/0 jre2/0 jdk8/0 msj1/0");
  const VmDialect dialects[] = {VmDialect::kClassic, VmDialect::kClassic, VmDialect::kModern,
                                VmDialect::kModern, VmDialect::kMicrosoft};
  for (size_t i = 0; i < found.size(); ++i) EXPECT_EQ(dialectOf(found[i].candidate), dialects[i]) << i;
}

}  // namespace
}  // namespace ryn
