#include <gtest/gtest.h>
#include <windows.h>

// Behind the header that it takes its types from.
#include <shellapi.h>

#include "launcher/command_line.h"
#include "platform/unique_handle.h"
#include "tests/unit/launcher/quoting_rows.h"

namespace ryn {
namespace {

using Words = std::vector<std::wstring>;

TEST(CommandLineTest, SplitsAsWindows) {
  for (const auto& [text, silent] : test::kQuotingRows) {
    int count = 0;
    const UniqueLocalMemory memory(CommandLineToArgvW(text, &count));
    const auto* words = static_cast<wchar_t* const*>(memory.get());
    EXPECT_EQ(splitAsWindows(text), Words(words, words + count)) << testing::PrintToString(text);
  }
}

}  // namespace
}  // namespace ryn
