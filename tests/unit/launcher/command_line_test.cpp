#include "launcher/command_line.h"

#include <gtest/gtest.h>
#include <windows.h>

// Behind the header that it takes its types from.
#include <shellapi.h>

#include "platform/unique_handle.h"
#include "tests/unit/support/process_state.h"
#include "tests/unit/support/temp_folder.h"

namespace ryn {
namespace {

using Words = std::vector<std::wstring>;

TEST(CommandLineTest, SplitsAndRejoins) {
  const std::pair<const wchar_t*, Words> rows[] = {
      {L"", {}},
      {L"   ", {}},
      {L"C:\\x.exe a  b ", {L"C:\\x.exe", L"a", L"b"}},
      {L"\"C:\\x y.exe\" a", {L"C:\\x y.exe", L"a"}},
      {L"\"C:\\x y.exe\"a b", {L"C:\\x y.exe", L"a", L"b"}},
      {L"\"C:\\x y.exe a", {L"C:\\x y.exe a"}},
      {L"  \"x\" a", {L"x", L"a"}},
      {L"x.exe \"a b\" c", {L"x.exe", L"a b", L"c"}},
      // Runs of blanks are lost, tabs and backslashes are ordinary.
      {L"x.exe \"a   b\" c\td \"e\\\" f\"", {L"x.exe", L"a b", L"c\td", L"e\\", L"f\""}},
      {L"x.exe \"\" \" a \"", {L"x.exe", L"", L"", L"a", L""}},
      {L"x.exe \"a b c", {L"x.exe", L"a b c"}},
      {L"x.exe \"", {L"x.exe", L""}},
      {L"x.exe a\"b c\"d", {L"x.exe", L"a\"b", L"c\"d"}},
      {L"x.exe \"a\"\"b\" c", {L"x.exe", L"a\"\"b", L"c"}},
      // A quoted wildcard stays as it is; only the first piece is looked at.
      {L"x.exe \"*.txt\" \"a* b\" \"c *\"", {L"x.exe", L"\"*.txt\"", L"\"a*", L"b\"", L"c *"}},
  };
  for (const auto& [text, arguments] : rows)
    EXPECT_EQ(parseCommandLine(text).arguments, arguments) << testing::PrintToString(text);
}

TEST(CommandLineTest, ReadsSwitches) {
  // Service name and console flag.
  const std::tuple<const wchar_t*, Words, const wchar_t*, bool> rows[] = {
      {L"x -tqrynservice My a", {L"x", L"a"}, L"My", false},
      {L"x a -tqrynservice", {L"x", L"a"}, L"", false},
      {L"x -TQRynService My", {L"x", L"-TQRynService", L"My"}, L"", false},
      {L"x -tqrynservice \"My b\"", {L"x", L"b\""}, L"\"My", false},
      {L"x -tqrynservice -i console", {L"x", L"console"}, L"-i", false},
      {L"x -tqrynservice A -tqrynservice B", {L"x"}, L"B", false},
      {L"x -i console a", {L"x", L"-i", L"console", L"a"}, L"", true},
      {L"x -i Console", {L"x", L"-i", L"Console"}, L"", false},
      {L"x -i gui -i console", {L"x", L"-i", L"gui", L"-i", L"console"}, L"", true},
      {L"x a -i", {L"x", L"a", L"-i"}, L"", false},
      {L"x -i -i console", {L"x", L"-i", L"-i", L"console"}, L"", false},
      {L"x -i -tqrynservice My", {L"x", L"-i", L"-tqrynservice", L"My"}, L"", false},
      {L"x -tempdir", {L"x", L"-tempdir"}, L"", false},
      {L"x -tempdir -i console", {L"x", L"-tempdir", L"-i", L"console"}, L"", false},
  };
  for (const auto& [text, arguments, name, console] : rows) {
    const CommandLine parsed = parseCommandLine(text);
    EXPECT_EQ(parsed.arguments, arguments) << testing::PrintToString(text);
    EXPECT_EQ(parsed.serviceName, name) << testing::PrintToString(text);
    EXPECT_EQ(parsed.service, *name != 0) << testing::PrintToString(text);
    EXPECT_EQ(parsed.console, console) << testing::PrintToString(text);
  }
}

TEST(CommandLineTest, SplitsAsWindowsAndFindsTheSilentArgument) {
  const std::pair<const wchar_t*, std::optional<bool>> rows[] = {
      {L"x", {}},
      {L"x \t ", {}},
      {L"\"x silent\"", {}},
      {L"\"x silent", {}},
      {L"x silent", true},
      {L"\"x y.exe\"SILENT ", true},
      {L" silent", true},
      {L"x\"y silent\" z", false},
      {L"x a\tsi\"len\"t", true},
      {L"x silent \"\"", false},
      {L"x silent a", false},
      {L"x \"silent a", false},
      {L"x \"a\" \"silent", true},
      {L"x silent\\", false},
      {L"x \"a\\\" silent", false},
      {L"x \"a\\\\\" silent", true},
      {L"x a\\\\\\\"b \\\\c \"\\\\\\\"d\" \"e\\\\", false},
      // Rows of quotes: two, three and four, from outside and from inside, with and without a backslash.
      {L"x a\"\" silent", true},
      {L"x \"\"\"silent", false},
      {L"x \"a\"\" silent", true},
      {L"x \"a\"\"\" silent", false},
      {L"x \"\"\"\" silent", false},
      {L"x \\\"\"\" silent", true},
      {L"x \"a\\\"\"\"\"\" b\" silent", false},
  };
  for (const auto& [text, silent] : rows) {
    EXPECT_EQ(silentArgument(text), silent) << testing::PrintToString(text);
    int count = 0;
    const UniqueLocalMemory memory(CommandLineToArgvW(text, &count));
    const auto* words = static_cast<wchar_t* const*>(memory.get());
    EXPECT_EQ(splitAsWindows(text), Words(words, words + count)) << testing::PrintToString(text);
  }
}

TEST(CommandLineTest, TakesTheTempFolderFromQuotesOnly) {
  const test::TempFolder folder;
  const std::wstring name = folder.makeFolder(L"tmp");
  folder.makeFolder(L"ab c");
  const test::ScopedCurrentFolder here(folder.path());
  const std::pair<std::wstring, std::wstring> rows[] = {
      {L"x -tempdir \"" + name + L"\"", name},
      {L"x -i -tempdir \"" + name + L"\"", name},
      {L"x -tempdir \"tmp\"", name},
      {L"x -tempdir " + name, L""},
      {L"x -tempdir \"" + folder.at(L"missing") + L"\"", L""},
      {L"x -tempdir \"" + folder.write(L"file") + L"\"", L""},
      {L"x -tempdir \"", L""},
      // The last character goes whatever it is, and a blank ends the token.
      {L"x -tempdir \"" + name + L"x", name},
      {L"x -tempdir \"" + folder.at(L"ab c") + L"\"", L""},
      {L"x -tempdir \"" + name + L"\" -tempdir nothing", L""},
  };
  for (const auto& [text, expected] : rows) EXPECT_EQ(parseCommandLine(text).tempFolder, expected) << text;
  EXPECT_EQ(parseCommandLine(rows[0].first).arguments, (Words{L"x", L"-tempdir", name}));
}

TEST(CommandLineTest, ExpandsWhatExists) {
  const test::TempFolder folder(test::TempFolder::Name::kNonAscii);
  folder.write(L"data\\Long name.txt");
  folder.write(L"plain.txt");
  const test::ScopedCurrentFolder here(folder.path());
  // Of the two with "/" one exists on Windows, one under Wine.
  EXPECT_EQ(parseCommandLine(
                L"plain.txt data \"data\\Long name.txt\" data/../plain.txt missing.txt /windows /tmp .")
                .arguments,
            (Words{folder.at(L"plain.txt"), folder.at(L"data"), folder.at(L"data\\Long name.txt"),
                   folder.at(L"plain.txt"), L"missing.txt", L"/windows", L"/tmp", folder.path()}));
}

}  // namespace
}  // namespace ryn
