#include "vmsearch/classify.h"

#include <gtest/gtest.h>

#include <optional>
#include <set>

#include "tests/unit/support/fake_probe.h"
#include "vmsearch/vm_program.h"

namespace ryn {
namespace {

using test::FakeProbe;

VersionResource product(FourPartVersion version) {
  // The file version is another on purpose: it does not count.
  return {.fileVersion = FourPartVersion{9, 9, 9, 9}, .productVersion = version, .companyName = {}};
}

TEST(ClassifyTest, TellsKindsByNameAndCompiler) {
  FakeProbe probe;
  probe.files = {L"C:\\kit\\bin\\javac.exe"};
  const std::pair<const wchar_t*, VmKind> rows[] = {
      {L"C:\\kit\\bin\\java.exe", VmKind::kJdk},   {L"C:\\kit\\bin\\anything.exe", VmKind::kJdk},
      {L"C:\\jre\\bin\\java.exe", VmKind::kJre},   {L"C:\\kit\\bin\\jre.exe", VmKind::kJre},
      {L"C:\\kit\\bin\\JREW.EXE", VmKind::kJre},   {L"C:\\kit\\bin\\jview.exe", VmKind::kMsj},
      {L"C:\\kit\\bin\\WJView.exe", VmKind::kMsj}, {L"C:\\kit\\bin/java.exe", VmKind::kJre},
  };
  for (const auto& [path, kind] : rows)
    EXPECT_EQ(kindOfExecutable(path, probe), kind) << testing::PrintToString(path);
}

TEST(ClassifyTest, FillsTheCandidate) {
  const std::wstring path = L"C:\\jre\\bin\\java.exe";
  FakeProbe probe;
  const std::pair<const wchar_t*, const wchar_t*> vendors[] = {{L"IBM Corporation", L"IBM"},
                                                               {L"The ibm people", L"IBM"},
                                                               {L"Sun Microsystems", L"Sun"},
                                                               {L"", L"Sun"}};
  for (const auto& [company, vendor] : vendors) {
    probe.resources[path] = {.fileVersion = {}, .productVersion = {{17, 0, 9, 0}}, .companyName = company};
    const VmCandidate candidate = classifyExecutable(path, probe);
    EXPECT_EQ(candidate.vendor, vendor) << testing::PrintToString(company);
    EXPECT_EQ(candidate.executable, path);
    EXPECT_EQ(candidate.folder, L"C:\\jre\\bin");
    EXPECT_EQ(candidate.version, VmVersion(17, 0, 9));
    EXPECT_EQ(candidate.bitnessClass, 0);
  }
  probe.resources[L"C:\\w\\JView.exe"] = product({5, 0, 3810, 0});
  const VmCandidate microsoft = classifyExecutable(L"C:\\w\\JView.exe", probe);
  EXPECT_EQ(microsoft.vendor, L"Microsoft");
  EXPECT_EQ(microsoft.version, VmVersion(1, 4, 0));
}

TEST(ClassifyTest, TakesTheProductVersionFirst) {
  const std::pair<FourPartVersion, VmVersion> rows[] = {
      {{1, 4, 2, 19}, VmVersion(4, 2, 19)},
      {{1, 3, 1, 2}, VmVersion(3, 1, 2)},
      {{6, 0, 200, 2}, VmVersion(6, 0, 200)},
      {{7, 0, 10, 5}, VmVersion(7, 0, 10)},
      {{25, 0, 2, 0}, VmVersion(25, 0, 2)},
      {{0, 5, 6, 7}, VmVersion(0, 5, 6)},
      {{8, 40000, 0, 0}, VmVersion(8, static_cast<int16_t>(40000), 0)},
  };
  FakeProbe probe;
  // Signs that would say something else.
  probe.value(L"HKLM\\SOFTWARE\\JavaSoft\\Java Runtime Environment", L"CurrentVersion", L"1.6");
  probe.files = {L"C:\\system32\\pack200.exe"};
  for (const auto& [words, version] : rows) {
    EXPECT_EQ(versionOfExecutable(L"C:\\system32\\java.exe", VmKind::kJre, product(words), probe), version)
        << testing::PrintToString(words);
  }
}

TEST(ClassifyTest, AsksTheRegistryForTheSystemFolder) {
  FakeProbe probe;
  probe.files = {L"C:\\Windows\\System32\\pack200.exe", L"C:\\x\\pack200.exe"};
  const std::wstring key = L"HKLM\\SOFTWARE\\JavaSoft\\Java Runtime Environment";
  const auto expectVersion = [&](VmVersion version) {
    for (const wchar_t* folder : {L"C:\\Windows\\System32", L"C:\\windows\\SysWOW64", L"D:\\SYSTEM32"}) {
      EXPECT_EQ(versionOfExecutable(std::wstring(folder) + L"\\java.exe", VmKind::kJre, {}, probe), version);
    }
  };
  expectVersion(VmVersion());
  probe.value(key, L"CurrentVersion", L"1.6");
  expectVersion(VmVersion());
  probe.value(key + L"\\1.6", L"MicroVersion", L"3");
  expectVersion(VmVersion(6, 3, 0));
  EXPECT_EQ(versionOfExecutable(L"C:\\x\\java.exe", VmKind::kJre, {}, probe), VmVersion(5, 0, 0));
}

TEST(ClassifyTest, FindsTheHomeOfANamedExecutable) {
  const std::pair<const wchar_t*, const wchar_t*> rows[] = {
      {L"C:\\jdk\\bin\\java.exe", L"C:\\jdk"},
      {L"C:\\jdk\\BIN\\javaw.exe", L"C:\\jdk"},
      {L"C:\\jdk\\java.exe", L"C:\\jdk"},
      {L"C:\\ms\\bin\\jview.exe", L"C:\\ms\\bin"},
  };
  for (const auto& [path, home] : rows) EXPECT_EQ(classifyNamedExecutable(path, FakeProbe()).folder, home);
}

TEST(VmProgramTest, FollowsTheKindAndTheConsole) {
  FakeProbe probe;
  for (const wchar_t* path :
       {L"C:\\modern\\bin\\java.exe", L"C:\\modern\\bin\\javaw.exe", L"C:\\windowless\\bin\\javaw.exe",
        L"C:\\consoleonly\\bin\\java.exe", L"C:\\W\\System32\\javaw.exe", L"C:\\W\\System32\\java.exe",
        L"C:\\W\\System32\\bin\\javaw.exe", L"C:\\W\\SysWOW64\\bin\\javaw.exe", L"C:\\W\\SysWOW64\\javaw.exe",
        L"C:\\old\\bin\\jre.exe", L"C:\\old\\bin\\jrew.exe"}) {
    probe.file(path);
  }
  const struct {
    const wchar_t* home;
    VmKind kind;
    int16_t generation;
    const wchar_t* windowless;
    const wchar_t* console;
  } rows[] = {
      {L"C:\\modern", VmKind::kJre, 8, L"C:\\modern\\bin\\javaw.exe", L"C:\\modern\\bin\\java.exe"},
      {L"C:\\modern\\bin", VmKind::kJre, 8, L"C:\\modern\\bin\\javaw.exe", L"C:\\modern\\bin\\java.exe"},
      {L"C:\\windowless", VmKind::kJre, 8, L"C:\\windowless\\bin\\javaw.exe", L"C:\\windowless\\java.exe"},
      // Without the windowless program the other one in "bin" does not count either.
      {L"C:\\consoleonly", VmKind::kJre, 8, L"C:\\consoleonly\\javaw.exe", L"C:\\consoleonly\\java.exe"},
      {L"C:\\W\\System32", VmKind::kJre, 8, L"C:\\W\\System32\\javaw.exe", L"C:\\W\\System32\\java.exe"},
      {L"C:\\W\\SysWOW64", VmKind::kJre, 8, L"C:\\W\\SysWOW64\\javaw.exe", L"C:\\W\\SysWOW64\\java.exe"},
      {L"C:\\old", VmKind::kJre, 1, L"C:\\old\\bin\\jrew.exe", L"C:\\old\\bin\\jre.exe"},
      {L"C:\\gone", VmKind::kJdk, 0, L"C:\\gone\\bin\\javaw.exe", L"C:\\gone\\bin\\java.exe"},
      {L"C:\\ms", VmKind::kMsj, 4, L"C:\\ms\\wjview.exe", L"C:\\ms\\jview.exe"},
  };
  for (const auto& row : rows) {
    VmCandidate vm;
    vm.folder = row.home;
    vm.kind = row.kind;
    vm.version = VmVersion(row.generation, 0, 0);
    EXPECT_EQ(vmProgram(vm, false, probe), row.windowless);
    EXPECT_EQ(vmProgram(vm, true, probe), row.console);
  }
}

TEST(ClassifyTest, InfersTheVersionFromTheFolder) {
  const struct {
    const wchar_t* executable;
    VmVersion version;
    std::set<std::wstring> names;
    VmKind kind;
    /// Of NPJava32.dll in bin, or in ..\jre\bin for a kit.
    std::optional<FourPartVersion> plugin = {};
  } rows[] = {
      {L"java.exe", VmVersion(5, 0, 0), {L"pack200.exe", L"client", L"hotspot", L"classic"}, VmKind::kJre},
      {L"java.exe", VmVersion(4, 0, 0), {L"client", L"hotspot", L"classic", L"jre.exe"}, VmKind::kJre},
      {L"java.exe", VmVersion(4, 0, 0), {L"server"}, VmKind::kJre},
      {L"java.exe", VmVersion(4, 0, 0), {L"..\\jre\\bin\\client"}, VmKind::kJdk},
      {L"java.exe", VmVersion(3, 0, 0), {L"hotspot", L"classic"}, VmKind::kJre},
      {L"java.exe", VmVersion(3, 0, 0), {L"..\\jre\\bin\\hotspot"}, VmKind::kJdk},
      {L"java.exe", VmVersion(2, 0, 0), {L"classic", L"jre.exe"}, VmKind::kJre},
      {L"java.exe", VmVersion(1, 0, 0), {L"jre.exe"}, VmKind::kJre},
      {L"java.exe", VmVersion(1, 0, 0), {L"jrew.exe"}, VmKind::kJdk},
      {L"JRE.exe", VmVersion(1, 0, 0), {}, VmKind::kJre},
      {L"java.exe", VmVersion(), {}, VmKind::kJre},
      // The plug-in knows better, from the fourth generation on in tenths; never about the first.
      {L"java.exe", VmVersion(6, 0, 20), {L"pack200.exe"}, VmKind::kJre, {{1, 6, 0, 207}}},
      {L"java.exe", VmVersion(4, 2, 1), {L"client"}, VmKind::kJdk, {{1, 4, 2, 10}}},
      {L"java.exe", VmVersion(3, 1, 20), {L"hotspot"}, VmKind::kJre, {{1, 3, 1, 20}}},
      {L"java.exe", VmVersion(1, 0, 0), {L"jre.exe"}, VmKind::kJre, {{1, 3, 1, 20}}},
      {L"java.exe", VmVersion(), {}, VmKind::kJre, {{1, 3, 1, 20}}},
  };
  for (const auto& row : rows) {
    FakeProbe probe;
    const std::wstring folder = L"C:\\j\\bin\\";
    for (const std::wstring& name : row.names) probe.files.insert(folder + name);
    if (row.plugin) {
      const wchar_t* place = row.kind == VmKind::kJdk ? L"..\\jre\\bin\\NPJava32.dll" : L"NPJava32.dll";
      probe.files.insert(folder + place);
      probe.resources[folder + place] = product(*row.plugin);
    }
    EXPECT_EQ(versionOfExecutable(folder + row.executable, row.kind, {}, probe), row.version)
        << testing::PrintToString(row.names);
    if (row.plugin) continue;
    // A plug-in without a version changes nothing.
    probe.files.insert({folder + L"NPJava32.dll", folder + L"..\\jre\\bin\\NPJava32.dll"});
    EXPECT_EQ(versionOfExecutable(folder + row.executable, row.kind, {}, probe), row.version);
  }
}

}  // namespace
}  // namespace ryn
