#include "platform/text.h"

#include <gtest/gtest.h>

#include <climits>

#include "platform/errors.h"

namespace ryn {
namespace {

TEST(TextTest, FoldsAsciiAndComparesAsTheFileSystem) {
  EXPECT_EQ(lowerCase(L"Ab[Z]@\u0130\u00c9"), L"ab[z]@\u0130\u00c9");
  EXPECT_EQ(upperCase(L"aB`z{\u0131\u00e9"), L"AB`Z{\u0131\u00e9");
  EXPECT_TRUE(equalIgnoringCase(L"\u00c9t\u00c9", L"\u00e9T\u00e9") && equalIgnoringCase(L"", L""));
  EXPECT_FALSE(equalIgnoringCase(L"a", L""));
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
  EXPECT_EQ(toUtf8(L"\u00e9\U0001f600"), "\xc3\xa9\xf0\x9f\x98\x80");
  EXPECT_EQ(fromUtf8("\xc3\xa9\xf0\x9f\x98\x80"), L"\u00e9\U0001f600");
  EXPECT_EQ(fromUtf8("a\xffz"), L"a\ufffdz");
}

// Whoever shows what() widens each of its bytes.
TEST(ErrorsTest, DescribeThemselvesInBytes) {
  EXPECT_STREQ(TerminalError(L"caf\u00e9 \u0100\U0001f600").what(), "caf\xe9 \\u0100\\ud83d\\ude00");
  const FileException file(L"cannot read", L"C:\\\u4e2d\\\u00e9.ryn");
  EXPECT_STREQ(file.what(), "cannot read: C:\\\\u4e2d\\\xe9.ryn");
}

}  // namespace
}  // namespace ryn
