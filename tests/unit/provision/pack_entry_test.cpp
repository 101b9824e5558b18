#include "provision/pack_entry.h"

#include <gtest/gtest.h>

#include "provision/application_paths.h"
#include "provision/url_scheme.h"
#include "tests/unit/provision/zip_builder.h"

namespace ryn {
namespace {

using test::kUnixEpoch;
using test::littleEndian;
using test::unixTicks;
using test::utBlock;

using Paths = std::vector<std::wstring>;

TEST(ApplicationPathsTest, NamesPlacesInOrder) {
  EXPECT_EQ(jvmspecsPaths(L"C:\\a"),
            (Paths{L"C:\\a\\jvmspecs\\jvmspecs.properties", L"C:\\a\\Windows\\jvmspecs\\jvmspecs.properties",
                   L"C:\\a\\Windows_Pure_64_Bit\\jvmspecs\\jvmspecs.properties"}));
  EXPECT_EQ(unpackMarkers(L"C:\\a\\jre\\jre\\bin\\"),
            (Paths{L"C:\\a\\jre\\jre\\bin\\ryn.unpacking", L"C:\\a\\jre\\jre\\ryn.unpacking",
                   L"C:\\a\\jre\\ryn.unpacking"}));
  EXPECT_EQ(unpackMarkers(L"C:\\a"), (Paths{L"C:\\a\\ryn.unpacking", L"C:\\ryn.unpacking"}));
}

TEST(UrlSchemeTest, GoesByTheFirstLetters) {
  for (const auto& [url, scheme] : {std::pair{L"http://a", UrlScheme::kHttp},
                                    {L"https://a", UrlScheme::kHttp},
                                    {L"ftp://a", UrlScheme::kFtp},
                                    {L"HTTP://a", UrlScheme::kOther},
                                    {L"file:///ftp.http", UrlScheme::kOther}}) {
    EXPECT_EQ(urlScheme(url), scheme) << std::wstring(url);
  }
  EXPECT_TRUE(namesPack(L"http://a/b.vm"));
  for (const wchar_t* other : {L"http://a/b.VM", L".vm/b", L""})
    EXPECT_FALSE(namesPack(other)) << std::wstring(other);
}

TEST(EntryNameTest, DropsLeadingRootsAndEnclosedParents) {
  const struct {
    std::string stored;
    std::wstring name;
  } rows[] = {
      {"bin/java.exe", L"bin/java.exe"},
      {"C:\\bin\\java.exe", L"bin\\java.exe"},
      {"//\\C:/D:x", L"x"},
      {"::x", L"x"},
      {"a\\..\\\\..\\b", L"b"},
      {"a/../b/..\\c\\../d", L"d"},
      // The backslash pattern is looked for first, wherever it stands.
      {"a/../b\\..\\c/../d", L"d"},
      {"q/..//../..\\z", L"..\\z"},
      {"C:", L""},
      {"/../x", L"../x"},
      {"../x", L"../x"},
      {"..\\..\\x", L"x"},
      {"x/..", L"x/.."},
      {"x/../", L""},
      {"a/..//etc", L"/etc"},
      {"a..b/...", L"a..b/..."},
      {"file:stream", L"file:stream"},
      {"\xC3\xA4/\xE4\xB8\xAD", L"\u00e4/\u4e2d"},
      {std::string("a\0b\0c", 5), L"a"},
      {std::string(300, 'x'), std::wstring(260, L'x')},
      {"C:" + std::string(300, 'x'), std::wstring(258, L'x')},
      {"", L""},
  };
  for (const auto& row : rows) EXPECT_EQ(entryName(row.stored), row.name) << row.stored;
}

TEST(EntryAttributesTest, DependOnTheSystemThatMadeTheEntry) {
  const struct {
    unsigned madeBy;
    uint32_t external;
    uint32_t attributes;
  } rows[] = {
      {20, 0, 0},
      {20, 0x27, 0x27},
      {20, 0x10, 0x10},
      {0x0B14, 0x30, 0x30},
      {0x0714, 1, 1},
      {0x0E14, 2, 2},
      // Unix modes: 0644, 0444, a folder, a folder without write permission; DOS bits do not count.
      {0x0314, 0x81A40000, 0x20},
      {0x0314, 0x81240000, 0x21},
      {0x0314, 0x41ED0010, 0x30},
      {0x0314, 0x416D0000, 0x31},
      {0x0314, 0x0000001F, 0x21},
      {0x1314, 0x81A40002, 0x20},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(attributesOf(row.madeBy, row.external), row.attributes)
        << std::hex << row.madeBy << row.external;
  }
}

TEST(EntryTimesTest, TimestampBlockReplacesDosTimes) {
  const PackTimes dos = timesOf(5, "");
  EXPECT_EQ(dos, (PackTimes{5, 5, 5}));
  constexpr uint64_t d = 5;
  const std::string other = "XX" + littleEndian(300, 2) + std::string(300, 'U');
  const struct {
    const char* what;
    std::string extra;
    PackTimes times;  // creation, access, modification
  } rows[] = {
      {"modification only", utBlock(1, {1000}), {d, d, unixTicks(1000)}},
      {"all", utBlock(7, {1000, 2000, 3000}), {unixTicks(3000), unixTicks(2000), unixTicks(1000)}},
      {"no access time", utBlock(5, {1000, 3000}), {unixTicks(3000), d, unixTicks(1000)}},
      {"announces more than it holds", utBlock(7, {1000}), {d, d, unixTicks(1000)}},
      {"announces more, before another block", utBlock(7, {1000}) + other, {d, d, unixTicks(1000)}},
      {"before 1970", utBlock(1, {0xFFFFFFFF}), {d, d, kUnixEpoch - 10'000'000}},
      {"the first of two", utBlock(1, {1}) + utBlock(1, {2}), {d, d, unixTicks(1)}},
      {"behind a long block", other + utBlock(1, {1000}), {d, d, unixTicks(1000)}},
      {"cut by one byte", utBlock(1, {1000}).substr(0, 8), dos},
      {"cut short", utBlock(1, {1000}).substr(0, 7), dos},
      {"empty block", utBlock(1, {}).substr(0, 4), dos},
      {"length beyond the field", "XX\xFF\xFF" + utBlock(1, {1000}), dos},
      {"none", other, dos},
  };
  for (const auto& row : rows) EXPECT_EQ(timesOf(5, row.extra), row.times) << row.what;
}

}  // namespace
}  // namespace ryn
