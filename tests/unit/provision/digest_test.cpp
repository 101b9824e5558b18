#include "provision/digest.h"

#include <gtest/gtest.h>

#include "tests/unit/support/temp_folder.h"

namespace ryn {
namespace {

TEST(DigestTest, ReadsTheWholeFile) {
  const test::TempFolder folder(test::TempFolder::Name::kNonAscii);
  const struct {
    std::string content;
    const wchar_t* digest;
  } rows[] = {
      {"", L"d41d8cd98f00b204e9800998ecf8427e"},
      {"abc", L"900150983cd24fb0d6963f7d28e17f72"},
      // Longer than one read, and not a multiple of it.
      {std::string(2500, 'a'), L"02cc5d5de2e53b5ed3f09a965bd77700"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(md5OfFile(folder.write(L"pack", row.content)), row.digest) << row.content.size();
  }
}

TEST(DigestTest, MissingFileGivesNoDigestAndThreeLines) {
  testing::internal::CaptureStdout();
  EXPECT_EQ(md5OfFile(L"C:\\missing\\file"), L"");
  const std::string text = testing::internal::GetCapturedStdout();
  EXPECT_EQ(text.find("Error opening file C\nError: 3\nReadFile failed: 6\nCryptGetHashParam failed: "), 0u)
      << text;
}

}  // namespace
}  // namespace ryn
