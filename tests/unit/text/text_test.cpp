#include "text/text.h"

#include <gtest/gtest.h>

#include <climits>
#include <tuple>

#include "text/environment_map.h"
#include "text/fold_case.h"
#include "text/path_text.h"

namespace ryn {
namespace {

using Text = const wchar_t*;

TEST(TextTest, FoldsAsciiOnly) {
  EXPECT_EQ(lowerCase(L"Ab[Z]@\u0130\u00c9"), L"ab[z]@\u0130\u00c9");
  EXPECT_EQ(upperCase(L"aB`z{\u0131\u00e9"), L"AB`Z{\u0131\u00e9");
}

TEST(TextTest, ComparesAsTheFileSystem) {
  EXPECT_TRUE(equalIgnoringCase(L"\u00c9t\u00c9", L"\u00e9T\u00e9") && equalIgnoringCase(L"", L""));
  EXPECT_FALSE(equalIgnoringCase(L"a", L"") || equalIgnoringCase(L"ab", L"ac"));
  // Units of pairs have no case; "DESERET SMALL LETTER LONG I" is one.
  EXPECT_EQ(foldCase(L"a\u044f\xd801\xdc28\xd800"), L"A\u042f\xd801\xdc28\xd800");
}

TEST(TextTest, SplitsAndReplaces) {
  EXPECT_EQ(split(L";a;;b;", L';'), (std::vector<std::wstring>{L"", L"a", L"", L"b", L""}));
  EXPECT_EQ(replaceAll(L"//a/", L"/", L"\\/"), L"\\/\\/a\\/");
}

TEST(TextTest, WritesAndReadsDecimals) {
  for (const long long n : {0LL, -120LL, LLONG_MIN}) EXPECT_EQ(decimal(n), std::to_wstring(n));
  const std::pair<const wchar_t*, int> rows[] = {{L"", 0},   {L"x1", 0},   {L" 42z", 42}, {L"-7.5", -7},
                                                 {L"+3", 3}, {L"0x10", 0}, {L"010", 10},  {L"1 2", 1}};
  for (const auto& [text, number] : rows) EXPECT_EQ(parseInteger(text), number) << std::wstring(text);
  EXPECT_EQ(parseInteger(L"9999999999"), INT_MAX);
  EXPECT_EQ(parseInteger(L"-9999999999"), INT_MIN);
  EXPECT_EQ(hexadecimal(std::vector<uint8_t>{0, 0x9F, 0xA0}), L"009fa0");
}

TEST(TextTest, ConvertsUtf8) {
  // Whole characters both ways, at the ends of each length.
  const std::pair<const char*, std::wstring> rows[] = {
      {"\x7f\xc2\x80\xdf\xbf", L"\x7f\x80\x7ff"},
      {"\xe0\xa0\x80\xed\x9f\xbf\xee\x80\x80\xef\xbf\xbf", L"\x800\xd7ff\xe000\xffff"},
      {"\xf0\x90\x80\x80\xf0\x9f\x98\x80\xf4\x8f\xbf\xbf", L"\xd800\xdc00\xd83d\xde00\xdbff\xdfff"}};
  for (const auto& [bytes, text] : rows) {
    EXPECT_EQ(fromUtf8(bytes), text) << bytes;
    EXPECT_EQ(toUtf8(text), bytes);
  }
  const std::pair<const char*, std::wstring> malformed[] = {
      {"a\xffz\x80", L"a\xfffdz\xfffd"},                  // no lead byte
      {"\xe4\xb8z\xe4", L"\xfffdz\xfffd"},                // cut short
      {"\xc0\xaf\xe0\x9f", L"\xfffd\xfffd\xfffd\xfffd"},  // overlong
      {"\xed\xa0\x80", L"\xfffd\xfffd\xfffd"},            // surrogate
      {"\xf4\x90\xf5", L"\xfffd\xfffd\xfffd"},            // beyond the last character
      {"\xf0\x9f\x98", L"\xfffd"}};
  for (const auto& [bytes, text] : malformed) EXPECT_EQ(fromUtf8(bytes), text) << bytes;
  EXPECT_EQ(toUtf8(L"\xde00\xd83d|\xd83d"), "\xef\xbf\xbd\xef\xbf\xbd|\xef\xbf\xbd");
}

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

TEST(EnvironmentTest, ParsesABlock) {
  EXPECT_EQ(
      parseEnvironmentBlock(L"=C:=C:\\work\0=ExitCode=00000001\0A=1\0a=2\0B=x=y\0E=\0junk\0C=3\0\0D=4\0"),
      (EnvironmentMap{{L"A", L"1"}, {L"a", L"2"}, {L"B", L"x=y"}, {L"E", L""}, {L"C", L"3"}}));
  EXPECT_TRUE(parseEnvironmentBlock(L"\0").empty());
}

TEST(EnvironmentTest, FindsPathInAnyCase) {
  EXPECT_EQ(pathVariable({{L"APATH", L"no"}, {L"pAtH", L"C:\\bin"}, {L"PATHEXT", L".exe"}}), L"C:\\bin");
}

}  // namespace
}  // namespace ryn
