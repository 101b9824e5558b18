#include "platform/files.h"

#include <gtest/gtest.h>

#include "platform/paths.h"
#include "tests/unit/support/process_state.h"
#include "tests/unit/support/temp_folder.h"

namespace ryn {
namespace {

using test::TempFolder;

TEST(FilesTest, CannotOpenWhatIsAbsentLockedOrAFolder) {
  const TempFolder temp(TempFolder::Name::kNonAscii);
  const std::wstring locked = temp.write(L"locked");
  const UniqueFile lock(CreateFileW(locked.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
  for (const std::wstring& path : {temp.at(L"absent\\file"), locked, temp.path()}) {
    EXPECT_FALSE(openForReading(path)) << path;
    EXPECT_FALSE(openForAppending(path)) << path;
  }
  EXPECT_FALSE(pathExists(temp.at(L"lock*"))) << "a pattern is no path";
}

TEST(FilesTest, CreatesTemporaryFilesWhereTempSaysWithoutTmp) {
  const TempFolder folder(TempFolder::Name::kNonAscii);
  const test::ScopedVariable temp(L"TEMP", folder.path());
  const test::ScopedVariable tmp(L"TMP", std::nullopt);
  const std::wstring path = createTemporaryFile();
  EXPECT_EQ(folderPart(path), folder.path());
  EXPECT_NE(createTemporaryFile(), path);
  const test::ScopedVariable tooLong(L"TMP", L"C:\\" + std::wstring(250, L't'));
  EXPECT_EQ(createTemporaryFile(), L"");
}

// Windows lets ordinary users make no links, and Wine makes none at all, so the build makes this one.
TEST(FilesTest, ResolvesLinks) {
  const std::wstring links = joinPath(folderPart(modulePath()), L"links");
  const std::wstring link = joinPath(links, L"link");
  if (!folderExists(link)) GTEST_SKIP() << "the build could not make a link";
  EXPECT_EQ(resolveReparsePoint(link), joinPath(links, L"target"));
}

}  // namespace
}  // namespace ryn
