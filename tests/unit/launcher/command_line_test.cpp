#include "launcher/command_line.h"

#include <gtest/gtest.h>

#include "tests/unit/launcher/quoting_rows.h"

namespace ryn {
namespace {

using Words = std::vector<std::wstring>;

// A machine without files.
CommandLine parse(const std::wstring& text) {
  static constexpr auto kNo = [](const std::wstring&) { return false; };
  static constexpr auto kNothing = [](const std::wstring&) { return std::wstring(); };
  return parseCommandLine(text,
                          {.exists = kNo, .folderExists = kNo, .normalise = kNothing, .expand = kNothing});
}

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
    EXPECT_EQ(parse(text).arguments, arguments) << testing::PrintToString(text);
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
    const CommandLine parsed = parse(text);
    EXPECT_EQ(parsed.arguments, arguments) << testing::PrintToString(text);
    EXPECT_EQ(parsed.serviceName, name) << testing::PrintToString(text);
    EXPECT_EQ(parsed.service, *name != 0) << testing::PrintToString(text);
    EXPECT_EQ(parsed.console, console) << testing::PrintToString(text);
  }
}

TEST(CommandLineTest, FindsTheSilentArgument) {
  for (const auto& [text, silent] : test::kQuotingRows)
    EXPECT_EQ(silentArgument(text), silent) << testing::PrintToString(text);
}

TEST(CommandLineTest, AsksTheFileSystem) {
  // "dir" is the only folder, "file" the only file.
  const PathLookup paths = {
      .exists = [](const std::wstring& path) { return path == L"dir" || path == L"file"; },
      .folderExists = [](const std::wstring& path) { return path == L"dir"; },
      .normalise = [](const std::wstring& path) { return L"C:\\" + path; },
      .expand = [](const std::wstring& path) { return L"C:\\long\\" + path; }};
  const std::tuple<const wchar_t*, Words, const wchar_t*> rows[] = {
      {L"x -tempdir \"dir\" file /file",
       {L"x", L"-tempdir", L"C:\\long\\dir", L"C:\\long\\file", L"/file"},
       L"C:\\dir"},
      {L"x -tempdir \"file\"", {L"x", L"-tempdir", L"C:\\long\\file"}, L""},
      {L"x -tempdir dir", {L"x", L"-tempdir", L"C:\\long\\dir"}, L""},
      {L"x -tempdir \"", {L"x", L"-tempdir", L""}, L""},
      {L"x -i -tempdir \"dir?", {L"x", L"-i", L"-tempdir", L"dir?"}, L"C:\\dir"},
      {L"x -tempdir \"dir\" -tempdir no", {L"x", L"-tempdir", L"C:\\long\\dir", L"-tempdir", L"no"}, L""},
  };
  for (const auto& [text, arguments, folder] : rows) {
    EXPECT_EQ(parseCommandLine(text, paths).arguments, arguments) << testing::PrintToString(text);
    EXPECT_EQ(parseCommandLine(text, paths).tempFolder, folder) << testing::PrintToString(text);
  }
}

}  // namespace
}  // namespace ryn
