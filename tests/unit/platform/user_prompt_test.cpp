#include "platform/user_prompt.h"

#include <gtest/gtest.h>

#include "platform/quiet_drives.h"

namespace ryn {
namespace {

TEST(UserPromptTest, TheFirstLetterOfABoxDecidesItsDirection) {
  const std::pair<const wchar_t*, bool> rows[] = {
      {L"", false}, {L"1: \u05d0b", true}, {L"(b) \u05d0", false}, {L"\u0627", true}};
  for (const auto& row : rows) EXPECT_EQ(readsRightToLeft(row.first), row.second) << &row - rows;
}

TEST(QuietDrivesTest, SilenceTheThreadForAsLongAsTheyLive) {
  const DWORD before = GetThreadErrorMode();
  {
    const QuietDrives quiet;
    EXPECT_EQ(GetThreadErrorMode() & SEM_FAILCRITICALERRORS, DWORD{SEM_FAILCRITICALERRORS});
  }
  EXPECT_EQ(GetThreadErrorMode(), before);
}

}  // namespace
}  // namespace ryn
