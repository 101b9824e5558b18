#include "platform/files.h"

#include <gtest/gtest.h>

#include "platform/paths.h"
#include "tests/unit/support/process_state.h"
#include "tests/unit/support/temp_folder.h"

namespace ryn {
namespace {

using test::ScopedVariable;
using test::TempFolder;

TEST(FilesTest, TellsFilesFromFolders) {
  const TempFolder temp(TempFolder::Name::kNonAscii);
  const std::wstring file = temp.write(L"file");
  EXPECT_TRUE(folderExists(temp.path()) && pathExists(temp.path()) && !fileExists(temp.path()));
  EXPECT_TRUE(fileExists(file) && pathExists(file) && !folderExists(file));
  EXPECT_FALSE(pathExists(temp.at(L"fil*")) || fileExists(temp.at(L"fil*")) ||
               folderExists(temp.at(L"fil*")));
}

TEST(FilesTest, CannotOpenWhatIsAbsentLockedOrAFolder) {
  const TempFolder temp;
  const std::wstring locked = temp.write(L"locked");
  const UniqueFile lock(CreateFileW(locked.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
  for (const std::wstring& path : {temp.at(L"absent\\file"), locked, temp.path()}) {
    EXPECT_FALSE(openForReading(path)) << path;
    EXPECT_FALSE(openForAppending(path)) << path;
  }
}

TEST(FilesTest, AppendsBehindWhatIsThere) {
  const TempFolder temp(TempFolder::Name::kNonAscii);
  for (const char* line : {"one\n", "two\n"}) {
    const CStream stream = openForAppending(temp.at(L"log.txt"));
    ASSERT_TRUE(stream);
    std::fputs(line, stream.get());
  }
  EXPECT_EQ(test::readBytes(temp.at(L"log.txt")), "one\r\ntwo\r\n");
}

TEST(FilesTest, CreatesTemporaryFilesWhereTmpThenTempSays) {
  const TempFolder first(TempFolder::Name::kNonAscii);
  const TempFolder second;
  const ScopedVariable temp(L"TEMP", second.path());
  for (const std::wstring& tmp : {first.path(), std::wstring()}) {
    const ScopedVariable variable(L"TMP", tmp.empty() ? std::nullopt : std::optional(tmp));
    const std::wstring path = createTemporaryFile();
    const std::wstring name = fileName(path);
    EXPECT_EQ(folderPart(path), tmp.empty() ? second.path() : tmp);
    EXPECT_TRUE(name.starts_with(L"ryn") && name.ends_with(L".tmp")) << name;
    EXPECT_EQ(test::readBytes(path), "");
    EXPECT_NE(createTemporaryFile(), path);
  }
  const ScopedVariable absent(L"TMP", first.at(L"absent"));
  EXPECT_EQ(createTemporaryFile(), L"");
  const ScopedVariable tooLong(L"TMP", L"C:\\" + std::wstring(250, L't'));
  EXPECT_EQ(createTemporaryFile(), L"");
}

// Windows lets ordinary users make no links, and Wine makes none at all, so the build makes this one.
TEST(FilesTest, ResolvesLinks) {
  const std::wstring links = joinPath(folderPart(modulePath()), L"links");
  const std::wstring target = joinPath(links, L"target");
  const std::wstring link = joinPath(links, L"link");
  ASSERT_TRUE(folderExists(target));
  EXPECT_EQ(resolveReparsePoint(target), target);
  EXPECT_EQ(resolveReparsePoint(joinPath(links, L"absent")), joinPath(links, L"absent"));
  if (!folderExists(link)) GTEST_SKIP() << "the build could not make a link";
  EXPECT_EQ(resolveReparsePoint(link), target);
}

}  // namespace
}  // namespace ryn
