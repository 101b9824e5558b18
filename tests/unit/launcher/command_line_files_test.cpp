#include <gtest/gtest.h>
#include <windows.h>

// Behind the header that it takes its types from.
#include <shellapi.h>

#include "launcher/command_line.h"
#include "platform/files.h"
#include "platform/paths.h"
#include "platform/unique_handle.h"
#include "tests/unit/launcher/quoting_rows.h"
#include "tests/unit/support/process_state.h"
#include "tests/unit/support/temp_folder.h"

namespace ryn {
namespace {

using Words = std::vector<std::wstring>;

CommandLine parse(const std::wstring& text) {
  return parseCommandLine(
      text,
      {.exists = pathExists, .folderExists = folderExists, .normalise = normalisePath, .expand = expandPath});
}

TEST(CommandLineTest, SplitsAsWindows) {
  for (const auto& [text, silent] : test::kQuotingRows) {
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
  for (const auto& [text, expected] : rows) EXPECT_EQ(parse(text).tempFolder, expected) << text;
  EXPECT_EQ(parse(rows[0].first).arguments, (Words{L"x", L"-tempdir", name}));
}

TEST(CommandLineTest, ExpandsWhatExists) {
  const test::TempFolder folder(test::TempFolder::Name::kNonAscii);
  folder.write(L"data\\Long name.txt");
  folder.write(L"plain.txt");
  const test::ScopedCurrentFolder here(folder.path());
  // Of the two with "/" one exists on Windows, one under Wine.
  EXPECT_EQ(parse(L"plain.txt data \"data\\Long name.txt\" data/../plain.txt missing.txt /windows /tmp .")
                .arguments,
            (Words{folder.at(L"plain.txt"), folder.at(L"data"), folder.at(L"data\\Long name.txt"),
                   folder.at(L"plain.txt"), L"missing.txt", L"/windows", L"/tmp", folder.path()}));
}

}  // namespace
}  // namespace ryn
