#include "packs/pack_writer.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>

namespace ryn {
namespace {

struct Entry {
  std::string name;
  std::string data;
  uint32_t attributes;

  bool operator==(const Entry&) const = default;
};

std::string inflated(ByteView packed, size_t size) {
  std::string data(size, '\0');
  z_stream stream{};
  inflateInit2(&stream, -MAX_WBITS);
  stream.next_in = const_cast<Bytef*>(packed.data());
  stream.avail_in = static_cast<uInt>(packed.size());
  stream.next_out = reinterpret_cast<Bytef*>(data.data());
  stream.avail_out = static_cast<uInt>(size);
  EXPECT_EQ(inflate(&stream, Z_FINISH), Z_STREAM_END);
  inflateEnd(&stream);
  return data;
}

/// The entries as the directory at the end of an archive has them.
std::vector<Entry> entriesOf(ByteView zip) {
  std::vector<Entry> entries;
  const size_t end = zip.size() - 22;
  EXPECT_EQ(readU32(zip, end), 0x06054B50u);
  size_t at = readU32(zip, end + 16);
  for (unsigned i = 0; i < readU16(zip, end + 10); ++i) {
    const size_t nameSize = readU16(zip, at + 28);
    const size_t local = readU32(zip, at + 42);
    const auto name = zip.subspan(at + 46, nameSize);
    // Both headers say the same.
    EXPECT_TRUE(std::ranges::equal(zip.subspan(at + 6, 26), zip.subspan(local + 4, 26)));
    EXPECT_TRUE(std::ranges::equal(name, zip.subspan(local + 30, nameSize)));
    const ByteView packed = zip.subspan(local + 30 + nameSize, readU32(zip, at + 20));
    const std::string data = readU16(zip, at + 10) == 8 ? inflated(packed, readU32(zip, at + 24))
                                                        : std::string(packed.begin(), packed.end());
    EXPECT_EQ(readU32(zip, at + 16),
              crc32(0, reinterpret_cast<const Bytef*>(data.data()), static_cast<uInt>(data.size())));
    entries.push_back({{name.begin(), name.end()}, data, readU32(zip, at + 38)});
    at += 46 + nameSize;
  }
  EXPECT_EQ(at, end);
  return entries;
}

Bytes contentOf(const std::string& name) {
  Bytes bytes(name.begin(), name.end());
  bytes.resize(1000, 'x');
  return bytes;
}

TEST(PackWriterTest, WritesTheSameArchiveInAnyOrder) {
  std::vector<std::string> names = {"lib/modules", "bin/java.exe", "bin/javaw.exe",
                                    "bin/jli.dll", "empty/",       "lib/\xc3\xa9"};
  const Bytes pack = writePack(names, contentOf, "Java 17");
  std::reverse(names.begin(), names.end());
  EXPECT_TRUE(writePack(names, contentOf, "Java 17") == pack);

  const std::vector<Entry> outer = entriesOf(pack);
  ASSERT_EQ(outer.size(), 2u);
  EXPECT_EQ(outer[0].name, "vm.zip");
  EXPECT_EQ(outer[1], (Entry{"vm.properties", "vm.name=Java 17\n", 0x20}));
  std::vector<Entry> expected = {{"empty/", "", 0x10}};
  for (const char* name : {"bin/jli.dll", "lib/modules", "lib/\xc3\xa9", "bin/javaw.exe", "bin/java.exe"}) {
    const Bytes content = contentOf(name);
    expected.insert(expected.end(), {name, {content.begin(), content.end()}, 0x20});
  }
  std::swap(expected[0], expected[1]);
  EXPECT_EQ(entriesOf(Bytes(outer[0].data.begin(), outer[0].data.end())), expected);

  EXPECT_THROW(writePack({"lib/java.exe"}, contentOf, ""), PackError);
  EXPECT_THROW(writePack({"bin/java.exe", "nul"}, contentOf, ""), PackError);
}

TEST(PackWriterTest, NamesWhatWindowsCannotHold) {
  const char* const good[] = {"bin/java.exe", "null.txt", "com0",  "a.b/c.d",
                              "empty/",       "bin/",     "lpt10", "con-1"};
  EXPECT_EQ(packNameFaults({std::begin(good), std::end(good)}), std::vector<std::string>());

  const std::pair<std::vector<std::string>, std::string> rows[] = {
      {{"a:b"}, "a:b: has a character that Windows does not allow in names"},
      {{"back\\slash"}, "back\\slash: has a character that Windows does not allow in names"},
      {{"a/x\n"}, "a/x\n: has a character that Windows does not allow in names"},
      {{"lib/nul.txt"}, "lib/nul.txt: is the name of a device"},
      {{"Com1 .x/a"}, "Com1 .x/a: is the name of a device"},
      {{"lpt\xc2\xb2"}, "lpt\xc2\xb2: is the name of a device"},
      {{"a./b"}, "a./b: ends in a dot or a blank, which Windows drops"},
      {{"a/../b"}, "a/../b: is no name of a file below the runtime's folder"},
      {{"/a"}, "/a: is no name of a file below the runtime's folder"},
      {{"\xff"}, "\xff: is not UTF-8"},
      {{std::string(261, 'a')}, std::string(261, 'a') + ": is longer than 260 characters"},
      {{"modules", "MODULES"}, "modules: is also there as MODULES"},
      {{"a", "a"}, "a: is also there as a"},
      {{"lib/a", "LIB"}, "lib: is also there as LIB"},
      {{"Lib/a", "lib/b"}, "lib: is also there as Lib/"},
  };
  for (const auto& [names, fault] : rows) {
    EXPECT_EQ(packNameFaults(names), std::vector<std::string>{fault});
  }
}

}  // namespace
}  // namespace ryn
