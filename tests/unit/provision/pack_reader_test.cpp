#include "provision/pack_reader.h"

#include <gtest/gtest.h>

#include "packs/memory_file.h"
#include "tests/unit/provision/zip_builder.h"

namespace ryn {
namespace {

using test::littleEndian;
using test::makeZip;

/// A reader of an archive in memory.
struct Archive {
  explicit Archive(std::string archive) : bytes(std::move(archive)) {
    zlib_filefunc64_def functions = memoryFunctions();
    opened = reader.open(functions, &file);
  }

  int32_t count() {
    PackEntry entry;
    EXPECT_EQ(reader.getEntry(-1, entry), PackResult::kOk);
    return entry.index;
  }

  /// What came of reading the entry, with its data behind it.
  std::pair<PackResult, std::string> read(int32_t index) {
    PackEntry entry;
    std::string data;
    PackResult result = reader.getEntry(index, entry);
    if (result == PackResult::kOk) result = reader.openData();
    if (result != PackResult::kOk) return {result, data};
    std::string_view piece;
    while ((result = reader.readData(piece)) == PackResult::kOk && !piece.empty()) data += piece;
    reader.closeData();
    return {result, data};
  }

  std::string bytes;
  MemoryFile file{{reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()}};
  PackReader reader{[](uint32_t dosDateTime) { return uint64_t{dosDateTime}; }};
  bool opened = false;
};

TEST(PackReaderTest, ReadsEntriesInAnyOrder) {
  const std::string big(100'000, 'b');
  // As long as a name can be, in bytes and in characters.
  std::string longest;
  for (int i = 0; i < 259; ++i) longest += "\xE2\x82\xAC";
  longest += "ab";
  Archive archive(makeZip({{.name = "/bin/", .versionMadeBy = 0x314, .externalAttributes = 0x41ED0000},
                           {.name = "one", .data = "one", .dosDateTime = 77},
                           {.name = "big", .data = big},
                           {.name = "stored", .data = big, .method = 0},
                           {.name = longest}}));
  ASSERT_TRUE(archive.opened);
  EXPECT_EQ(archive.count(), 5);
  const std::string data[] = {"", "one", big, big, ""};
  for (const int32_t index : {4, 0, 3, 1, 2, 2})
    EXPECT_EQ(archive.read(index), std::pair(PackResult::kOk, data[index])) << index;
  for (const int32_t index : {-2, 5, INT32_MAX})
    EXPECT_EQ(archive.read(index).first, PackResult::kBadIndex) << index;

  PackEntry entry;
  archive.reader.getEntry(0, entry);
  EXPECT_EQ(entry.name, L"bin/");
  EXPECT_EQ(entry.attributes, 0x30u);
  archive.reader.getEntry(1, entry);
  EXPECT_EQ(entry.index, 1);
  EXPECT_EQ(entry.times, (PackTimes{77, 77, 77}));
  archive.reader.getEntry(4, entry);
  EXPECT_EQ(entry.name, std::wstring(259, L'\u20ac') + L"a");
}

TEST(PackReaderTest, TellsDamageApart) {
  const std::string data(50'000, 'd');
  std::string bytes = makeZip({{.name = "encrypted", .data = data, .flags = 1},
                               {.name = "longer", .data = data, .sizeError = 10},
                               {.name = "bzip2", .data = data, .method = 12},
                               {.name = "header", .data = data},
                               {.name = "good", .data = data}});
  bytes[bytes.find("PK\3\4", bytes.find("header") - 40) + 1] = 'X';
  // Both counts of the end record: what is claimed ends where the directory does.
  bytes.replace(bytes.size() - 14, 4, littleEndian(0xFFF0FFF0, 4));
  Archive archive(bytes);
  ASSERT_TRUE(archive.opened);
  EXPECT_EQ(archive.count(), 0xFFF0);
  const PackResult results[] = {PackResult::kEncrypted, PackResult::kDataEnded, PackResult::kCorruptHeader,
                                PackResult::kCorruptHeader, PackResult::kOk};
  for (int32_t index = 0; index < 5; ++index) EXPECT_EQ(archive.read(index).first, results[index]) << index;
  for (const int32_t index : {5, 6, 60000})
    EXPECT_EQ(archive.read(index).first, PackResult::kBadIndex) << index;
  EXPECT_EQ(archive.read(4), std::pair(PackResult::kOk, data));
  EXPECT_FALSE(Archive("no archive").opened);
}

}  // namespace
}  // namespace ryn
