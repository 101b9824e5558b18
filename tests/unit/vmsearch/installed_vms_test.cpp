#include "vmsearch/installed_vms.h"

#include <gmock/gmock.h>

#include "platform/files.h"
#include "platform/paths.h"
#include "tests/unit/support/local_machine.h"
#include "tests/unit/support/temp_folder.h"
#include "vmsearch/vm_choice.h"

namespace ryn {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr wchar_t kJdk[] = L"SOFTWARE\\JavaSoft\\JDK";
constexpr wchar_t kJre[] = L"SOFTWARE\\JavaSoft\\JRE";

TEST(PathFoldersTest, TakesAbsoluteFoldersWithoutQuotes) {
  const std::pair<const wchar_t*, std::vector<std::wstring>> rows[] = {
      {L"", {}},
      {L";;", {}},
      {L"C:\\a;D:\\b c;C:\\a", {L"C:\\a", L"D:\\b c", L"C:\\a"}},
      {L"\"C:\\a b\";\"\";\"", {L"C:\\a b"}},
      {L".;bin;..\\x;/usr/bin; C:\\a", {}},
      {L"\\\\server\\share;C:", {L"\\\\server\\share", L"C:"}},
  };
  for (const auto& [path, folders] : rows)
    EXPECT_EQ(pathFolders(path), folders) << testing::PrintToString(path);
}

TEST(MarkDuplicatesTest, KeepsTheFirstOfEachFolderAndExecutable) {
  std::vector<ConsideredVm> vms(6);
  const wchar_t* names[][2] = {{L"C:\\Stra\u00dfe", L""}, {L"C:\\a", L""},         {L"c:\\STRA\u00dfE", L""},
                               {L"C:\\a", L"java.exe"},   {L"C:\\A", L"JAVA.EXE"}, {L"C:\\a", L"javaw.exe"}};
  for (size_t i = 0; i < 6; ++i) {
    vms[i].candidate.folder = names[i][0];
    vms[i].candidate.executable = names[i][1];
  }
  // What is no candidate hides none.
  vms[1].outcome = VmOutcome::kUnreadableKey;
  vms.push_back(vms[1]);
  vms.back().outcome = VmOutcome::kNotReached;
  markDuplicates(vms);
  std::vector<VmOutcome> outcomes;
  for (const ConsideredVm& vm : vms) outcomes.push_back(vm.outcome);
  using enum VmOutcome;
  EXPECT_THAT(outcomes, ElementsAre(kNotReached, kUnreadableKey, kDuplicate, kNotReached, kDuplicate,
                                    kNotReached, kNotReached));
}

class InstalledVmsTest : public testing::Test {
 protected:
  /// Registers a VM whose folder exists.
  void registerVm(const std::wstring& key, const std::wstring& name, const wchar_t* microVersion) const {
    const std::wstring subkey = key + L"\\" + name;
    if (microVersion != nullptr) machine_.set(subkey, L"MicroVersion", microVersion);
    machine_.set(subkey, L"JavaHome", folder_.makeFolder(subkey));
  }

  std::vector<ConsideredVm> find(const std::wstring& path, const wchar_t* jvmHigh = L"",
                                 bool underWow64 = false, const wchar_t* wow64SystemFolder = L"") const {
    InstalledVms vms({path, underWow64, wow64SystemFolder}, probe_);
    return vms.find(false, jvmHigh);
  }

  const test::TempFolder folder_;
  const test::ScopedLocalMachine machine_;
  const SystemVmProbe probe_;
};

std::vector<std::wstring> places(const std::vector<ConsideredVm>& vms) {
  std::vector<std::wstring> result;
  for (const ConsideredVm& vm : vms)
    result.push_back(vm.source == VmSource::kPath ? fileName(vm.candidate.executable) : vm.where);
  return result;
}

TEST_F(InstalledVmsTest, ReadsTheSixKeysInTheirOrder) {
  const struct {
    const wchar_t* key;
    VmKind kind;
    const wchar_t* vendor;
  } rows[] = {
      {kJdk, VmKind::kJdk, L"Sun"},
      {kJre, VmKind::kJre, L"Sun"},
      {L"SOFTWARE\\JavaSoft\\Java Development Kit", VmKind::kJdk, L"Sun"},
      {L"SOFTWARE\\JavaSoft\\Java Runtime Environment", VmKind::kJre, L"Sun"},
      {L"SOFTWARE\\IBM\\Java2 Runtime Environment", VmKind::kJdk, L"IBM"},
      {L"SOFTWARE\\IBM\\Java Development Kit", VmKind::kJre, L"IBM"},
  };
  for (const auto& row : rows) registerVm(row.key, L"11.0.2", nullptr);
  const std::vector<ConsideredVm> found = find(L"");
  ASSERT_EQ(found.size(), std::size(rows));
  for (size_t i = 0; i < found.size(); ++i) {
    const VmCandidate& candidate = found[i].candidate;
    EXPECT_EQ(found[i].where, std::wstring(rows[i].key) + L"\\11.0.2");
    EXPECT_EQ(found[i].outcome, VmOutcome::kNotReached);
    EXPECT_EQ(candidate.kind, rows[i].kind);
    EXPECT_EQ(candidate.vendor, rows[i].vendor);
    EXPECT_EQ(candidate.version, VmVersion(11, 0, 2));
    EXPECT_EQ(candidate.folder, folder_.at(found[i].where));
    EXPECT_EQ(candidate.executable, L"");
    EXPECT_EQ(candidate.bitnessClass, 0);
  }
}

TEST_F(InstalledVmsTest, TakesTheMinorNumberFromMicroVersionUpToEight) {
  const std::tuple<const wchar_t*, const wchar_t*, VmVersion> rows[] = {
      {L"1.4.2", L"2", VmVersion(4, 2, 0)},       {L"1.4.1_07", L"x", VmVersion(4, 0, 7)},
      {L"1.8.0_402", L"0", VmVersion(8, 0, 402)}, {L"8.5.1", L" 3rd", VmVersion(8, 3, 1)},
      {L"9.5.1", L"3", VmVersion(9, 0, 1)},       {L"17.0.9", nullptr, VmVersion(17, 0, 9)},
  };
  for (const auto& [name, microVersion, version] : rows) registerVm(kJre, name, microVersion);
  const std::vector<ConsideredVm> found = find(L"");
  ASSERT_EQ(found.size(), std::size(rows));
  for (const auto& [name, microVersion, version] : rows) {
    const auto vm = std::find_if(found.begin(), found.end(),
                                 [&](const auto& each) { return fileName(each.candidate.folder) == name; });
    ASSERT_NE(vm, found.end()) << testing::PrintToString(name);
    EXPECT_EQ(vm->candidate.version, version) << testing::PrintToString(name);
  }
}

TEST_F(InstalledVmsTest, BadSubkeysAreNoCandidatesAndStopNothing) {
  using enum VmOutcome;
  const auto key = [](int number) { return kJre + (L"\\1.6.0_" + std::to_wstring(number)); };
  registerVm(kJre, L"1.6.0_0", nullptr);
  machine_.set(key(1), L"MicroVersion", L"0");
  registerVm(kJre, L"1.6.0_2", nullptr);
  machine_.set(key(2), L"MicroVersion", DWORD{7});
  registerVm(kJre, L"1.6.0_3", L"0");
  machine_.set(key(3), L"JavaHome", std::wstring(300, L'x'));
  for (int number : {4, 5, 6}) registerVm(kJre, L"1.6.0_" + std::to_wstring(number), L"0");
  machine_.set(key(4), L"JavaHome", L"");
  machine_.set(key(5), L"JavaHome", folder_.at(L"gone"));
  machine_.set(key(6), L"JavaHome", folder_.write(L"file"));
  registerVm(kJre, L"1.6.0_7", L"0");
  std::vector<VmOutcome> outcomes;
  for (const ConsideredVm& vm : find(L"")) outcomes.push_back(vm.outcome);
  EXPECT_THAT(outcomes, ElementsAre(kUnreadableKey, kUnreadableKey, kUnreadableKey, kUnreadableKey,
                                    kNoUsableHome, kNoUsableHome, kNoUsableHome, kNotReached));
}

TEST_F(InstalledVmsTest, SearchesEveryFolderForEveryName) {
  for (const wchar_t* name : {L"b\\java.exe", L"b\\jview.exe", L"b\\javaw.exe", L"b\\jrew.exe", L"b\\jre.exe",
                              L"b\\javac.exe", L"b\\wjview.exe", L"a\\javaw.exe", L"a\\java.com"}) {
    folder_.write(name);
  }
  folder_.makeFolder(L"a\\java.exe");
  const std::vector<ConsideredVm> found =
      find(folder_.at(L"none") + L";" + folder_.at(L"b") + L";\"" + folder_.at(L"a") + L"\"");
  EXPECT_THAT(places(found),
              ElementsAre(L"java.exe", L"jre.exe", L"javaw.exe", L"jrew.exe", L"jview.exe", L"javaw.exe"));
  EXPECT_EQ(found[0].candidate.folder, folder_.at(L"b"));
  EXPECT_EQ(found[0].candidate.kind, VmKind::kJdk);
  EXPECT_EQ(found[1].candidate.kind, VmKind::kJre);
  EXPECT_EQ(found[1].candidate.version, VmVersion(1, 0, 0));
  EXPECT_EQ(found[4].candidate.kind, VmKind::kMsj);
  EXPECT_EQ(found[5].where, folder_.at(L"a"));
}

TEST_F(InstalledVmsTest, OrdersTheSourcesAndSearchesOnce) {
  registerVm(kJre, L"11", nullptr);
  folder_.write(L"bin\\java.exe");
  const std::wstring registered = std::wstring(kJre) + L"\\11";
  EXPECT_THAT(places(find(folder_.at(L"bin"), L"")), ElementsAre(registered, L"java.exe"));
  EXPECT_THAT(places(find(folder_.at(L"bin"), L"1")), ElementsAre(registered, L"java.exe"));

  InstalledVms vms({folder_.at(L"bin"), false, L""}, probe_);
  EXPECT_FALSE(vms.singleArchitecture());
  EXPECT_THAT(places(vms.find(true, L"0")), ElementsAre(L"java.exe", registered));
  registerVm(kJre, L"17", nullptr);
  EXPECT_THAT(places(vms.find(false, L"")), ElementsAre(L"java.exe", registered));
  EXPECT_TRUE(vms.singleArchitecture());
}

TEST_F(InstalledVmsTest, GivesClassOneUnderWow64Only) {
  registerVm(kJdk, L"11", nullptr);
  folder_.makeFolder(L"system");
  ASSERT_TRUE(CopyFileW(modulePath().c_str(), folder_.at(L"system\\java.exe").c_str(), TRUE));

  const std::vector<ConsideredVm> found = find(L"", L"", true, folder_.at(L"system").c_str());
  ASSERT_EQ(found.size(), 3u);
  // The stand-in for the registry has one view, so the second pass finds the same VM again.
  EXPECT_EQ(found[0].candidate.bitnessClass, 0);
  EXPECT_EQ(found[1].candidate.bitnessClass, 1);
  EXPECT_EQ(found[1].outcome, VmOutcome::kDuplicate);
  EXPECT_EQ(found[2].candidate.bitnessClass, 1);

  const std::vector<ConsideredVm> native = find(folder_.at(L"system"), L"", false, L"C:\\ignored");
  ASSERT_EQ(native.size(), 2u);
  EXPECT_EQ(native[1].candidate.bitnessClass, 0);
}

TEST_F(InstalledVmsTest, SystemProbeReadsTheCurrentRuntime) {
  const std::wstring key = L"SOFTWARE\\JavaSoft\\Java Runtime Environment";
  EXPECT_EQ(probe_.registeredRuntimeVersion(), L"0.0.0.0");
  machine_.set(key, L"CurrentVersion", L"1.6");
  EXPECT_EQ(probe_.registeredRuntimeVersion(), L"0.0.0.0");
  machine_.make(key + L"\\1.6");
  EXPECT_EQ(probe_.registeredRuntimeVersion(), L"0.0.0.0");
  machine_.set(key + L"\\1.6", L"MicroVersion", L"3");
  EXPECT_EQ(probe_.registeredRuntimeVersion(), L"1.6.3_0");
}

TEST_F(InstalledVmsTest, TheCurrentVmComesFirstIfTheListAdmitsIt) {
  registerVm(kJre, L"17", nullptr);
  const std::wstring current = folder_.write(L"mine\\java.exe");
  const std::tuple<std::wstring, const wchar_t*, std::wstring> rows[] = {
      {current, L"", folder_.at(L"mine")},
      {current, L"  ", folder_.at(L"mine")},
      {current, L"JDK JRE", folder_.at(L"mine")},
      {current, L"JRE_J2", folder_.at(kJre) + L"\\17"},
      {current, L"JDK", L"none"},
      {folder_.path(), L"ALL", folder_.at(kJre) + L"\\17"},
      {folder_.at(L"gone"), L"", L"none"},
      {L"", L"ALL", folder_.at(kJre) + L"\\17"},
  };
  for (const auto& [first, list, expected] : rows) {
    InstalledVms installed({}, probe_);
    VmRules rules;
    rules.validVmList = list;
    rules.preference = 3;
    const VmChoice choice = chooseVm(first, rules, installed, probe_);
    EXPECT_EQ(choice.chosen ? choice.chosen->folder : L"none", expected) << testing::PrintToString(list);
    if (first == current) {
      EXPECT_EQ(choice.considered.front().where, current);
      EXPECT_EQ(choice.considered.front().outcome,
                expected == folder_.at(L"mine") ? VmOutcome::kChosen : VmOutcome::kNoMatchingToken);
    }
  }
}

}  // namespace
}  // namespace ryn
