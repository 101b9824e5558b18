#include "provision/unpack.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>

#include "platform/files.h"
#include "tests/unit/provision/zip_builder.h"
#include "tests/unit/support/temp_folder.h"

namespace ryn {
namespace {

using test::makeZip;

/// The launcher's folder with a pack at its usual place.
class UnpackTest : public testing::Test {
 protected:
  bool unpack(const std::string& pack) {
    folder_.write(L"Windows\\pack.vm", pack);
    return extractPack(folder_.at(L"Windows\\pack.vm"), folder_.makeFolder(L"Windows\\jre"));
  }

  bool intermediateRemains() const { return folderExists(folder_.at(L"Windows\\downloadIntermediary")); }

  /// Files and folders below the test's folder, except where unpacking may write.
  std::set<std::wstring> surroundings(const std::wstring& below = L"") const {
    std::set<std::wstring> names;
    WIN32_FIND_DATAW entry;
    const UniqueFind find(FindFirstFileW(folder_.at(below + L"*").c_str(), &entry));
    for (BOOL more = static_cast<bool>(find); more; more = FindNextFileW(find.get(), &entry)) {
      const std::wstring name = entry.cFileName;
      if (name == L"." || name == L".." || name == L"downloadIntermediary" || name == L"jre") continue;
      names.insert(below + name);
      if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0)
        names.merge(surroundings(below + name + L"\\"));
    }
    return names;
  }

  test::TempFolder folder_{test::TempFolder::Name::kNonAscii};
};

TEST_F(UnpackTest, InnerArchiveFillsTheExtractionFolder) {
  const std::string inner =
      makeZip({{.name = "bin/java.exe", .data = "java"}, {.name = "release", .data = "17"}});
  // A pack made under Unix from write-protected files.
  const std::string pack = makeZip({{.name = "vm.zip", .data = inner, .externalAttributes = 1},
                                    {.name = "vm.properties", .data = "x", .externalAttributes = 1}});
  for (int round = 0; round < 2; ++round) {
    ASSERT_TRUE(unpack(pack)) << round;
    EXPECT_EQ(test::readBytes(folder_.at(L"Windows\\jre\\bin\\java.exe")), "java");
    EXPECT_EQ(test::readBytes(folder_.at(L"Windows\\jre\\release")), "17");
    EXPECT_FALSE(intermediateRemains());
  }
  EXPECT_EQ(surroundings(), (std::set<std::wstring>{L"Windows", L"Windows\\pack.vm"}));

  ASSERT_TRUE(unpack(makeZip({{.name = "vm.zip", .data = inner}, {.name = "readme.txt", .data = "x"}})));
  EXPECT_TRUE(intermediateRemains());
}

TEST_F(UnpackTest, PacksWithoutAnInnerArchiveFail) {
  const std::string inner = makeZip({{.name = "release", .data = "17"}});
  const std::string pack = makeZip({{.name = "vm.zip", .data = inner}});
  const std::string stored = makeZip({{.name = "vm.zip", .data = inner, .method = 0}});
  const struct {
    const char* what;
    std::string pack;
  } rows[] = {
      {"no archive", "MZ"},
      {"empty file", ""},
      {"inner archive damaged", makeZip({{.name = "vm.zip", .data = inner.substr(0, inner.size() / 2)}})},
      {"inner archive in a folder", makeZip({{.name = "sub/vm.zip", .data = inner}})},
      {"inner archive is a folder", makeZip({{.name = "vm.zip", .externalAttributes = 0x10}})},
      {"cut short", pack.substr(0, pack.size() - 30)},
      // What is found then is the end of the inner archive.
      {"cut short, inner archive stored", stored.substr(0, stored.size() - 30)},
  };
  for (const auto& row : rows) {
    // What an earlier attempt left behind does not help.
    folder_.write(L"Windows\\downloadIntermediary\\vm.zip", inner);
    EXPECT_FALSE(unpack(row.pack)) << row.what;
    EXPECT_FALSE(intermediateRemains()) << row.what;
  }
  EXPECT_FALSE(extractPack(folder_.at(L"missing.vm"), folder_.at(L"Windows\\jre")));
}

TEST_F(UnpackTest, ThousandsOfEntriesAndLongNames) {
  std::vector<test::ZipEntry> entries(1500);
  for (size_t i = 0; i < entries.size(); ++i) entries[i].name = "f" + std::to_string(i);
  for (const size_t length : {259U, 260U, 261U, 1000U, 60000U}) {
    entries.push_back({.name = std::string(length, 'n'), .data = "x"});
    entries.push_back(
        {.name = std::string(length / 2, 'd') + "/" + std::string(length / 2, 'd') + "/f", .data = "x"});
  }
  entries.push_back({.name = "last", .data = "x"});
  ASSERT_TRUE(unpack(makeZip({{.name = "vm.zip", .data = makeZip(entries)}})));
  EXPECT_TRUE(fileExists(folder_.at(L"Windows\\jre\\f1499")));
  EXPECT_TRUE(fileExists(folder_.at(L"Windows\\jre\\last")));
}

TEST_F(UnpackTest, DamagedPacksWriteNowhereElse) {
  const std::string text(3000, 't');
  const std::string inner = makeZip(
      {{.name = "bin/", .externalAttributes = 0x10},
       {.name = "bin/java.exe", .data = text},
       {.name = "lib/modules", .data = text, .method = 0, .localExtra = std::string("UT\5\0\1abcd", 9)},
       {.name = "release", .data = text}});
  // Stored, so that damage reaches the inner archive's headers too.
  const std::string pack =
      makeZip({{.name = "vm.zip", .data = inner, .method = 0}, {.name = "vm.properties"}});
  folder_.write(L"Windows\\pack.vm");
  const std::set<std::wstring> before = surroundings();

  std::mt19937 random(20240102);
  const auto below = [&random](size_t limit) {
    return std::uniform_int_distribution<size_t>(0, limit - 1)(random);
  };
  int unpacked = 0;
  for (int round = 0; round < 300; ++round) {
    std::string damaged = pack;
    // Headers are a small part of the bytes and the interesting one: half of the damage goes there.
    const size_t header = damaged.find("PK", below(damaged.size()));
    for (size_t count = 1 + below(4); count > 0; --count) {
      const size_t at = count % 2 == 0 || header == std::string::npos
                            ? below(damaged.size())
                            : std::min(header + below(50), damaged.size() - 1);
      damaged[at] = static_cast<char>(damaged[at] ^ (1 << below(8)));
    }
    if (round % 10 == 0) damaged.resize(below(damaged.size()));
    unpacked += unpack(damaged) ? 1 : 0;
    ASSERT_EQ(surroundings(), before) << round;
  }
  // Damage that always kept the pack from being opened would have tested little.
  EXPECT_GT(unpacked, 50);
  EXPECT_LT(unpacked, 290);
}

}  // namespace
}  // namespace ryn
