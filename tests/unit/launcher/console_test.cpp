#include "launcher/console.h"

#include <gtest/gtest.h>

namespace ryn {
namespace {

TEST(ConsoleTest, FirstReasonWins) {
  using enum ConsoleReason;
  // Control key, command line, redirects of standard output and error.
  const std::tuple<bool, bool, const wchar_t*, const wchar_t*, ConsoleReason> rows[] = {
      {true, true, L"console", L"console", kControlKey},
      {true, false, L"", L"", kControlKey},
      {false, true, L"console", L"", kCommandLine},
      {false, false, L"Console", L"", kProperties},
      {false, false, L"out.log", L"CONSOLE", kProperties},
      {false, false, L"console.log", L"console ", kNone},
      {false, false, L"", L"", kNone},
  };
  for (const auto& [key, flag, output, error, reason] : rows) {
    EXPECT_EQ(decideConsole(key, flag, output, error), reason)
        << testing::PrintToString(output) << testing::PrintToString(error);
  }
}

}  // namespace
}  // namespace ryn
