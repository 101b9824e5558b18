#include "vmlaunch/vm_command_line.h"

#include <gtest/gtest.h>

#include "launcher/command_line.h"

namespace ryn {
namespace {

constexpr wchar_t kJava[] = L"C:\\a b\\java.exe";

TEST(VmCommandLineTest, ModernOptionsFollowTheVersion) {
  const std::wstring opens = L" --add-opens java.base/jdk.internal.loader=ALL-UNNAMED";
  const std::wstring access = L" --enable-native-access=ALL-UNNAMED";
  const std::wstring rest = L" -Dsun.java2d.uiScale.enabled=false -Djava.locale.useOldISOCodes=true";
  const std::pair<int, std::wstring> rows[] = {
      {2, L""},
      {8, L""},
      {9, opens + rest},
      {24, opens + rest},
      {25, opens + access + rest},
      {32767, opens + access + rest},
      // Compared with its sign.
      {32768, L""},
  };
  LaunchRequest request;
  request.heapInitial = -1;
  request.heapMax = 8LL << 30;
  for (const auto& [major, options] : rows) {
    EXPECT_EQ(modernCommandLine(request, L"j", VmVersion(static_cast<int16_t>(major), 99, 0)),
              L"\"j\"" + options + L" -Xmx8589934592 -classpath \"\"  ")
        << major;
  }
}

TEST(VmCommandLineTest, WritesNothingThatIsNotAsked) {
  LaunchRequest request;
  request.mainClass = L"Main";
  request.leadingArguments = {L"D:\\x y", L"C:\\t"};
  const std::wstring end = L" Main \"D:/x y\" \"C:/t\" ";
  EXPECT_EQ(classicCommandLine(request, kJava, L"C:\\j"),
            L"\"C:\\a b\\java.exe\" -classpath \"C:\\j\\lib\\classes.zip;\"" + end);
  EXPECT_EQ(microsoftCommandLine(request, kJava), L"\"C:\\a b\\java.exe\" /cp \"\"" + end);
}

TEST(VmCommandLineTest, QuotesApplicationArguments) {
  using Words = std::vector<std::wstring>;
  // The text, and what a program reads from it.
  const std::tuple<Words, const wchar_t*, Words> rows[] = {
      {Words(), L"", Words()},
      {{L"a", L"b c"}, L"a \"b c\"", {L"a", L"b c"}},
      {{L"C:\\My Files"}, L"\"C:\\\\My Files\"", {L"C:\\\\My Files"}},
      {{L"C:\\x\\"}, L"C:\\\\x\\\\", {L"C:\\\\x\\\\"}},
      {{L"C:\\My Files\\", L"x"}, L"\"C:\\\\My Files\\\\\" x", {L"C:\\\\My Files\\", L"x"}},
      {{L"", L"x", L""}, L" x ", {L"x"}},
      {{L"\"*.txt\""}, L"\"*.txt\"", {L"*.txt"}},
      {{L"say\"hi\""}, L"say\"hi\"", {L"sayhi"}},
      {{L"t\tb"}, L"t\tb", {L"t", L"b"}},
      {{L"\u00e9\u4e2d"}, L"\u00e9\u4e2d", {L"\u00e9\u4e2d"}},
  };
  for (const auto& [arguments, text, read] : rows) {
    LaunchRequest request;
    request.applicationArguments = arguments;
    EXPECT_EQ(applicationArgumentText(request), text);

    const Words words = splitAsWindows(modernCommandLine(request, kJava, {}));
    EXPECT_EQ(Words(words.begin() + 3, words.end()), read) << testing::PrintToString(text);
  }
}

}  // namespace
}  // namespace ryn
