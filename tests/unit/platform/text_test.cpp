#include "platform/text.h"

#include <gtest/gtest.h>

#include "platform/user_prompt.h"

namespace ryn {
namespace {

TEST(TextTest, ComparesAsTheFileSystem) {
  EXPECT_TRUE(equalIgnoringCase(L"\u00c9t\u00c9", L"\u00e9T\u00e9") && equalIgnoringCase(L"", L""));
  EXPECT_FALSE(equalIgnoringCase(L"a", L""));
}

TEST(ReadsRightToLeftTest, FirstLetterDecides) {
  EXPECT_TRUE(readsRightToLeft(L"(2) \u05e9 Java") && readsRightToLeft(L"\ufe8d"));
  EXPECT_FALSE(readsRightToLeft(L"106 ...\n") || readsRightToLeft(L"Java \u0622"));
}

}  // namespace
}  // namespace ryn
