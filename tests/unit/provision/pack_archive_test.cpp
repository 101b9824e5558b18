#include "provision/pack_archive.h"

#include <gtest/gtest.h>

#include "platform/files.h"
#include "platform/text.h"
#include "tests/unit/provision/zip_builder.h"
#include "tests/unit/support/temp_folder.h"

namespace ryn {
namespace {

using test::littleEndian;
using test::makeZip;
using test::TempFolder;
using test::ZipEntry;

constexpr uint64_t kUnixEpoch = 116'444'736'000'000'000;

uint64_t unixTicks(uint64_t seconds) {
  return kUnixEpoch + seconds * 10'000'000;
}

/// A "UT" block with the times given.
std::string utBlock(char flags, const std::vector<uint32_t>& seconds) {
  std::string data(1, flags);
  for (const uint32_t second : seconds) data += littleEndian(second, 4);
  return "UT" + littleEndian(data.size(), 2) + data;
}

TEST(EntryNameTest, DropsLeadingRootsAndEnclosedParents) {
  const struct {
    std::string stored;
    std::wstring name;
  } rows[] = {
      {"C:\\bin\\java.exe", L"bin\\java.exe"},
      {"//\\C:/D:x", L"x"},
      {"::x", L"x"},
      {"a\\..\\\\..\\b", L"b"},
      {"a/../b/..\\c\\../d", L"d"},
      // The backslash pattern is looked for first, wherever it stands.
      {"a/../b\\..\\c/../d", L"d"},
      {"../x", L"../x"},
      {"..\\..\\x", L"x"},
      {"x/../", L""},
      {"file:stream", L"file:stream"},
      {"\xC3\xA4/\xE4\xB8\xAD", L"\u00e4/\u4e2d"},
      {std::string("a\0b", 3), L"a"},
      {std::string(300, 'x'), std::wstring(260, L'x')},
      {"C:" + std::string(300, 'x'), std::wstring(258, L'x')},
  };
  for (const auto& row : rows) EXPECT_EQ(entryName(row.stored), row.name) << row.stored;
}

TEST(EntryAttributesTest, DependOnTheSystemThatMadeTheEntry) {
  const struct {
    unsigned madeBy;
    uint32_t external;
    DWORD attributes;
  } rows[] = {
      {20, 0x27, 0x27},
      {0x0B14, 0x30, 0x30},
      {0x0714, 1, 1},
      {0x0E14, 2, 2},
      // Unix modes: 0644, 0444, a folder, a folder without write permission; DOS bits do not count.
      {0x0314, 0x81A40000, 0x20},
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
  // 2 January 2024, 12:30:10 in local time.
  constexpr uint32_t kDosTime = 0x582263C5;
  const SYSTEMTIME local = {2024, 1, 2, 2, 12, 30, 10, 0};
  SYSTEMTIME utc;
  FILETIME time;
  ASSERT_TRUE(TzSpecificLocalTimeToSystemTime(nullptr, &local, &utc) && SystemTimeToFileTime(&utc, &time));
  const PackTimes dos = timesOf(kDosTime, "");
  EXPECT_EQ(dos.modify, static_cast<uint64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime);
  EXPECT_EQ(dos, (PackTimes{dos.modify, dos.modify, dos.modify}));
  EXPECT_EQ(timesOf(0, ""), PackTimes());

  const uint64_t d = dos.modify;
  const std::string other = "XX" + littleEndian(300, 2) + std::string(300, 'U');
  const struct {
    const char* what;
    std::string extra;
    PackTimes times;  // creation, access, modification
  } rows[] = {
      {"all", utBlock(7, {1000, 2000, 3000}), {unixTicks(3000), unixTicks(2000), unixTicks(1000)}},
      {"no access time", utBlock(5, {1000, 3000}), {unixTicks(3000), d, unixTicks(1000)}},
      {"announces more than it holds", utBlock(7, {1000}), {d, d, unixTicks(1000)}},
      {"before 1970", utBlock(1, {0xFFFFFFFF}), {d, d, kUnixEpoch - 10'000'000}},
      {"the first of two", utBlock(1, {1}) + utBlock(1, {2}), {d, d, unixTicks(1)}},
      {"behind a long block", other + utBlock(1, {1000}), {d, d, unixTicks(1000)}},
      {"empty block", utBlock(1, {}).substr(0, 4), dos},
      {"length beyond the field", "XX\xFF\xFF" + utBlock(1, {1000}), dos},
  };
  for (const auto& row : rows) EXPECT_EQ(timesOf(kDosTime, row.extra), row.times) << row.what;
}

class PackArchiveTest : public testing::Test {
 protected:
  void open(PackArchive& archive, const std::string& bytes) {
    ASSERT_TRUE(archive.open(folder_.write(L"pack.vm", bytes)));
    archive.setBaseFolder(folder_.at(L"out"));
  }

  static PackResult extract(PackArchive& archive, int32_t index) {
    PackEntry entry;
    const PackResult result = archive.getEntry(index, entry);
    return result == PackResult::kOk ? archive.extract(index, entry.name) : result;
  }

  std::string extracted(const std::wstring& name) { return test::readBytes(folder_.at(L"out\\" + name)); }

  TempFolder folder_{TempFolder::Name::kNonAscii};
};

TEST_F(PackArchiveTest, EntriesComeOutInAnyOrder) {
  const std::string big(100'000, 'b');
  PackArchive archive;
  ASSERT_NO_FATAL_FAILURE(open(archive, makeZip({{.name = "bin/", .externalAttributes = 0x10},
                                                 {.name = "bin/sub\\one.txt", .data = "one"},
                                                 {.name = "big", .data = big},
                                                 {.name = "stored", .data = big, .method = 0},
                                                 {.name = "empty"}})));
  PackEntry entry;
  ASSERT_EQ(archive.getEntry(-1, entry), PackResult::kOk);
  EXPECT_EQ(entry.index, 5);

  for (const int32_t index : {4, 0, 3, 1, 2, 2}) EXPECT_EQ(extract(archive, index), PackResult::kOk) << index;
  EXPECT_TRUE(folderExists(folder_.at(L"out\\bin")));
  EXPECT_EQ(extracted(L"bin\\sub\\one.txt"), "one");
  EXPECT_EQ(extracted(L"big"), big);
  EXPECT_EQ(extracted(L"stored"), big);
  EXPECT_EQ(extracted(L"empty"), "");
  for (const int32_t index : {-2, -1, 5, INT32_MAX})
    EXPECT_EQ(archive.extract(index, L"x"), PackResult::kBadIndex) << index;
}

TEST_F(PackArchiveTest, AttributesAndTimesReachTheFile) {
  // What cannot be read gets no times: setting them makes Wine 10 forget the attributes, which Windows keeps.
  PackArchive archive;
  ASSERT_NO_FATAL_FAILURE(
      open(archive, makeZip({{.name = "attributes", .flags = 1, .externalAttributes = 0x23},
                             {.name = "times", .data = "x", .localExtra = utBlock(7, {1000, 2000, 3000})}})));
  // The second time a read-only, hidden file is in the way.
  for (int round = 0; round < 2; ++round) ASSERT_EQ(extract(archive, 0), PackResult::kEncrypted) << round;
  EXPECT_TRUE(GetFileAttributesW(folder_.at(L"out\\attributes").c_str()) & FILE_ATTRIBUTE_READONLY);

  ASSERT_EQ(extract(archive, 1), PackResult::kOk);
  WIN32_FILE_ATTRIBUTE_DATA data;
  ASSERT_TRUE(GetFileAttributesExW(folder_.at(L"out\\times").c_str(), GetFileExInfoStandard, &data));
  const uint64_t modified =
      static_cast<uint64_t>(data.ftLastWriteTime.dwHighDateTime) << 32 | data.ftLastWriteTime.dwLowDateTime;
  EXPECT_EQ(modified, unixTicks(1000));
}

TEST_F(PackArchiveTest, DamagedEntriesAreToldApart) {
  const std::string data(50'000, 'd');
  std::string bytes = makeZip({{.name = "encrypted", .data = data, .flags = 1},
                               {.name = "longer", .data = data, .sizeError = 10},
                               {.name = "bzip2", .data = data, .method = 12},
                               {.name = "taken", .data = data},
                               {.name = "header", .data = data},
                               {.name = "good", .data = data}});
  bytes[bytes.find("PK\3\4", bytes.find("header") - 40) + 1] = 'X';
  folder_.makeFolder(L"out\\taken");
  PackArchive archive;
  ASSERT_NO_FATAL_FAILURE(open(archive, bytes));

  const PackResult results[] = {PackResult::kEncrypted,     PackResult::kDataEnded,
                                PackResult::kCorruptHeader, PackResult::kFileNotCreated,
                                PackResult::kCorruptHeader, PackResult::kOk};
  for (int32_t index = 0; index < 6; ++index) EXPECT_EQ(extract(archive, index), results[index]) << index;
  EXPECT_EQ(extracted(L"good"), data);
}

TEST_F(PackArchiveTest, ClaimedEntriesEndWhereTheDirectoryDoes) {
  std::string bytes = makeZip({{.name = "a", .data = "a"}});
  // Both counts of the end record.
  bytes.replace(bytes.size() - 14, 4, littleEndian(0xFFF0FFF0, 4));
  PackArchive archive;
  ASSERT_NO_FATAL_FAILURE(open(archive, bytes));
  PackEntry entry;
  ASSERT_EQ(archive.getEntry(-1, entry), PackResult::kOk);
  EXPECT_EQ(entry.index, 0xFFF0);
  EXPECT_EQ(extract(archive, 0), PackResult::kOk);
  for (const int32_t index : {1, 2, 60000})
    EXPECT_EQ(extract(archive, index), PackResult::kBadIndex) << index;
  EXPECT_EQ(extract(archive, 0), PackResult::kOk);
}

}  // namespace
}  // namespace ryn
