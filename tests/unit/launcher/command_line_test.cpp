#include "launcher/command_line.h"

#include <gtest/gtest.h>
#include <windows.h>

// Behind the header that it takes its types from.
#include <shellapi.h>

#include "platform/unique_handle.h"

namespace ryn {
namespace {

// How arguments are divided and which of them are switches; what becomes of existing paths and of the folder
// for temporary files is seen on whole launches.
TEST(CommandLineTest, SplitsRejoinsAndReadsSwitches) {
  const struct {
    const wchar_t* text;
    std::vector<std::wstring> arguments;
    const wchar_t* serviceName = L"";
    bool console = false;
  } rows[] = {
      {L"   ", {}},
      {L"\"C:\\x y.exe\"a b", {L"C:\\x y.exe", L"a", L"b"}},
      {L"\"C:\\x y.exe a", {L"C:\\x y.exe a"}},
      {L"  \"x\" a", {L"x", L"a"}},
      // Runs of blanks are lost, tabs and backslashes are ordinary.
      {L"x.exe \"a   b\" c\td \"e\\\" f\"", {L"x.exe", L"a b", L"c\td", L"e\\", L"f\""}},
      {L"x.exe \"\" \" a \"", {L"x.exe", L"", L"", L"a", L""}},
      {L"x.exe \"a b c", {L"x.exe", L"a b c"}},
      {L"x.exe \"", {L"x.exe", L""}},
      {L"x.exe a\"b c\"d \"a\"\"b\" c", {L"x.exe", L"a\"b", L"c\"d", L"a\"\"b", L"c"}},
      // A quoted wildcard stays as it is; only the first piece is looked at.
      {L"x.exe \"*.txt\" \"a* b\" \"c *\"", {L"x.exe", L"\"*.txt\"", L"\"a*", L"b\"", L"c *"}},
      {L"x -tqrynservice My a", {L"x", L"a"}, L"My"},
      {L"x a -tqrynservice", {L"x", L"a"}},
      {L"x -TQRynService My", {L"x", L"-TQRynService", L"My"}},
      {L"x -tqrynservice \"My b\"", {L"x", L"b\""}, L"\"My"},
      {L"x -tqrynservice -i console", {L"x", L"console"}, L"-i"},
      {L"x -tqrynservice A -tqrynservice B", {L"x"}, L"B"},
      {L"x -i console a", {L"x", L"-i", L"console", L"a"}, L"", true},
      {L"x -i gui -i console", {L"x", L"-i", L"gui", L"-i", L"console"}, L"", true},
      {L"x a -i", {L"x", L"a", L"-i"}},
      {L"x -i -i console", {L"x", L"-i", L"-i", L"console"}},
      {L"x -i -tqrynservice My", {L"x", L"-i", L"-tqrynservice", L"My"}},
      {L"x -tempdir", {L"x", L"-tempdir"}},
      {L"x -tempdir -i console", {L"x", L"-tempdir", L"-i", L"console"}},
  };
  for (const auto& row : rows) {
    const CommandLine parsed = parseCommandLine(row.text);
    EXPECT_EQ(parsed.arguments, row.arguments) << testing::PrintToString(row.text);
    EXPECT_EQ(parsed.serviceName, row.serviceName) << testing::PrintToString(row.text);
    EXPECT_EQ(parsed.service, *row.serviceName != 0) << testing::PrintToString(row.text);
    EXPECT_EQ(parsed.console, row.console) << testing::PrintToString(row.text);
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
    EXPECT_EQ(splitAsWindows(text), std::vector<std::wstring>(words, words + count))
        << testing::PrintToString(text);
  }
}

}  // namespace
}  // namespace ryn
