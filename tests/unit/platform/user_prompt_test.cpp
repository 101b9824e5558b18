#include "platform/user_prompt.h"

#include <gtest/gtest.h>

namespace ryn {
namespace {

TEST(ReadsRightToLeftTest, FirstLetterDecides) {
  const struct {
    const wchar_t* text;
    bool rightToLeft;
  } rows[] = {
      {L"", false},
      {L"106 ...\n", false},
      {L"Java", false},
      {L"Java \u0622\u0644\u0629", false},
      {L"\u0622\u0644\u0629 Java", true},
      {L"(2) \u05e9\u05d2\u05d9\u05d0\u05d4", true},
      {L"\ufe8d", true},
      {L"\u4f60 \u0622", false},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(readsRightToLeft(row.text), row.rightToLeft) << testing::PrintToString(row.text);
  }
}

}  // namespace
}  // namespace ryn
