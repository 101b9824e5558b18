#include "provision/pack_archive.h"

#include <gtest/gtest.h>

#include "platform/files.h"
#include "tests/unit/provision/zip_builder.h"
#include "tests/unit/support/temp_folder.h"

namespace ryn {
namespace {

using test::littleEndian;
using test::makeZip;
using test::TempFolder;
using test::unixTicks;
using test::utBlock;
using test::ZipEntry;

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

// What archives hold and how they are damaged, the reader's tests say.
TEST_F(PackArchiveTest, WritesFilesAndFolders) {
  const std::string big(100'000, 'b');
  PackArchive archive;
  ASSERT_NO_FATAL_FAILURE(open(archive, makeZip({{.name = "bin/", .externalAttributes = 0x10},
                                                 {.name = "bin/sub\\one.txt", .data = "one"},
                                                 {.name = "taken", .data = big},
                                                 {.name = "big", .data = big},
                                                 {.name = "longer", .data = big, .sizeError = 10}})));
  folder_.makeFolder(L"out\\taken");
  const PackResult results[] = {PackResult::kOk, PackResult::kOk, PackResult::kFileNotCreated,
                                PackResult::kOk, PackResult::kDataEnded};
  for (int32_t index = 0; index < 5; ++index) EXPECT_EQ(extract(archive, index), results[index]) << index;
  EXPECT_TRUE(folderExists(folder_.at(L"out\\bin")));
  EXPECT_EQ(extracted(L"bin\\sub\\one.txt"), "one");
  EXPECT_EQ(extracted(L"big"), big);
  for (const int32_t index : {-1, 5}) EXPECT_EQ(archive.extract(index, L"x"), PackResult::kBadIndex) << index;
}

TEST_F(PackArchiveTest, AttributesAndTimesReachTheFile) {
  const ZipEntry readOnly = {
      .name = "f", .data = "x", .externalAttributes = 0x23, .localExtra = utBlock(7, {1000, 2000, 3000})};
  PackArchive archive;
  ASSERT_NO_FATAL_FAILURE(open(archive, makeZip({readOnly})));
  // The second time a read-only, hidden file is in the way.
  for (int round = 0; round < 2; ++round) ASSERT_EQ(extract(archive, 0), PackResult::kOk) << round;

  WIN32_FILE_ATTRIBUTE_DATA data;
  ASSERT_TRUE(GetFileAttributesExW(folder_.at(L"out\\f").c_str(), GetFileExInfoStandard, &data));
  EXPECT_EQ(data.dwFileAttributes & FILE_ATTRIBUTE_READONLY, FILE_ATTRIBUTE_READONLY);
  const uint64_t modified =
      static_cast<uint64_t>(data.ftLastWriteTime.dwHighDateTime) << 32 | data.ftLastWriteTime.dwLowDateTime;
  EXPECT_EQ(modified, unixTicks(1000));
}

}  // namespace
}  // namespace ryn
