#include "vmsearch/installed_vms.h"

#include <gmock/gmock.h>

#include "platform/paths.h"
#include "tests/unit/support/local_machine.h"
#include "tests/unit/support/process_state.h"
#include "tests/unit/support/temp_folder.h"
#include "vmsearch/vm_choice.h"

namespace ryn {
namespace {

using testing::ElementsAre;

const std::wstring kJre = L"SOFTWARE\\JavaSoft\\JRE";

class InstalledVmsTest : public testing::Test {
 protected:
  /// Registers a VM whose folder exists.
  void registerVm(const std::wstring& subkey, const wchar_t* microVersion = nullptr) const {
    if (microVersion != nullptr) machine_.set(subkey, L"MicroVersion", microVersion);
    machine_.set(subkey, L"JavaHome", folder_.makeFolder(subkey));
  }

  std::vector<ConsideredVm> find(const SearchSystem& system, const wchar_t* jvmHigh = L"") const {
    return InstalledVms(system, probe_).find(false, jvmHigh);
  }

  const test::TempFolder folder_;
  const test::ScopedLocalMachine machine_;
  const SystemVmProbe probe_{};
};

std::vector<std::wstring> places(const std::vector<ConsideredVm>& vms) {
  std::vector<std::wstring> result;
  for (const ConsideredVm& vm : vms)
    result.push_back(vm.source == VmSource::kPath ? fileName(vm.candidate.executable) : vm.where);
  return result;
}

TEST_F(InstalledVmsTest, ReadsTheSixKeysInTheirOrder) {
  const std::tuple<const wchar_t*, VmKind, const wchar_t*> rows[] = {
      {L"SOFTWARE\\JavaSoft\\JDK\\11.0.2", VmKind::kJdk, L"Sun"},
      {L"SOFTWARE\\JavaSoft\\JRE\\11.0.2", VmKind::kJre, L"Sun"},
      {L"SOFTWARE\\JavaSoft\\Java Development Kit\\11.0.2", VmKind::kJdk, L"Sun"},
      {L"SOFTWARE\\JavaSoft\\Java Runtime Environment\\11.0.2", VmKind::kJre, L"Sun"},
      {L"SOFTWARE\\IBM\\Java2 Runtime Environment\\11.0.2", VmKind::kJdk, L"IBM"},
      {L"SOFTWARE\\IBM\\Java Development Kit\\11.0.2", VmKind::kJre, L"IBM"},
  };
  for (const auto& row : rows) registerVm(std::get<0>(row));
  const std::vector<ConsideredVm> found = find({});
  ASSERT_EQ(found.size(), std::size(rows));
  for (size_t i = 0; i < found.size(); ++i) {
    const VmCandidate& vm = found[i].candidate;
    EXPECT_EQ(rows[i], std::tuple(found[i].where, vm.kind, vm.vendor));
    EXPECT_EQ(vm.version, VmVersion(11, 0, 2));
    EXPECT_EQ(vm.folder + vm.executable, folder_.at(found[i].where));
    EXPECT_EQ(vm.bitnessClass, 0);
  }
}

TEST_F(InstalledVmsTest, TakesTheMinorNumberFromMicroVersionUpToEight) {
  // In the order of the registry.
  const std::tuple<const wchar_t*, const wchar_t*, VmVersion> rows[] = {
      {L"\\1.4.1_07", L"x", VmVersion(4, 0, 7)},    {L"\\1.4.2", L"2", VmVersion(4, 2, 0)},
      {L"\\1.8.0_402", L"0", VmVersion(8, 0, 402)}, {L"\\17.0.9", nullptr, VmVersion(17, 0, 9)},
      {L"\\8.5.1", L" 3rd", VmVersion(8, 3, 1)},    {L"\\9.5.1", L"3", VmVersion(9, 0, 1)},
  };
  for (const auto& [name, microVersion, version] : rows) registerVm(kJre + name, microVersion);
  const std::vector<ConsideredVm> found = find({});
  ASSERT_EQ(found.size(), std::size(rows));
  for (size_t i = 0; i < found.size(); ++i)
    EXPECT_EQ(found[i].candidate.version, std::get<2>(rows[i])) << testing::PrintToString(found[i].where);
}

TEST_F(InstalledVmsTest, BadSubkeysAreNoCandidatesAndStopNothing) {
  registerVm(kJre + L"\\1.6.0_0");
  machine_.set(kJre + L"\\1.6.0_1", L"MicroVersion", L"0");
  machine_.set(kJre + L"\\1.6.0_2", L"MicroVersion", DWORD{7});
  for (const wchar_t* name : {L"\\1.6.0_3", L"\\1.6.0_4", L"\\1.6.0_5", L"\\1.6.0_6"})
    registerVm(kJre + name, L"0");
  machine_.set(kJre + L"\\1.6.0_3", L"JavaHome", L"");
  machine_.set(kJre + L"\\1.6.0_4", L"JavaHome", folder_.at(L"gone"));
  machine_.set(kJre + L"\\1.6.0_5", L"JavaHome", folder_.write(L"file"));
  std::vector<VmOutcome> outcomes;
  for (const ConsideredVm& vm : find({})) outcomes.push_back(vm.outcome);
  using enum VmOutcome;
  EXPECT_THAT(outcomes, ElementsAre(kUnreadableKey, kUnreadableKey, kUnreadableKey, kNoUsableHome,
                                    kNoUsableHome, kNoUsableHome, kNotReached));
}

TEST_F(InstalledVmsTest, SearchesEveryAbsoluteFolderForEveryName) {
  for (const wchar_t* name :
       {L"b\\java.exe", L"b\\jview.exe", L"b\\javaw.exe", L"b\\jrew.exe", L"b\\jre.exe", L"b\\javac.exe",
        L"b\\wjview.exe", L"a\\javaw.exe", L"a\\java.com", L"c\\java.exe"}) {
    folder_.write(name);
  }
  folder_.makeFolder(L"a\\java.exe");
  const test::ScopedCurrentFolder here(folder_.path());
  const std::wstring path =
      folder_.at(L"none") + L";;c;" + folder_.at(L"b") + L";\"" + folder_.at(L"a") + L"\";.\\c;\"\";\"";
  const std::vector<ConsideredVm> found = find({path, false, L""});
  EXPECT_THAT(places(found),
              ElementsAre(L"java.exe", L"jre.exe", L"javaw.exe", L"jrew.exe", L"jview.exe", L"javaw.exe"));
  EXPECT_EQ(found[0].candidate.folder, folder_.at(L"b"));
  EXPECT_EQ(found[0].candidate.kind, VmKind::kJdk);
  EXPECT_EQ(found[1].candidate.version, VmVersion(1, 0, 0));
  EXPECT_EQ(found[4].candidate.kind, VmKind::kMsj);
  EXPECT_EQ(found[5].where, folder_.at(L"a"));
}

TEST_F(InstalledVmsTest, OrdersTheSourcesAndSearchesOnce) {
  registerVm(kJre + L"\\11");
  folder_.write(L"bin\\java.exe");
  const SearchSystem system{folder_.at(L"bin") + L";" + folder_.at(L"BIN"), false, L""};
  EXPECT_THAT(places(find(system, L"00")), ElementsAre(kJre + L"\\11", L"java.exe", L"java.exe"));

  InstalledVms vms(system, probe_);
  const std::vector<ConsideredVm> found = vms.find(true, L"0");
  EXPECT_THAT(places(found), ElementsAre(L"java.exe", L"java.exe", kJre + L"\\11"));
  EXPECT_EQ(found[1].outcome, VmOutcome::kDuplicate);
  registerVm(kJre + L"\\17");
  EXPECT_THAT(places(vms.find(false, L"")), ElementsAre(L"java.exe", L"java.exe", kJre + L"\\11"));
  EXPECT_TRUE(vms.singleArchitecture());
}

TEST_F(InstalledVmsTest, GivesClassOneUnderWow64Only) {
  registerVm(kJre + L"\\11");
  folder_.makeFolder(L"system");
  // Of the same bitness as this program.
  ASSERT_TRUE(CopyFileW(modulePath().c_str(), folder_.at(L"system\\java.exe").c_str(), TRUE));
  const auto classes = [&](bool underWow64) {
    std::vector<int> result;
    for (const ConsideredVm& vm : find({folder_.at(L"system"), underWow64, folder_.at(L"system")}))
      result.push_back(vm.candidate.bitnessClass);
    return result;
  };
  EXPECT_THAT(classes(false), ElementsAre(0, 0));
  // The stand-in for the registry has one view: the second pass finds the same VM again.
  EXPECT_THAT(classes(true), ElementsAre(0, 1, 1, 1));
}

TEST_F(InstalledVmsTest, SystemProbeReadsTheCurrentRuntime) {
  const std::wstring key = L"SOFTWARE\\JavaSoft\\Java Runtime Environment";
  EXPECT_EQ(probe_.registeredRuntimeVersion(), L"0.0.0.0");
  machine_.set(key, L"CurrentVersion", L"1.6");
  EXPECT_EQ(probe_.registeredRuntimeVersion(), L"0.0.0.0");
  machine_.set(key + L"\\1.6", L"MicroVersion", L"3");
  EXPECT_EQ(probe_.registeredRuntimeVersion(), L"1.6.3_0");
}

TEST_F(InstalledVmsTest, TheCurrentVmComesFirstIfTheListAdmitsIt) {
  registerVm(kJre + L"\\17");
  const std::wstring current = folder_.write(L"mine\\java.exe");
  const std::wstring mine = folder_.at(L"mine");
  const std::wstring installed = folder_.at(kJre + L"\\17");
  const std::tuple<std::wstring, const wchar_t*, std::wstring> rows[] = {
      {current, L"", mine},
      {current, L"  ", mine},
      {current, L"JDK JRE", mine},
      {current, L"JRE_J2", installed},
      {current, L"JDK", L""},
      {mine, L"ALL", installed},
      {folder_.at(L"gone"), L"", L""},
      {L"", L"ALL", installed},
  };
  for (const auto& [first, list, expected] : rows) {
    InstalledVms search({}, probe_);
    VmRules rules;
    rules.validVmList = list;
    rules.preference = 3;
    const VmChoice choice = chooseVm(first, rules, search, probe_);
    EXPECT_EQ(choice.chosen ? choice.chosen->folder : L"", expected) << testing::PrintToString(list);
    if (first != current) continue;
    EXPECT_EQ(choice.considered.front().outcome,
              expected == mine ? VmOutcome::kChosen : VmOutcome::kNoMatchingToken);
  }
}

}  // namespace
}  // namespace ryn
