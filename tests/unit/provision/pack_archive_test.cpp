#include "provision/pack_archive.h"

#include <gtest/gtest.h>

#include "platform/files.h"
#include "tests/unit/provision/zip_builder.h"
#include "tests/unit/support/temp_folder.h"

namespace ryn {
namespace {

using test::makeZip;
using test::TempFolder;
using test::unixTicks;
using test::utBlock;

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

}  // namespace
}  // namespace ryn
