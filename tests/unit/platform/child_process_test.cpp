#include "platform/child_process.h"

#include <gtest/gtest.h>

#include "platform/paths.h"
#include "platform/system_library.h"

namespace ryn {
namespace {

TEST(ChildProcessTest, TellsHowItEnded) {
  const std::wstring shell = joinPath(systemFolder(), L"cmd.exe");
  const struct {
    const char* name;
    std::wstring executable;
    const wchar_t* commandLine;
    DWORD limitMs;
    ChildEnd end;
    DWORD exitCode;
    std::string output;
  } rows[] = {
      {"ended", shell, L"cmd /c echo out& echo error>&2& exit 259", 60'000, ChildEnd::kEnded, 259,
       "out\r\nerror\r\n"},
      {"much output", shell, L"cmd /c for /l %i in (1,1,120) do @echo 12345678", 60'000, ChildEnd::kEnded, 0,
       [] {
         std::string text;
         while (text.size() < kKeptChildOutput) text += "12345678\r\n";
         return text.substr(0, kKeptChildOutput);
       }()},
      {"endless", shell, L"cmd /c for /l %i in (1,0,2) do @rem", 500, ChildEnd::kTimedOut, 0, ""},
      {"missing", shell + L"x", L"cmd", 60'000, ChildEnd::kNotStarted, 0, ""},
  };
  for (const auto& row : rows) {
    const ChildResult result = runChild(row.executable, row.commandLine, row.limitMs);
    EXPECT_EQ(result.end, row.end) << row.name;
    EXPECT_EQ(result.exitCode, row.exitCode) << row.name;
    EXPECT_EQ(result.output, row.output) << row.name;
  }
}

}  // namespace
}  // namespace ryn
