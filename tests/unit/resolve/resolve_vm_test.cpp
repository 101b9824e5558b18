#include "resolve/resolve_vm.h"

#include <gtest/gtest.h>

#include "tests/unit/support/fake_probe.h"
#include "vmlaunch/launch_plan.h"
#include "vmsearch/folder_walk.h"
#include "vmsearch/vm_names.h"

namespace ryn {
namespace {

constexpr wchar_t kApp[] = L"C:\\app";
constexpr wchar_t kJdk[] = L"HKLM\\SOFTWARE\\JavaSoft\\JDK\\";
constexpr wchar_t kJre[] = L"HKLM\\SOFTWARE\\JavaSoft\\JRE\\";
constexpr wchar_t kOldJre[] = L"HKLM\\SOFTWARE\\JavaSoft\\Java Runtime Environment\\";

/// An application in C:\app on a machine of the test's making.
class ResolveVmTest : public testing::Test {
 protected:
  /// `home` gets a VM's programs and, under `key`, its registration.
  void registerVm(const std::wstring& key, const std::wstring& home) {
    machine_.vm(home + L"\\bin", {8, 0, 0, 0});
    machine_.value(key, L"JavaHome", home);
    machine_.value(key, L"MicroVersion", L"0");
  }

  void describe(const std::wstring& content) {
    const std::wstring number = decimal(descriptions_++);
    machine_.texts[concat({kApp, L"\\jvmspecs\\", number})] = content;
    jvmspecs_ +=
        concat({L"build.jvmspec.", number, L"=", number, L"\nbuild.jvmspec.total.num=",
                decimal(descriptions_), L"\nbuild.jvmspec.applicable=true\nbuild.option=withoutvm\n"});
  }

  static std::wstring hints(const std::wstring& lines) { return concat({L"PATH_HINT:\n", lines, L"\n/:\n"}); }

  /// The answer for these properties behind a list that admits all; one line for each entry of the record:
  /// "source outcome place version".
  std::wstring resolve(const std::wstring& lines = L"") {
    PropertyFile properties, jvmspecs;
    properties.parse(
        concat({L"ryn.nl.valid.vm.list=ALL\nryn.nl.win32.java.launcher.platform=2\n", lines, L"\n"}));
    jvmspecs.parse(jvmspecs_);
    choice_ = resolveVm({.properties = properties,
                         .jvmspecs = jvmspecs_.empty() ? nullptr : &jvmspecs,
                         .applicationFolder = kApp,
                         .environment = environment_,
                         .console = console_,
                         .exhaustive = exhaustive_},
                        machine_, fetcher_);
    std::wstring record;
    size_t chosen = 0;
    for (const ConsideredVm& vm : choice_.considered) {
      const VmVersion version = vm.candidate.version;
      const std::wstring& place = vm.candidate.folder.empty() ? vm.where : vm.candidate.folder;
      record += concat({nameOf(vm.source), L" ", nameOf(vm.outcome), L" ", place, L" ",
                        decimal(version.generation()), L".", decimal(version.micro()), L"\n"});
      if (vm.outcome == VmOutcome::kChosen) ++chosen;
    }
    EXPECT_EQ(chosen, choice_.chosen ? 1u : 0u) << testing::PrintToString(record);
    return record;
  }

  /// The plan for what was chosen last, in a launch with these properties.
  LaunchPlan planFor(const std::wstring& lines, bool service = false) {
    PropertyFile properties;
    properties.parse(concat({L"ryn.nl.java.launcher.main.class=M\n", lines, L"\n"}));
    return planLaunch(choice_,
                      {.properties = properties,
                       .propertiesPath = ryn_,
                       .tempPropertiesPath = temp_,
                       .programPath = L"C:\\a.exe",
                       .defaultFolder = L"D:\\",
                       .commandLine = L" a.exe \t\"\\",
                       .arguments = arguments_,
                       .environment = environment_,
                       .console = console_,
                       .service = service,
                       .stopInput = service},
                      machine_);
  }

  /// Folder of the chosen VM; empty for none.
  std::wstring chosen(const std::wstring& lines = L"") {
    resolve(lines);
    return choice_.chosen ? choice_.chosen->folder : std::wstring();
  }

  test::FakeProbe machine_;
  EnvironmentMap environment_;
  std::wstring jvmspecs_;
  int descriptions_ = 0;
  bool console_ = false;
  bool exhaustive_ = false;
  PackFetcher fetcher_;
  VmChoice choice_;
  std::wstring ryn_ = L"D:\\me\\a.ryn";
  std::wstring temp_;
  std::vector<std::wstring> arguments_;
};

TEST_F(ResolveVmTest, TheEnvironmentNamesTheVm) {
  registerVm(std::wstring(kJre) + L"17.0.2", L"C:\\jre17");
  machine_.vm(L"C:\\app\\my jdk\\bin", {21, 0, 1, 0});
  const std::pair<const wchar_t*, const wchar_t*> rows[] = {
      {L"C:\\app\\my jdk\\bin\\java.exe", L"environment chosen C:\\app\\my jdk 21.1\n"},
      {L"my jdk/bin/java.exe", L"environment chosen C:\\app\\my jdk 21.1\n"},
      {L"\\app\\my jdk\\x\\..\\bin\\java.exe", L"environment chosen C:\\app\\my jdk 21.1\n"},
      {L"C:\\app\\my jdk\\bin",
       L"environment missing C:\\app\\my jdk\\bin 0.0\nregistry chosen C:\\jre17 17.2\n"},
      {L"D:\\none.exe", L"environment missing D:\\none.exe 0.0\nregistry chosen C:\\jre17 17.2\n"},
      {L"", L"registry chosen C:\\jre17 17.2\n"},
  };
  for (const auto& [value, record] : rows) {
    environment_ = {{L"Ryn_Vm", value}};
    EXPECT_EQ(resolve(), record);
  }
  exhaustive_ = true;
  environment_[L"Ryn_Vm"] = rows[0].first;
  EXPECT_EQ(resolve(), L"environment chosen C:\\app\\my jdk 21.1\nregistry notReached C:\\jre17 17.2\n");
}

TEST_F(ResolveVmTest, TheCurrentVmComesFirstIfTheListAdmitsIt) {
  registerVm(std::wstring(kJre) + L"17.0.2", L"C:\\jre17");
  machine_.vm(L"C:\\app\\jre\\bin", {8, 0, 3010, 0});
  const std::wstring current = L"ryn.nl.current.vm=jre/bin/java.exe\n";
  const std::pair<std::wstring, const wchar_t*> rows[] = {
      {L"ryn.nl.valid.vm.list=", L"C:\\app\\jre"},
      {L"ryn.nl.valid.vm.list=JDK JRE", L"C:\\app\\jre"},
      // The platform number does not count for it.
      {L"ryn.nl.win32.java.launcher.platform=1", L"C:\\app\\jre"},
      {L"ryn.nl.valid.vm.list=17+", L"C:\\jre17"},
      {L"ryn.nl.valid.vm.list=JDK", L""},
  };
  for (const auto& [line, home] : rows)
    EXPECT_EQ(chosen(current + line), home) << testing::PrintToString(line);
  EXPECT_EQ(resolve(current + L"ryn.nl.valid.vm.list=17+"),
            L"currentVm noMatchingToken C:\\app\\jre 8.3010\nregistry chosen C:\\jre17 17.2\n");
  EXPECT_EQ(resolve(L"ryn.nl.current.vm=none.exe"),
            L"currentVm missing C:\\app\\none.exe 0.0\nregistry chosen C:\\jre17 17.2\n");

  // In a folder that the launch would refuse it is passed over, unless there is no list to choose by.
  machine_.administrator = true;
  machine_.unsafe = {L"C:\\app\\jre\\bin"};
  const std::wstring secure = current + L"ryn.nl.designer.jvm.securefolder.check=";
  EXPECT_EQ(resolve(secure + L"true"),
            L"currentVm unsafeFolder C:\\app\\jre 8.3010\nregistry chosen C:\\jre17 17.2\n");
  EXPECT_EQ(chosen(secure + L"TRUE"), L"C:\\app\\jre");
  EXPECT_EQ(chosen(secure + L"true\nryn.nl.valid.vm.list="), L"C:\\app\\jre");
}

TEST_F(ResolveVmTest, ReadsTheRegistry) {
  const std::wstring java2 = L"HKLM\\SOFTWARE\\IBM\\Java2 Runtime Environment\\";
  registerVm(std::wstring(kJdk) + L"11.0.2", L"C:\\jdk11");
  registerVm(std::wstring(kJre) + L"11.0.3", L"C:\\jre11");
  registerVm(java2 + L"1.4.2", L"C:\\ibm");
  registerVm(L"HKLM\\SOFTWARE\\IBM\\Java Development Kit\\1.3", L"C:\\ibm3");
  machine_.value(java2 + L"1.4.2", L"MicroVersion", L" 2nd");
  machine_.value(std::wstring(kJre) + L"17", L"MicroVersion", L"0");
  machine_.value(std::wstring(kOldJre) + L"1.8.0_1", L"JavaHome", L"C:\\jre11");
  registerVm(std::wstring(kOldJre) + L"1.8.0_2", L"C:\\gone");
  std::erase_if(machine_.files, [](const std::wstring& path) { return path.starts_with(L"C:\\gone"); });
  registerVm(std::wstring(kOldJre) + L"1.8.0_3", L"C:\\console only");
  machine_.files.erase(L"C:\\console only\\bin\\javaw.exe");
  registerVm(std::wstring(kOldJre) + L"1.8.0_4", L"relative");
  EXPECT_EQ(resolve(),
            L"registry outranked C:\\jdk11 11.2\n"
            L"registry chosen C:\\jre11 11.3\n"
            L"registry unreadableKey \\HKEY_LOCAL_MACHINE\\SOFTWARE\\JavaSoft\\JRE\\17 17.0\n"
            L"registry unreadableKey \\HKEY_LOCAL_MACHINE\\SOFTWARE\\JavaSoft\\Java Runtime "
            L"Environment\\1.8.0_1 8.1\n"
            L"registry noUsableHome C:\\gone 8.2\n"
            L"registry noUsableHome C:\\console only 8.3\n"
            L"registry noUsableHome relative 8.4\n"
            L"registry outranked C:\\ibm 4.0\n"
            L"registry outranked C:\\ibm3 3.0\n");
  const VmCandidate& ibm = choice_.considered[choice_.considered.size() - 2].candidate;
  EXPECT_EQ(ibm.version, VmVersion(4, 2, 0));
  EXPECT_EQ(ibm.kind, VmKind::kJdk);
  EXPECT_EQ(ibm.vendor, L"IBM");
  EXPECT_EQ(choice_.considered.back().candidate.kind, VmKind::kJre);
}

TEST_F(ResolveVmTest, KeepsTheExactVersionsOfOneHome) {
  registerVm(std::wstring(kOldJre) + L"1.8", L"C:\\a");
  registerVm(std::wstring(kOldJre) + L"1.8.0_202", L"C:\\A\\\\");
  machine_.vm(L"C:\\A\\bin", {8, 0, 0, 0});
  registerVm(std::wstring(kOldJre) + L"1.8.0_45", L"C:\\b");
  EXPECT_EQ(chosen(), L"C:\\A");
  registerVm(std::wstring(kJdk) + L"19", L"C:\\nineteen");
  registerVm(std::wstring(kJre) + L"19", L"C:\\nineteen");
  EXPECT_EQ(chosen(L"ryn.nl.valid.vm.list=JRE"), L"C:\\nineteen");
  machine_.value(L"HKLM\\SOFTWARE\\JavaSoft\\JRE\\19.0", L"JavaHome", L"C:\\Nineteen");
  machine_.vm(L"C:\\Nineteen\\bin", {19, 0, 0, 0});
  EXPECT_NE(resolve().find(L"registry duplicate C:\\Nineteen"), std::wstring::npos);
}

TEST_F(ResolveVmTest, SearchesPathFolderByFolder) {
  machine_.vm(L"C:\\one\\bin", {11, 0, 2, 0});
  machine_.vm(L"C:\\two", {8, 0, 0, 0}, true);
  // Also below whatever folder is current.
  for (const wchar_t* relative : {L"C:\\app\\here", L"here", L".\\here"})
    machine_.vm(relative, {25, 0, 0, 0});
  machine_.file(L"C:\\link\\java.exe");
  machine_.links[L"C:\\link\\java.exe"] = L"C:\\two\\java.exe";
  environment_ = {
      {L"Path", L"C:\\none;;here;C:\\one\\bin;\"C:\\two\";.\\here;C:\\ONE\\BIN\\;C:\\one\\bin\\;C:\\link"}};
  EXPECT_EQ(resolve(L"ryn.nl.jvm.high=0"),
            L"path chosen C:\\one\\bin 11.2\npath notFirst C:\\one\\bin 11.2\n"
            L"path notFirst C:\\two 8.0\npath notFirst C:\\two 8.0\n"
            L"path duplicate C:\\two 8.0\n");
  EXPECT_EQ(choice_.considered[2].candidate.kind, VmKind::kJdk);
  EXPECT_FALSE(machine_.asked.contains(L"C:\\none\\java.exe"));
  // The registry comes first when the highest is wanted, and behind PATH when the first is.
  registerVm(std::wstring(kJre) + L"11.0.2", L"C:\\registered");
  EXPECT_EQ(chosen(), L"C:\\registered");
  EXPECT_EQ(chosen(L"ryn.nl.jvm.high=0"), L"C:\\one\\bin");
}

TEST_F(ResolveVmTest, KnowsThe64BitViewUnderWow64) {
  registerVm(std::wstring(kJre) + L"11.0.2", L"C:\\jre32");
  machine_.vm(L"C:\\jre64\\bin", {8, 0, 0, 0});
  machine_.registry64[machine_.fullKey(std::wstring(kJre) + L"9.0.4")][L"JavaHome"] = L"C:\\jre64";
  machine_.vm(L"C:\\Windows\\SysWOW64", {6, 0, 0, 0});
  machine_.vm(L"C:\\path", {7, 0, 0, 0});
  machine_.images32 = {L"C:\\Windows\\SysWOW64\\java.exe", L"C:\\Windows\\SysWOW64\\javaw.exe"};
  environment_ = {{L"PATH", L"C:\\path"}};
  const std::wstring platform = L"ryn.nl.win32.java.launcher.platform=";
  EXPECT_EQ(chosen(platform + L"1"), L"");
  EXPECT_EQ(chosen(platform + L"3"), L"C:\\jre32");
  machine_.wow64 = true;
  EXPECT_EQ(resolve(platform + L"1"),
            L"registry otherBitness C:\\jre32 11.2\nregistry chosen C:\\jre64 9.4\n"
            L"path outranked C:\\path 7.0\npath outranked C:\\path 7.0\n"
            L"path otherBitness C:\\Windows\\SysWOW64 6.0\n"
            L"path otherBitness C:\\Windows\\SysWOW64 6.0\n");
  EXPECT_EQ(chosen(platform + L"2"), L"C:\\jre64");
  EXPECT_EQ(chosen(platform + L"3"), L"C:\\jre32");
}

TEST_F(ResolveVmTest, AdmitsImagesOfTheWantedBitness) {
  registerVm(std::wstring(kJre) + L"11.0.2", L"C:\\jre64");
  machine_.vm(L"C:\\jre32\\bin", {17, 0, 0, 0});
  machine_.images32 = {L"C:\\jre32\\bin\\javaw.exe"};
  environment_ = {{L"RYN_VM", L"C:\\jre32\\bin\\java.exe"}};
  EXPECT_EQ(chosen(L"ryn.win32.vm.bits=32"), L"C:\\jre32");
  EXPECT_EQ(resolve(L"ryn.win32.vm.bits=64"),
            L"environment wrongBits C:\\jre32 17.0\nregistry chosen C:\\jre64 11.2\n");
  EXPECT_EQ(chosen(L"ryn.win32.vm.bits=128"), L"C:\\jre32");
  environment_ = {{L"PATH", L"C:\\jre32\\bin"}};
  EXPECT_EQ(chosen(L"ryn.win32.vm.bits=64"), L"C:\\jre64");
  EXPECT_EQ(
      chosen(L"ryn.win32.vm.bits=64\nryn.nl.valid.vm.list=\nryn.nl.current.vm=C:\\jre32\\bin\\java.exe"),
      L"");
}

TEST_F(ResolveVmTest, AsksTheValidatorOnlyWhereThereIsOne) {
  registerVm(std::wstring(kJre) + L"17.0.2", L"C:\\seventeen");
  registerVm(std::wstring(kJre) + L"21", L"C:\\twentyone");
  registerVm(std::wstring(kJre) + L"24", L"C:\\slow");
  registerVm(std::wstring(kJre) + L"25", L"C:\\windowless");
  machine_.files.erase(L"C:\\windowless\\bin\\java.exe");
  const std::wstring list = L"ryn.nl.valid.vm.list=MSJ 17-20";
  EXPECT_EQ(chosen(list), L"C:\\seventeen");
  EXPECT_TRUE(machine_.validated.empty());

  machine_.file(L"C:\\app\\jvmspecs\\Verify.jar");
  machine_.answers = {{L"C:\\twentyone\\bin\\java.exe", ValidatorAnswer::kAccepted},
                      {L"C:\\slow\\bin\\java.exe", ValidatorAnswer::kTimedOut},
                      {L"C:\\windowless\\bin\\javaw.exe", ValidatorAnswer::kNotStarted}};
  EXPECT_EQ(resolve(list),
            L"registry validatorRejected C:\\seventeen 17.2\nregistry chosen C:\\twentyone 21.0\n"
            L"registry validatorTimedOut C:\\slow 24.0\n"
            L"registry validatorNotStarted C:\\windowless 25.0\n");
  EXPECT_EQ(machine_.validated.front(), L"C:\\seventeen\\bin\\java.exe 17-20");
  machine_.validated.clear();
  EXPECT_EQ(chosen(L"ryn.nl.valid.vm.list=17\""), L"");
  EXPECT_TRUE(machine_.validated.empty());
}

TEST_F(ResolveVmTest, LooksIntoHintedPlaces) {
  for (const wchar_t* nowhere : {L"C:\\app\\java.exe", L"java.exe"}) {
    machine_.file(nowhere);
    machine_.resources[nowhere].productVersion = {25, 0, 0, 0};
  }
  machine_.vm(L"C:\\app\\one", {11, 0, 0, 0});
  machine_.vm(L"C:\\two\\bin", {12, 0, 0, 0});
  machine_.vm(L"C:\\three\\jre\\bin", {13, 0, 0, 0});
  machine_.vm(L"C:\\four\\jdk-14\\bin", {14, 0, 0, 0});
  machine_.vm(L"C:\\four\\jdk-15\\bin", {15, 0, 0, 0});
  machine_.file(L"C:\\five\\bin\\other.exe");
  machine_.value(L"HKCU\\Software\\Adoptium\\JDK\\16\\hotspot\\MSI", L"Path", L"C:\\two\\");
  machine_.value(L"HKCU\\Software\\Zulu\\zulu-17", L"InstallationPath", L"C:\\three");
  machine_.value(L"HKCU\\Software\\Plain", L"", L"%Two%");
  machine_.value(L"HKCU\\Software\\Percent", L"", L"%Two%\\bin");
  machine_.value(L"HKCU\\Software\\Quote", L"", L"\"C:\\two\"\\bin");
  machine_.value(L"HKCU\\Software\\Names", L"JavaHome", L"17");
  machine_.value(L"HKCU\\Software\\Names", L"Path", L"C:\\two");
  environment_ = {{L"Two", L"C:\\two"},
                  {L"LIST", L"C:\\none;;\"C:\\three\";C:\\two"},
                  {L"LEAF", L"two"},
                  {L"EMPTY", L""}};
  const std::pair<std::wstring, const wchar_t*> rows[] = {
      {hints(L"one"), L"C:\\app\\one"},
      {hints(L"./x/../one"), L"C:\\app\\one"},
      {hints(L"C:\\two\\"), L"C:\\two"},
      {hints(L"C:\\two\\bin\\java.exe"), L"C:\\two"},
      {hints(L"C:\\two\\bin\\javaw.exe"), L""},
      {hints(L"C:\\two" + std::wstring(32'761, L';')), L"C:\\two"},
      {hints(L"C:\\two" + std::wstring(32'762, L';')), L""},
      {hints(L"C:\\three"), L"C:\\three\\jre"},
      {hints(L"%TWO%"), L"C:\\two"},
      {hints(L"C:\\%LEAF%\\"), L"C:\\two"},
      {hints(L"%LIST%"), L"C:\\three\\jre"},
      {hints(L"%UNSET%C:\\two"), L""},
      {hints(L"%EMPTY%C:\\two"), L""},
      {hints(L"C:\\four\\*"), L"C:\\four\\jdk-15"},
      {hints(L"C:\\*\\jdk-14"), L"C:\\four\\jdk-14"},
      {hints(L"C:\\four\\jdk*4\\bin"), L"C:\\four\\jdk-14"},
      {L"JVM_EXE: javaw\n" + hints(L"C:\\two"), L"C:\\two"},
      {L"JVM_EXE: javaw.exe\n" + hints(L"C:\\two"), L"C:\\two"},
      {L"PLATFORM_HINT:\nAll\n/:\n" + hints(L"C:\\two"), L"C:\\two"},
      {L"PLATFORM_HINT:\nany\n/:\n" + hints(L"C:\\two"), L"C:\\two"},
      {L"PLATFORM_HINT:\nLinux\n*\n/:\n" + hints(L"C:\\two"), L"C:\\two"},
      {L"PLATFORM_HINT:\nWindows XP\n/:\n" + hints(L"C:\\two"), L"C:\\two"},
      {L"PLATFORM_HINT:\nDarwin\n/:\n" + hints(L"C:\\two"), L""},
      {L"JVM_EXE: jdk-14/bin/java\n" + hints(L"C:\\four"), L"C:\\four\\jdk-14"},
      {L"JVM_EXE: other\n" + hints(L"C:\\five"), L"C:\\five"},
      {hints(L"\\HKEY_CURRENT_USER\\Software\\Adoptium\\JDK\\*\\hotspot\\MSI"), L"C:\\two"},
      {hints(L"\\HKEY_CURRENT_USER\\Software\\*\\*\\hotspot\\MSI"), L""},
      {hints(L"\\HKEY_CURRENT_USER\\Software\\Zulu"), L"C:\\three\\jre"},
      {hints(L"\\HKEY_CURRENT_USER\\Software\\Plain"), L"C:\\two"},
      {hints(L"\\HKEY_CURRENT_USER\\Software\\Percent"), L"C:\\two"},
      {hints(L"\\HKEY_CURRENT_USER\\Software\\Quote"), L"C:\\two"},
      {hints(L"\\HKEY_CURRENT_USER\\Software\\Names"), L"C:\\two"},
      {hints(L"\\HKEY_CURRENT_USER\\Software\\None"), L""},
      {hints(L"\\HKEY_CURRENT_USER"), L""},
  };
  machine_.drives = std::nullopt;
  for (const auto& [description, home] : rows) {
    jvmspecs_.clear(), descriptions_ = 0;
    describe(description);
    EXPECT_EQ(chosen(), home) << testing::PrintToString(description);
  }
  // One place by two names, and a second description, which nobody asks any more.
  jvmspecs_.clear(), descriptions_ = 0;
  describe(hints(L"\\HKEY_CURRENT_USER\\Software\\Plain\nC:\\two\\bin"));
  describe(hints(L"C:\\three"));
  EXPECT_EQ(resolve(), L"description chosen C:\\two 12.0\ndescription duplicate C:\\two\\bin 0.0\n");
}

TEST_F(ResolveVmTest, WalksWhenNoHintHelps) {
  machine_.vm(L"C:\\evil\\bin", {25, 0, 0, 0});
  machine_.vm(L"C:\\Program Files\\Java\\jdk-8\\bin", {8, 0, 0, 0});
  machine_.vm(L"C:\\Program Files\\a\\b\\c\\bin", {21, 0, 0, 0});
  machine_.vm(L"C:\\Program Files\\link\\bin", {22, 0, 0, 0});
  machine_.links[L"C:\\Program Files\\link"] = L"D:\\";
  machine_.vm(L"C:\\hinted", {7, 0, 0, 0});
  environment_ = {{L"ProgramFiles", L"C:\\Program Files"}};
  machine_.texts[L"C:\\app\\jvmspecs\\unused"] = hints(L"C:\\evil");
  describe(L"# nothing\n");
  describe(L"PLATFORM_HINT:\nLinux\n/:\n" + hints(L"C:\\evil"));
  describe(hints(L"C:\\none"));
  EXPECT_EQ(resolve(),
            L"description noDescription C:\\app\\jvmspecs\\0 0.0\n"
            L"description otherSystem C:\\app\\jvmspecs\\1 0.0\n"
            L"description chosen C:\\Program Files\\Java\\jdk-8 8.0\n");
  EXPECT_EQ(choice_.considered.back().where, L"C:\\app\\jvmspecs\\2: C:\\Program Files\\Java\\jdk-8");
  // Hints of any description come before the walk; roots come last, and never for an administrator.
  describe(hints(L"C:\\hinted"));
  EXPECT_EQ(chosen(), L"C:\\hinted");
  EXPECT_EQ(chosen(L"ryn.nl.valid.vm.list=25"), L"C:\\evil");
  machine_.administrator = true;
  EXPECT_EQ(chosen(L"ryn.nl.valid.vm.list=25"), L"");
  exhaustive_ = true;
  EXPECT_NE(resolve().find(L"chosen C:\\hinted 7.0\ndescription notReached C:\\Program Files\\Java\\jdk-8"),
            std::wstring::npos);
  EXPECT_EQ(walkFolders({L"C:\\"}, 2, 3, machine_).size(), 3u);
  EXPECT_EQ(expandWildcards(L"C:\\*", 2, machine_).size(), 2u);
}

TEST_F(ResolveVmTest, FollowsTheBuildOptions) {
  registerVm(std::wstring(kJre) + L"17.0.2", L"C:\\jre17");
  const std::wstring shipped = L"C:\\app\\Windows\\resource\\jre";
  machine_.vm(shipped + L"\\bin", {11, 0, 0, 0});
  machine_.vm(L"C:\\app\\fetched\\bin", {24, 0, 0, 0});
  std::wstring fetched;
  const PackFetcher fetcher = [&](const VmPack& pack, std::wstring_view text) {
    fetched =
        concat({pack.url, L" ", pack.digest, pack.verify ? L"! " : L" ", text.substr(text.find(L'\n') + 1)});
    return std::wstring(L"C:\\app\\fetched\\bin\\java.exe");
  };
  const std::wstring packs =
      L"build.without.vm.not.found.download.url=http://a/11.vm\nbuild.without.vm.direct.download.url=http://"
      L"a/12.vm\n"
      L"build.without.vm.not.found.download.url.md5Checksum.applicable=true\n"
      L"build.without.vm.not.found.download.url.md5Checksum.value=eleven\n"
      L"build.without.vm.dont.search.download.url.md5Checksum.applicable=True\n"
      L"build.without.vm.dont.search.download.url.md5Checksum.value=twelve\n";
  const std::wstring with = L"build.option=withvm\nbuild.with.vm.search.option=";
  const std::wstring without = L"build.option=withoutvm\nbuild.without.vm.search.option=";
  const struct {
    std::wstring options;
    /// Chosen when the list admits the installed VM, and when it does not.
    std::wstring found, notFound;
    std::wstring fetched;
  } rows[] = {
      {L"build.option=withvm", L"C:\\jre17", shipped, L""},
      {with + L"20", L"C:\\jre17", shipped, L""},
      {with + L"21", shipped, shipped, L""},
      {with + L"22", L"", L"", L""},
      {with + L"x", L"", L"", L""},
      {L"build.option=withoutvm", L"C:\\jre17", L"", L""},
      {without + L"10", L"C:\\jre17", L"", L""},
      {without + L"11", L"C:\\jre17", L"C:\\app\\fetched", L"http://a/11.vm eleven! Installer exiting..."},
      {without + L"12", L"C:\\app\\fetched", L"C:\\app\\fetched",
       L"http://a/12.vm twelve Installer Exiting..."},
      {without + L"20", L"", L"", L""},
      {L"build.option=WithVM", L"", L"", L""},
      {L"build.option=", L"", L"", L""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.options));
    jvmspecs_ = concat({packs, row.options, L"\n"});
    fetcher_ = fetcher;
    fetched.clear();
    EXPECT_EQ(chosen(), row.found);
    fetched.clear();
    EXPECT_EQ(chosen(L"ryn.nl.valid.vm.list=JDK"), row.notFound);
    EXPECT_EQ(fetched, row.fetched);
    fetcher_ = nullptr;
    const bool named = row.notFound == L"C:\\app\\fetched";
    EXPECT_EQ(resolve(L"ryn.nl.valid.vm.list=JDK").find(L"pack notFetched http://a/") != std::wstring::npos,
              named);
  }
  fetcher_ = fetcher;
  fetched.clear();
  exhaustive_ = true;
  jvmspecs_ = concat({packs, without, L"11\n"});
  EXPECT_EQ(resolve(), L"registry chosen C:\\jre17 17.2\npack notFetched http://a/11.vm 0.0\n");
  EXPECT_EQ(fetched, L"");
  exhaustive_ = false;
  jvmspecs_ = with + L"21\n";
  std::erase_if(machine_.files, [&](const std::wstring& path) { return path.starts_with(shipped); });
  EXPECT_EQ(resolve(), L"shipped missing " + shipped + L"\\bin\\java.exe 0.0\n");
}

TEST_F(ResolveVmTest, UsesNoHalfUnpackedVm) {
  const std::wstring one = L"C:\\app\\Windows\\resource\\jre";
  const std::wstring two = L"C:\\app\\Windows_Pure_64_Bit\\resource\\jre\\jre";
  machine_.vm(one + L"\\bin", {11, 0, 0, 0});
  machine_.vm(two + L"\\bin", {12, 0, 0, 0});
  jvmspecs_ = L"build.option=withvm\nbuild.with.vm.search.option=21\n";
  EXPECT_EQ(chosen(), one);
  machine_.file(one + L"\\ryn.unpacking");
  EXPECT_EQ(chosen(), two);
  machine_.file(L"C:\\app\\Windows_Pure_64_Bit\\resource\\jre\\ryn.unpacking");
  EXPECT_EQ(resolve(), L"shipped halfUnpacked " + one + L"\\bin\\java.exe 0.0\n");
  jvmspecs_.clear();
  EXPECT_EQ(resolve(L"ryn.nl.current.vm=Windows/resource/jre/bin/java.exe"),
            L"currentVm halfUnpacked " + one + L"\\bin\\java.exe 0.0\n");
}

TEST_F(ResolveVmTest, DescriptionsNeedTheWordAndACount) {
  machine_.vm(L"C:\\one", {11, 0, 0, 0});
  describe(hints(L"C:\\one"));
  const std::wstring complete = jvmspecs_;
  EXPECT_EQ(chosen(), L"C:\\one");
  for (const wchar_t* line : {L"build.jvmspec.total.num=0\n", L"build.jvmspec.applicable=yes\n"}) {
    jvmspecs_ = complete + line;
    EXPECT_EQ(chosen(), L"") << testing::PrintToString(line);
  }
  // Of two, the first has no name and the second is not counted.
  jvmspecs_ = complete + L"build.jvmspec.0=\nbuild.jvmspec.1=0\n";
  EXPECT_EQ(chosen(), L"");
  // What is counted need not be there; what has a key is read, in the order of the numbers.
  machine_.vm(L"C:\\two", {11, 0, 0, 0});
  describe(hints(L"C:\\two"));
  jvmspecs_ =
      complete +
      L"build.jvmspec.10=0\nbuild.jvmspec.9=1\nbuild.jvmspec.0=\nbuild.jvmspec.08=0\nbuild.jvmspec.-1=0\n"
      L"build.jvmspec.total.num=11111111111\n";
  EXPECT_EQ(chosen(), L"C:\\two");
}

TEST_F(ResolveVmTest, APlanSaysWhatALaunchDoes) {
  registerVm(std::wstring(kJre) + L"17.0.2", L"C:\\jre17");
  machine_.file(L"C:\\ms\\jview.exe");
  machine_.resources[L"C:\\ms\\jview.exe"].fileVersion = {5, 0, 3810, 0};
  const std::wstring lines =
      L"ryn.class.path=lib\\a.jar;$ENV_CLASSPATH$\nryn.user.dir=data/x\nryn.nl.java.option.verbose=Loud\n"
      L"ryn.nl.win32.microsoftvm.min.version=3811\nryn.nl.designer.jvm.securefolder.check=true\n";
  ryn_ = L"C:\\app\\hello.ryn";
  temp_ = L"C:\\t\\ryn1.tmp";
  arguments_ = {L"hello.exe", L"C:\\my file"};
  environment_ = {{L"classpath", L"C:\\b.jar"}};
  resolve();
  LaunchPlan plan = planFor(lines);
  EXPECT_EQ(plan.facts, L"");
  EXPECT_TRUE(plan.variables.empty());
  EXPECT_EQ(plan.program, L"C:\\jre17\\bin\\javaw.exe");
  EXPECT_EQ(plan.request.workingDirectory, L"C:\\app\\data\\x");
  EXPECT_EQ(plan.request.diagnostics, L"invalid verbosity selection 'loud', disabling verbosity.\n");
  EXPECT_EQ(plan.considered.size(), 1u);
  EXPECT_EQ(plan.refusal, LaunchRefusal::kNone);
  EXPECT_EQ(plan.commandLine,
            L"\"C:\\jre17\\bin\\javaw.exe\" --add-opens java.base/jdk.internal.loader=ALL-UNNAMED "
            L"-Dsun.java2d.uiScale.enabled=false -Djava.locale.useOldISOCodes=true -classpath "
            L"\"C:\\app\\lib\\a.jar;C:\\b.jar;\" M \"C:/app/hello.ryn\" \"C:/t/ryn1.tmp\" \"C:\\\\my file\"");
  machine_.administrator = true;
  machine_.unsafe = {L"C:\\jre17\\bin"};
  EXPECT_EQ(planFor(lines).refusal, LaunchRefusal::kUnsafeFolder);

  environment_ = {{L"RYN_VM", L"C:\\ms\\jview.exe"}};
  resolve();
  plan = planFor(lines);
  EXPECT_EQ(plan.refusal, LaunchRefusal::kVmTooOld);
  EXPECT_EQ(plan.program, L"C:\\ms\\wjview.exe");
  EXPECT_EQ(planFor(L"ryn.nl.win32.microsoftvm.min.version=3810").refusal, LaunchRefusal::kNone);
  machine_.resources.clear();
  EXPECT_EQ(planFor(L"").refusal, LaunchRefusal::kNone);
  EXPECT_EQ(planFor(L"ryn.nl.win32.microsoftvm.min.version=1").refusal, LaunchRefusal::kVmTooOld);
}

TEST_F(ResolveVmTest, APlanReadsItsProperties) {
  registerVm(std::wstring(kJre) + L"17.0.2", L"C:\\jre17");
  resolve();
  const struct {
    const wchar_t* verbose;
    bool isOn;
    std::wstring option, diagnostics;
  } rows[] = {{L"", false, L"", L""},
              {L"Normal", true, L"", L""},
              {L"all", true, L"", L""},
              {L"GC", true, L"gc", L""},
              {L"class", true, L"class", L""},
              {L"none", false, L"", L""},
              {L"x", false, L"", L"invalid verbosity selection 'x', disabling verbosity.\n"}};
  for (const auto& row : rows) {
    const LaunchRequest request = planFor(concat({L"ryn.nl.java.option.verbose=", row.verbose})).request;
    EXPECT_EQ(std::tie(request.verbose, request.verbosityOption, request.diagnostics),
              std::tie(row.isOn, row.option, row.diagnostics))
        << std::wstring(row.verbose);
  }
  const std::pair<const wchar_t*, bool> flags[] = {
      {L"TRUE", true}, {L"on", true}, {L"t", true}, {L"yes", false}};
  for (const auto& [text, isOn] : flags) {
    EXPECT_EQ(planFor(concat({L"ryn.nl.java.option.debugging=", text})).request.debugging, isOn)
        << std::wstring(text);
  }
  ryn_ = L"C:\\app\\hello.ryn";
  for (const auto& [text, folder] :
       {std::pair{L"", L"D:\\"}, {L"C:/x", L"C:/x"}, {L"x/y", L"C:\\app\\x\\y"}}) {
    EXPECT_EQ(planFor(concat({L"ryn.user.dir=", text})).request.workingDirectory, folder);
  }
}

TEST_F(ResolveVmTest, APlanWritesEveryOption) {
  registerVm(std::wstring(kJre) + L"1.8.0", L"C:\\jre8");
  machine_.file(L"C:\\old\\bin\\jrew.exe");
  const std::wstring name = L"ryn.nl.java.option.", heap = name + L"java.heap.size.",
                     collector = name + L"garbage.collection.";
  const std::wstring lines = concat({heap, L"initial=1\n", heap, L"max=2k\n", name, L"verbose=GC\n", name,
                                     L"debugging=t\n", collector, L"background.thread=t\n", collector,
                                     L"extent=x\n", name, L"compiler=t\n", name, L"verify.mode=t\n", name,
                                     L"additional=-Dz\nryn.class.path=;a.jar;;b.jar\nryn.win32.job=true\n"});
  for (const auto& [vm, commandLine] :
       {std::pair{L"",
                  L"\"C:\\jre8\\bin\\javaw.exe\" -Xms1 -Xmx2048 -verbose:gc -Xdebug -Xnoasyncgc "
                  L"-Djava.compiler=off "
                  L"-Xnoclassgc -Dz -classpath \"C:\\app\\a.jar;C:\\app\\b.jar;\" "},
        {L"C:\\old\\bin\\jrew.exe",
         L"\"C:\\old\\bin\\jrew.exe\" -ms1 -mx2048 -verbose -debug -noasyncgc -nojit -noclassgc -Dz -cp "
         L"\"C:\\app\\a.jar;C:\\app\\b.jar;C:\\old\\lib\\classes.zip;\" "}}) {
    environment_ = {{L"RYN_VM", vm}};
    resolve();
    ryn_ = L"C:\\app\\hello.ryn";
    const LaunchPlan plan = planFor(lines);
    EXPECT_EQ(plan.commandLine.substr(0, std::wstring_view(commandLine).size()), commandLine);
    EXPECT_TRUE(plan.request.verifyMode);
    EXPECT_TRUE(plan.request.endsWithLauncher);
    EXPECT_EQ(planFor(L"ryn.nl.java.option.debugging=t").options.back().text.substr(0, 3),
              vm[0] == 0 ? L"-Xd" : L"-de");
  }
}

TEST_F(ResolveVmTest, APlanTellsTheJavaSideWhatItAsksFor) {
  registerVm(std::wstring(kJre) + L"17.0.2", L"C:\\jre17");
  resolve();
  ryn_ = L"C:\\\u00e9\\a.ryn";
  temp_ = L"C:\\t.tmp";
  console_ = true;
  const std::wstring rest =
      L"ryn.launch.console=true\nryn.launch.file=C:\\\\\\u00e9\\\\a.ryn\nryn.launch.program=C:\\\\a.exe\n"
      L"ryn.launch.start.folder=D:\\\\\n";
  for (const wchar_t* key : {L"ryn.start.jar=a.jar\n", L"ryn.launch.arguments=Exact\n"}) {
    const LaunchPlan plan = planFor(key);
    EXPECT_EQ(plan.facts, L"ryn.launch.service=false\n" + rest) << key;
    EXPECT_TRUE(plan.variables.empty()) << key;
  }
  EXPECT_EQ(planFor(L"ryn.service.stop.seconds=3\n", true).facts,
            L"ryn.launch.service=true\n" + rest + L"ryn.launch.stop.input=true\n");
  const LaunchPlan exact = planFor(L"ryn.launch.arguments=exact\n");
  EXPECT_EQ(exact.facts,
            L"ryn.launch.service=false\n" + rest + L"ryn.launch.command.line=\\u0020a.exe \\u0009\"\\\\\n");
  EXPECT_EQ(exact.variables, (EnvironmentMap{{L"RYN_LAUNCH_PROPERTIES", L"C:\\t.tmp"}}));
}

TEST_F(ResolveVmTest, APlanWritesPathsByTheirShortNames) {
  registerVm(std::wstring(kJre) + L"17.0.2", L"C:\\\u6587");
  resolve();
  machine_.file(L"C:\\\u5fdc\\a.jar");
  machine_.file(L"C:\\\u5fdc\\t.tmp");
  machine_.file(L"C:\\\u00e9.jar");
  machine_.shortPaths = {{L"C:\\\u5fdc", L"C:\\1"},
                         {L"C:\\\u00e9.jar", L"C:\\3.jar"},
                         {L"C:\\\u5fdc\\a.jar", L"C:\\1\\a.jar"},
                         {L"C:\\\u5fdc\\t.tmp", L"C:\\1\\t.tmp"}};
  ryn_ = L"C:\\\u5fdc\\none.ryn";
  temp_ = L"C:\\\u5fdc\\t.tmp";
  const std::wstring on = L"ryn.win32.short.paths=yes\n";
  const std::wstring classes = L"ryn.class.path=a.jar;x/*;C:\\\u00e9.jar;C:\\new\\\u6587.jar;Q:\\\u6587\n";
  EXPECT_EQ(planFor(classes).refusal, LaunchRefusal::kNone);
  // The runtime's own folder has no short name.
  LaunchPlan plan = planFor(on + classes);
  EXPECT_EQ(plan.refusal, LaunchRefusal::kLostPath);
  EXPECT_EQ(plan.lostPath, L"C:\\\u6587\\bin\\javaw.exe");

  machine_.shortPaths[L"C:\\\u6587\\bin\\javaw.exe"] = L"C:\\2\\bin\\javaw.exe";
  plan = planFor(on + classes);
  EXPECT_EQ(plan.refusal, LaunchRefusal::kNone);
  EXPECT_EQ(plan.program, L"C:\\\u6587\\bin\\javaw.exe");
  EXPECT_TRUE(plan.commandLine.starts_with(L"\"C:\\2\\bin\\javaw.exe\" "));
  EXPECT_TRUE(plan.commandLine.ends_with(
      L" -classpath \"C:\\1\\a.jar;C:\\1\\x\\*;C:\\\u00e9.jar;C:\\new\\\u6587.jar;Q:\\\u6587;\" M "
      L"\"C:/1/none.ryn\" \"C:/1/t.tmp\" "));
  // A wildcard is as lost as its folder.
  machine_.folder(L"C:\\\u6587");
  EXPECT_EQ(planFor(on + L"ryn.class.path=C:\\\u6587\\*\n").lostPath, L"C:\\\u6587\\*");
  // The oldest have classes of theirs on the class path.
  registerVm(std::wstring(kOldJre) + L"1.1.8", L"C:\\\u6587");
  machine_.shortPaths[L"C:\\\u6587"] = L"C:\\2";
  resolve(L"ryn.nl.valid.vm.list=J1");
  EXPECT_NE(planFor(on).commandLine.find(L"C:\\2\\lib\\classes.zip"), std::wstring::npos);
}

TEST_F(ResolveVmTest, APlanTakesTheUsersOptions) {
  registerVm(std::wstring(kJre) + L"1.8.0", L"C:\\jre8");
  resolve();
  // UTF-8, one character for each byte.
  machine_.texts[L"D:\\me\\a.vmoptions"] =
      L"\u00ef\u00bb\u00bf# mine\n -Xmx1g -Da=b \r\n\n  #no\n-Dc=\u00c3\u00a9";
  environment_ = {{L"appdata", L"D:\\me"}};
  const std::wstring key = L"ryn.nl.java.option.additional=-Dx\nryn.user.options=";
  const auto textOf = [](const LaunchPlan& plan) {
    std::wstring text;
    for (const VmOption& option : plan.options) {
      text += (option.origin == OptionOrigin::kUser ? L"|user:" : L"|") + option.text;
    }
    return text;
  };
  const std::wstring user = L"|-Dx|user:-Xmx1g -Da=b|user:-Dc=\u00e9";
  EXPECT_EQ(textOf(planFor(key + L"%APPDATA%/a.vmoptions")), user);
  machine_.texts[L"D:\\me\\b.vmoptions"] = L"-Dy";
  EXPECT_EQ(textOf(planFor(key + L"%APPDATA%/b.vmoptions")), L"|-Dx|user:-Dy");
  const LaunchPlan plan = planFor(key + L"a.vmoptions");
  EXPECT_EQ(textOf(plan), user);
  EXPECT_NE(plan.commandLine.find(L"javaw.exe\" -Dx -Xmx1g -Da=b -Dc=\u00e9 -classpath "),
            std::wstring::npos);
  for (const wchar_t* file : {L"none.vmoptions", L"%NONE%\\a.vmoptions", L""}) {
    EXPECT_EQ(textOf(planFor(key + file)), L"|-Dx") << file;
  }
  EXPECT_TRUE(planFor(key + L"a.vmoptions", true).request.userOptions.isRefused);
  EXPECT_EQ(textOf(planFor(key + L"a.vmoptions", true)), L"|-Dx -Xrs");
  machine_.elevated = true;
  EXPECT_EQ(textOf(planFor(key + L"a.vmoptions")), L"|-Dx");
}

}  // namespace
}  // namespace ryn
