#include "properties/keys.h"

#include <gtest/gtest.h>

#include <tuple>

#include "tests/unit/support/process_state.h"

namespace ryn {
namespace {

template <typename Value>
struct Accessor {
  std::wstring key;
  Value (*read)(const PropertyFile&);
  Value absent;

  Value of(const std::wstring& text) const {
    PropertyFile file;
    file.parse(key + L"=" + text + L"\n");
    return read(file);
  }
};

TEST(KeysTest, TextsAreReadAsTheyStand) {
  const Accessor<std::wstring> accessors[] = {
      {L"ryn.nl.current.vm", currentVm, L""},
      {L"ryn.nl.valid.vm.list", validVmList, L""},
      {L"ryn.nl.jvm.high", jvmHigh, L""},
      {L"ryn.nl.designer.jvm.securefolder.check", secureFolderCheck, L""},
      {L"ryn.nl.java.launcher.main.class", mainClass, L""},
      {L"ryn.class.path", classPath, L""},
      {L"ryn.user.dir", userDir, L""},
      {L"ryn.application.name", applicationName, L"Kestrune"},
      {L"ryn.stdout.redirect", stdoutRedirect, L""},
      {L"ryn.stderr.redirect", stderrRedirect, L""},
      {L"ryn.nl.java.option.verify.mode", optionVerifyMode, L""},
      {L"ryn.nl.java.option.verbose", optionVerbose, L""},
      {L"ryn.nl.java.option.garbage.collection.extent", optionGcExtent, L""},
      {L"ryn.nl.java.option.garbage.collection.background.thread", optionGcBackgroundThread, L""},
      {L"ryn.nl.java.option.debugging", optionDebugging, L""},
      {L"ryn.nl.java.option.compiler", optionCompiler, L""},
      {L"ryn.nl.java.option.additional", optionAdditional, L""},
      {L"ryn.installer.windows.ui.default", installerUi, L""},
  };
  for (const auto& accessor : accessors) {
    EXPECT_EQ(accessor.read(PropertyFile()), accessor.absent) << accessor.key;
    EXPECT_EQ(accessor.of(L"Some Text"), L"Some Text") << accessor.key;
    EXPECT_EQ(accessor.of(L""), L"") << accessor.key;
  }
}

TEST(KeysTest, SizesTakeASuffix) {
  const Accessor<uint64_t> accessors[] = {
      {L"ryn.nl.java.option.java.heap.size.initial", optionHeapInitial, 0},
      {L"ryn.nl.java.option.java.heap.size.max", optionHeapMax, 0},
      {L"ryn.nl.win32.java.launcher.platform", launcherPlatform, 1}};
  const std::pair<const wchar_t*, uint64_t> rows[] = {
      {L"256", 256}, {L"64m", 67108864}, {L"512K", 524288}, {L"1g", 1},   {L"2 k", 2048}, {L"k", 0},
      {L"abc", 0},   {L"", 0},           {L"12mk", 12288},  {L"010", 10}, {L"0x10", 0},   {L"1.5m", 1048576}};
  for (const auto& accessor : accessors) {
    EXPECT_EQ(accessor.read(PropertyFile()), accessor.absent) << accessor.key;
    for (const auto& [text, size] : rows) EXPECT_EQ(accessor.of(text), size) << std::wstring(text);
  }
  EXPECT_EQ(parseSize(L"8192M"), 8192ULL << 20);
  EXPECT_EQ(parseSize(L"6000000000"), 6000000000);
}

TEST(KeysTest, BooleansAndIntegersHaveTheirWords) {
  const Accessor<bool> pause = {L"ryn.win32.console.pause", consolePause, false};
  EXPECT_FALSE(consolePause(PropertyFile()));
  for (const wchar_t* text : {L"true", L"yes", L"On"}) EXPECT_TRUE(pause.of(text)) << std::wstring(text);
  for (const wchar_t* text : {L"", L"1", L"y", L"t", L"truex", L"false"}) {
    EXPECT_FALSE(pause.of(text)) << std::wstring(text);
  }
  const Accessor<int32_t> build = {L"ryn.nl.win32.microsoftvm.min.version", microsoftVmMinVersion, 0};
  EXPECT_EQ(microsoftVmMinVersion(PropertyFile()), 0);
  EXPECT_EQ(build.of(L"3805"), 3805);
  EXPECT_EQ(build.of(L"-3k"), -3);
  EXPECT_EQ(build.of(L"none"), 0);
}

TEST(KeysTest, ClassPathTakesTheVariableInOnce) {
  const Accessor<std::wstring> accessor = {L"ryn.class.path", classPath, L""};
  const std::tuple<std::optional<std::wstring>, std::wstring, std::wstring> rows[] = {
      {L"c.jar", L"a.jar;$ENV_CLASSPATH$;b.jar", L"a.jar;c.jar;b.jar"},
      {L"c.jar", L"$ENV_CLASSPATH$;$ENV_CLASSPATH$", L"c.jar;$ENV_CLASSPATH$"},
      {L"c.jar", L"$env_classpath$;$ENV_CLASSPATH", L"$env_classpath$;$ENV_CLASSPATH"},
      {L"C:\\\u4e2d.jar", L"$ENV_CLASSPATH$", L"C:\\\u4e2d.jar"},
      {std::nullopt, L"a;$ENV_CLASSPATH$", L"a;"}};
  for (const auto& [value, stored, read] : rows) {
    const test::ScopedVariable variable(L"CLASSPATH", value);
    EXPECT_EQ(accessor.of(stored), read);
  }
}

}  // namespace
}  // namespace ryn
