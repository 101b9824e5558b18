#include "provision/digest.h"

#include <gtest/gtest.h>

namespace ryn {
namespace {

TEST(DigestTest, MissingFileGivesNoDigestAndThreeLines) {
  testing::internal::CaptureStdout();
  EXPECT_EQ(md5OfFile(L"C:\\missing\\file"), L"");
  const std::string text = testing::internal::GetCapturedStdout();
  EXPECT_EQ(text.find("Error opening file C\nError: 3\nReadFile failed: 6\nCryptGetHashParam failed: "), 0u)
      << text;
}

}  // namespace
}  // namespace ryn
