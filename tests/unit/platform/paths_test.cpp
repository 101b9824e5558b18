#include "platform/paths.h"

#include <gtest/gtest.h>

namespace ryn {
namespace {

TEST(PathsTest, FolderPartKnowsOnlyBackslashes) {
  const struct {
    const wchar_t* path;
    const wchar_t* folder;
  } rows[] = {
      {L"name.txt", L"."},
      {L"C:\\a\\name.txt", L"C:\\a"},
      {L"C:/a/name.txt", L"."},
      {L"\\name", L""},
  };
  for (const auto& row : rows)
    EXPECT_EQ(folderPart(row.path), row.folder) << testing::PrintToString(row.path);
}

}  // namespace
}  // namespace ryn
