#include "vmsearch/jvmspecs_search.h"

#include <gmock/gmock.h>

#include "platform/text.h"
#include "tests/unit/support/process_state.h"
#include "tests/unit/support/temp_folder.h"

namespace ryn {
namespace {

using testing::ElementsAre;
using testing::SizeIs;

// A key of the current user that goes with the test.
class ThrowAwayKey {
 public:
  ThrowAwayKey() { RegDeleteTreeW(HKEY_CURRENT_USER, kPath); }
  ThrowAwayKey(const ThrowAwayKey&) = delete;
  ThrowAwayKey& operator=(const ThrowAwayKey&) = delete;
  ~ThrowAwayKey() { RegDeleteTreeW(HKEY_CURRENT_USER, kPath); }

  static std::string hint() { return "\\HKEY_CURRENT_USER\\Software\\ryn-jvmspecs-test"; }

  static void set(const std::wstring& subkey, const wchar_t* name, const std::wstring& value) {
    const std::wstring key = kPath + (subkey.empty() ? L"" : L"\\" + subkey);
    const auto size = static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t));
    ASSERT_EQ(RegSetKeyValueW(HKEY_CURRENT_USER, key.c_str(), name, REG_SZ, value.c_str(), size),
              ERROR_SUCCESS);
  }

 private:
  static constexpr wchar_t kPath[] = L"Software\\ryn-jvmspecs-test";
};

// A machine with the drive "drive" below the test's folder, which is also the application's.
class JvmspecsSearchTest : public testing::Test, protected DriveList {
 protected:
  JvmspecsSearchTest() {
    rules_.validVmList = L"ALL";
    rules_.preference = 2;
  }

  std::optional<std::vector<std::wstring>> roots() const override {
    ++walks_;
    if (!drivesKnown_) return std::nullopt;
    return std::vector{folder_.at(L"drive")};
  }

  // An installed VM: the more files of later generations lie beside it, the higher its version.
  void install(const std::wstring& executable, int generation = 0) const {
    folder_.write(executable);
    const std::wstring bin = executable.substr(0, executable.rfind(L'\\'));
    if (generation == 4) folder_.makeFolder(bin + L"\\client");
    if (generation == 5) folder_.write(bin + L"\\pack200.exe");
  }

  void describe(const std::string& content) {
    const std::wstring name = std::to_wstring(count_++) + L".txt";
    folder_.write(L"jvmspecs\\" + name, content);
    jvmspecs_.parse(L"build.jvmspec." + std::to_wstring(count_ - 1) + L"=" + name + L"\n");
  }

  static std::string hints(const std::string& lines) { return "PATH_HINT:\n" + lines + "\n/:\n"; }

  // The chosen executable, relative to the test's folder; empty when there is none.
  std::wstring search() {
    choice_ = searchByDescriptions(jvmspecs_, count_, rules_, probe_, environment_, *this);
    if (!choice_.chosen) return {};
    EXPECT_EQ(choice_.chosen->folder, folderPart(choice_.chosen->executable));
    return choice_.chosen->executable.substr(folder_.path().size() + 1);
  }

  // Forgets all descriptions and searches by one.
  std::wstring searchWith(const std::string& content) {
    count_ = 0;
    describe(content);
    return search();
  }

  std::string hostPath(const std::wstring& name) const { return toAnsi(folder_.at(name)); }

  const test::TempFolder folder_;
  const test::ScopedCurrentFolder current_{folder_.path()};
  const SystemVmProbe probe_{};
  PropertyFile jvmspecs_;
  int count_ = 0;
  VmRules rules_;
  EnvironmentMap environment_;
  bool drivesKnown_ = true;
  mutable int walks_ = 0;
  VmChoice choice_;
};

TEST_F(JvmspecsSearchTest, LooksIntoHintedFolders) {
  install(L"drive\\far\\away\\not\\java.exe");
  install(L"one\\java.exe");
  install(L"two\\bin\\java.exe");
  install(L"three\\jre\\bin\\java.exe");
  install(L"four\\jdk-4\\bin\\java.exe");
  install(L"four\\jdk-5\\bin\\java.exe", 5);
  install(L"four\\jre-6\\bin\\javaw.exe");
  environment_ = {
      {L"Java_Home", folder_.at(L"two")}, {L"QUOTED", L"\"" + folder_.at(L"two") + L"\""}, {L"EMPTY", L""}};
  const std::pair<std::string, const wchar_t*> rows[] = {
      {hints("one"), L"one\\java.exe"},
      {hints(hostPath(L"one") + "\\"), L"one\\java.exe"},
      {hints("one\\java.exe"), L"one\\java.exe"},
      {hints("two"), L"two\\bin\\java.exe"},
      {hints("./one/../two"), L"two\\bin\\java.exe"},
      {hints("three"), L"three\\jre\\bin\\java.exe"},
      {hints("%JAVA_HOME%"), L"two\\bin\\java.exe"},
      {hints("%java_home%\\..\\one"), L"one\\java.exe"},
      {hints("%QUOTED%"), L"two\\bin\\java.exe"},
      {hints("%UNSET%one"), L""},
      {hints("%EMPTY%one"), L""},
      {hints("missing"), L""},
      {hints("four\\*"), L"four\\jdk-5\\bin\\java.exe"},
      {hints("*\\jdk-4"), L"four\\jdk-4\\bin\\java.exe"},
      {hints("four\\jdk*4\\bin"), L"four\\jdk-4\\bin\\java.exe"},
      {"JVM_EXE: javaw.exe\n" + hints("four\\*"), L"four\\jre-6\\bin\\javaw.exe"},
      {"JVM_EXE: javaw\n" + hints("four\\*"), L"four\\jre-6\\bin\\javaw.exe"},
      {"JVM_EXE: jdk-4/bin/java\n" + hints("four"), L"four\\jdk-4\\bin\\java.exe"},
  };
  for (const auto& [description, expected] : rows)
    EXPECT_EQ(searchWith(description), expected) << description;
}

TEST_F(JvmspecsSearchTest, LooksUpHintedRegistryKeys) {
  install(L"one\\bin\\java.exe");
  install(L"two\\bin\\java.exe", 4);
  install(L"three\\bin\\java.exe", 5);
  const ThrowAwayKey key;
  key.set(L"", nullptr, folder_.at(L"one"));
  key.set(L"two", L"JavaHome", folder_.at(L"two"));
  key.set(L"two", nullptr, folder_.at(L"three"));
  key.set(L"nothing", L"JavaHome", L"");
  EXPECT_EQ(searchWith(hints(key.hint())), L"two\\bin\\java.exe");
  EXPECT_THAT(choice_.considered, SizeIs(2));
  EXPECT_EQ(choice_.considered[1].where,
            L"jvmspecs\\0.txt: \\HKEY_CURRENT_USER\\Software\\ryn-jvmspecs-test\\two");
  EXPECT_EQ(searchWith(hints(key.hint() + "\\two")), L"two\\bin\\java.exe");

  // Lacking a home, the default value; never a name or a version.
  environment_ = {{L"ROOT", folder_.path()}};
  key.set(L"three", nullptr, L"%ROOT%\\three");
  key.set(L"four", nullptr, L"three");
  EXPECT_EQ(searchWith(hints(key.hint())), L"three\\bin\\java.exe");
  EXPECT_THAT(choice_.considered, SizeIs(3));

  for (const std::string& hint : {key.hint() + "\\missing", key.hint().substr(1),
                                  std::string("\\HKEY_CURRENT_USER"), std::string("\\HKEY_CURRENT_USER\\")}) {
    EXPECT_EQ(searchWith(hints(hint)), L"") << hint;
  }
}

TEST_F(JvmspecsSearchTest, TakesTheFirstDescriptionWithAnAcceptableVm) {
  install(L"one\\java.exe");
  install(L"two\\java.exe", 4);
  install(L"three\\java.exe", 5);
  rules_.validVmList = L"J2";
  describe(hints("one"));
  describe("PLATFORM_HINT:\nLinux\nMac\n/:\n" + hints("three"));
  describe(hints("one\ntwo"));
  describe(hints("three"));
  EXPECT_EQ(search(), L"two\\java.exe");
  std::vector<std::pair<std::wstring, VmOutcome>> record;
  for (const ConsideredVm& vm : choice_.considered) {
    EXPECT_EQ(vm.source, VmSource::kDescription);
    record.emplace_back(vm.where, vm.outcome);
  }
  EXPECT_THAT(record, ElementsAre(std::pair(L"jvmspecs\\0.txt: one", VmOutcome::kNoMatchingToken),
                                  std::pair(L"jvmspecs\\2.txt: one", VmOutcome::kDuplicate),
                                  std::pair(L"jvmspecs\\2.txt: two", VmOutcome::kChosen)));

  count_ = 1;
  EXPECT_EQ(search(), L"") << "descriptions beyond the number that is given";
}

TEST_F(JvmspecsSearchTest, AppliesTheRules) {
  install(L"one\\java.exe", 4);
  install(L"two\\java.exe", 5);
  const std::string both = hints("one\ntwo");
  EXPECT_EQ(searchWith(both), L"two\\java.exe");
  rules_.jvmHigh = L"0";
  EXPECT_EQ(searchWith(both), L"one\\java.exe");
  rules_.folderRefusal = [](const VmCandidate& vm) { return fileName(vm.folder) == L"one"; };
  EXPECT_EQ(searchWith(both), L"two\\java.exe");
  rules_.validVmList = L"our-token";
  std::wstring asked;
  rules_.validator = [&](const VmCandidate& vm, const std::wstring& token) {
    asked += token + L" " + fileName(vm.folder);
    return true;
  };
  EXPECT_EQ(searchWith(both), L"two\\java.exe");
  EXPECT_EQ(asked, L"our-token two") << "a VM in a refused folder must not even be started";
  rules_.preference = 1;
  EXPECT_EQ(searchWith(both), L"");
}

TEST_F(JvmspecsSearchTest, WalksTheMachineWhenNoHintHelps) {
  install(L"drive\\one\\two\\jre\\bin\\java.exe");
  install(L"drive\\one\\two\\three\\four\\java.exe", 5);
  environment_ = {{L"ProgramFiles", folder_.at(L"programs")}};
  describe(hints("missing"));
  describe("VERSION: 1\n");
  EXPECT_EQ(search(), L"drive\\one\\two\\jre\\bin\\java.exe");

  install(L"programs\\vendor\\jdk\\bin\\java.exe", 5);
  EXPECT_EQ(search(), L"programs\\vendor\\jdk\\bin\\java.exe");
  install(L"hinted\\java.exe");
  walks_ = 0;
  EXPECT_EQ(searchWith(hints("hinted")), L"hinted\\java.exe");
  EXPECT_EQ(walks_, 0);
}

TEST_F(JvmspecsSearchTest, WalksOnceAndOnlyForDescriptionsThatSaySomething) {
  install(L"drive\\java.exe");
  describe("# nothing\n");
  describe("PLATFORM_HINT:\nLinux\n/:\n");
  ++count_;
  EXPECT_EQ(search(), L"");
  EXPECT_EQ(walks_, 0);

  rules_.validVmList = L"MSJ";
  for (int i = 0; i < 3; ++i) describe("VERSION: 1\n");
  EXPECT_EQ(search(), L"");
  EXPECT_EQ(walks_, 1);
}

TEST_F(JvmspecsSearchTest, SaysWhenTheDrivesAreUnknown) {
  install(L"drive\\java.exe");
  install(L"programs\\java\\java.exe");
  drivesKnown_ = false;
  testing::internal::CaptureStderr();
  EXPECT_EQ(searchWith("VERSION: 1\n"), L"");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "Could not get the logical drives for the windows system\n");
  environment_ = {{L"PROGRAMFILES", folder_.at(L"programs")}};
  EXPECT_EQ(searchWith("VERSION: 1\n"), L"programs\\java\\java.exe");
}

TEST(WalkFoldersTest, GoesLevelByLevelUpToTheLimit) {
  const test::TempFolder root;
  root.makeFolder(L"a\\x\\deep");
  root.makeFolder(L"a\\y");
  root.makeFolder(L"b\\z");
  root.write(L"a\\file");
  std::vector<std::wstring> all = {root.at(L"a"),    root.path(),   root.at(L"a\\x"),
                                   root.at(L"a\\y"), root.at(L"b"), root.at(L"a\\x\\deep"),
                                   root.at(L"b\\z")};
  EXPECT_EQ(walkFolders({root.at(L"a"), root.path(), root.at(L"A")}, 2, 100), all);
  for (const size_t limit : {6u, 4u, 1u}) {
    all.resize(limit);
    EXPECT_EQ(walkFolders({root.at(L"a"), root.path()}, 2, limit), all);
  }
  EXPECT_THAT(walkFolders({root.at(L"missing")}, 2, 100), SizeIs(1));
}

TEST(ExpandWildcardsTest, HoldsTheLimit) {
  const test::TempFolder root;
  for (const wchar_t* name : {L"a\\x", L"a\\y", L"b\\x"}) root.makeFolder(name);
  EXPECT_THAT(expandWildcards(root.at(L"*\\*"), 100),
              ElementsAre(root.at(L"a\\x"), root.at(L"a\\y"), root.at(L"b\\x")));
  EXPECT_THAT(expandWildcards(root.at(L"*\\*\\none"), 2),
              ElementsAre(root.at(L"a\\x\\none"), root.at(L"a\\y\\none")));
}

TEST(FitsPlatformTest, KnowsTheWordsForWindows) {
  const std::pair<std::vector<std::wstring>, bool> rows[] = {
      {{}, true},
      {{L"Windows"}, true},
      {{L"Pure 64 bit WINDOWS"}, true},
      {{L"Linux", L"win32"}, true},
      {{L"Any"}, true},
      {{L"Linux", L"Solaris"}, false},
      {{L"Darwin"}, false},
  };
  for (const auto& [hints, fits] : rows) {
    EXPECT_EQ(fitsPlatform(hints), fits) << testing::PrintToString(hints);
  }
}

TEST(FixedDrivesTest, NamesTheSystemDrive) {
  const auto roots = FixedDrives().roots();
  ASSERT_TRUE(roots);
  EXPECT_THAT(*roots, testing::Contains(L"C:\\"));
}

}  // namespace
}  // namespace ryn
