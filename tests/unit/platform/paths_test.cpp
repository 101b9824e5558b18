#include "platform/paths.h"

#include <gtest/gtest.h>

#include <tuple>

#include "tests/unit/support/process_state.h"
#include "tests/unit/support/temp_folder.h"

namespace ryn {
namespace {

using test::ScopedCurrentFolder;
using test::TempFolder;
using Text = const wchar_t*;

TEST(PathsTest, OnlyBackslashesSeparateFolderAndName) {
  const std::tuple<Text, Text, Text> rows[] = {
      {L"name.txt", L".", L"name.txt"}, {L"C:\\a\\name.txt", L"C:\\a", L"name.txt"},
      {L"\\name", L"", L"name"},        {L"C:/a/name.txt", L".", L"C:/a/name.txt"},
      {L"C:\\a\\", L"C:\\a", L""},      {L"", L".", L""}};
  for (const auto& [path, folder, name] : rows) {
    EXPECT_EQ(folderPart(path), folder);
    EXPECT_EQ(fileName(path), name);
  }
}

TEST(PathsTest, ReplacesTheExtensionOfTheFileNameOnly) {
  EXPECT_EQ(replaceExtension(L"C:\\a\\run.tar.exe", L".ryn"), L"C:\\a\\run.tar.ryn");
  EXPECT_EQ(replaceExtension(L"C:\\a.b\\run", L".ryn"), L"C:\\a.b\\run.ryn");
}

TEST(PathsTest, KnowsAbsolutePathsByTheirFirstTwoCharacters) {
  for (const Text path : {L"C:\\a", L"\\a", L"c:a"}) EXPECT_TRUE(isAbsolutePath(path)) << std::wstring(path);
  for (const Text path : {L"", L"a", L"/a", L"ab:"}) EXPECT_FALSE(isAbsolutePath(path)) << std::wstring(path);
}

TEST(PathsTest, NormalisesFromTheCurrentFolder) {
  const TempFolder temp(TempFolder::Name::kNonAscii);
  const ScopedCurrentFolder inside(temp.path());
  const std::wstring deep = L"C:\\" + std::wstring(300, L'd');
  const std::pair<std::wstring, std::wstring> rows[] = {
      {L"C:\\a\\.\\b\\..\\c", L"C:\\a\\c"}, {L"C:/a/b", L"C:\\a\\b"},
      {L"C:\\..\\a\\", L"C:\\a\\"},         {L"", L""},
      {L"sub\\..\\x", temp.at(L"x")},       {deep, deep},
      {deep + L"\\..\\x", L"C:\\x"}};
  for (const auto& [path, result] : rows) EXPECT_EQ(normalisePath(path), result);
}

TEST(PathsTest, ExpandsToTheLongestFormThatFits) {
  const TempFolder temp;
  const std::wstring file = temp.write(L"A Long File Name.text");
  const ScopedCurrentFolder inside(temp.path());
  wchar_t shortForm[MAX_PATH];
  wchar_t longForm[MAX_PATH];
  ASSERT_NE(GetShortPathNameW(file.c_str(), shortForm, MAX_PATH), 0u);
  ASSERT_NE(GetLongPathNameW(file.c_str(), longForm, MAX_PATH), 0u);
  const std::wstring tooLong(kPathBufferSize, L'x');
  EXPECT_EQ(expandPath(shortForm), longForm);
  EXPECT_EQ(expandPath(L".\\A Long File Name.text"), longForm);
  EXPECT_EQ(expandPath(L"absent"), temp.at(L"absent"));
  EXPECT_EQ(expandPath(tooLong), tooLong);
}

}  // namespace
}  // namespace ryn
