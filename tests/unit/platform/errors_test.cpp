#include "platform/errors.h"

#include <gtest/gtest.h>

namespace ryn {
namespace {

// Whoever shows what() widens each of its bytes.
TEST(ErrorsTest, DescribeThemselvesInBytes) {
  EXPECT_STREQ(TerminalError(L"caf\u00e9 \u0100\U0001f600").what(), "caf\xe9 \\u0100\\ud83d\\ude00");
  const FileException file(L"cannot read", L"C:\\\u4e2d\\\u00e9.ryn");
  EXPECT_STREQ(file.what(), "cannot read: C:\\\\u4e2d\\\xe9.ryn");
}

}  // namespace
}  // namespace ryn
