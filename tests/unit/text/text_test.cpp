#include "text/text.h"

#include <gtest/gtest.h>

#include <climits>
#include <tuple>

#include "text/path_text.h"

namespace ryn {
namespace {

using Text = const wchar_t*;

TEST(TextTest, FoldsAsciiOnly) {
  EXPECT_EQ(lowerCase(L"Ab[Z]@\u0130\u00c9"), L"ab[z]@\u0130\u00c9");
  EXPECT_EQ(upperCase(L"aB`z{\u0131\u00e9"), L"AB`Z{\u0131\u00e9");
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

}  // namespace
}  // namespace ryn
