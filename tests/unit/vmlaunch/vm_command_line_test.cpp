#include "vmlaunch/vm_command_line.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <shellapi.h>

#include "platform/unique_handle.h"

namespace ryn {
namespace {

using Words = std::vector<std::wstring>;

TEST(VmCommandLineTest, ComparesGenerationsWithTheirSign) {
  const LaunchRequest request;
  const auto options = [&](int generation) {
    return modernCommandLine(request, L"j", VmVersion(static_cast<int16_t>(generation), 99, 0));
  };
  EXPECT_EQ(options(32768), L"\"j\" -classpath \"\"  ");
  EXPECT_EQ(options(32767), options(25));
}

TEST(VmCommandLineTest, QuotesApplicationArguments) {
  // The text, and what a program reads from it.
  const std::tuple<Words, const wchar_t*, Words> rows[] = {
      {{L"C:\\x\\"}, L"C:\\\\x\\\\", {L"C:\\\\x\\\\"}},
      {{L"C:\\My Files\\", L"x"}, L"\"C:\\\\My Files\\\\\" x", {L"C:\\\\My Files\\", L"x"}},
      {{L"", L"x", L""}, L" x ", {L"x"}},
      {{L"\"*.txt\""}, L"\"*.txt\"", {L"*.txt"}},
      {{L"say\"hi\""}, L"say\"hi\"", {L"sayhi"}},
      {{L"t\tb"}, L"t\tb", {L"t", L"b"}},
  };
  for (const auto& [arguments, text, read] : rows) {
    LaunchRequest request;
    request.applicationArguments = arguments;
    EXPECT_EQ(applicationArgumentText(request), text);

    int count = 0;
    const UniqueLocalMemory memory(CommandLineToArgvW(modernCommandLine(request, L"j", {}).c_str(), &count));
    auto* const* words = static_cast<wchar_t* const*>(memory.get());
    EXPECT_EQ(Words(words + 3, words + count), read) << testing::PrintToString(text);
  }
}

}  // namespace
}  // namespace ryn
