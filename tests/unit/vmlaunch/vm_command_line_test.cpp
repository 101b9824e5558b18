#include "vmlaunch/vm_command_line.h"

#include <gtest/gtest.h>

#include "launcher/command_line.h"

namespace ryn {
namespace {

constexpr wchar_t kJava[] = L"C:\\a b\\java.exe";

LaunchRequest plainRequest() {
  LaunchRequest request;
  request.mainClass = L"Main";
  request.classpath.entries = {L"D:\\a b.jar", L"c.jar"};
  request.leadingArguments = {L"D:\\x y\\app.ryn", L"C:\\t.tmp"};
  return request;
}

LaunchRequest fullRequest() {
  LaunchRequest request = plainRequest();
  request.gcExtent = L"false";
  request.additionalOptions = L"-Dx=\"a b\"  -Dy";
  request.verbosityOption = L"gc";
  request.applicationArguments = {L"one", L"two"};
  request.heapInitial = 1048576;
  request.heapMax = 8LL << 30;
  request.verifyMode = request.verbose = request.debugging = request.noAsyncGc = request.noJit = true;
  return request;
}

TEST(VmCommandLineTest, WritesNothingThatIsNotAsked) {
  const std::wstring end = L"\"D:\\a b.jar;c.jar;\" Main \"D:/x y/app.ryn\" \"C:/t.tmp\" ";
  LaunchRequest request = plainRequest();
  EXPECT_EQ(modernCommandLine(request, kJava, VmVersion(8, 0, 0)),
            L"\"C:\\a b\\java.exe\" -classpath " + end);
  EXPECT_EQ(microsoftCommandLine(request, kJava), L"\"C:\\a b\\java.exe\" /cp " + end);
  request.classpath.entries.clear();
  request.heapMax = -1;
  EXPECT_EQ(
      classicCommandLine(request, kJava, L"C:\\j"),
      L"\"C:\\a b\\java.exe\" -classpath \"C:\\j\\lib\\classes.zip;\" Main \"D:/x y/app.ryn\" \"C:/t.tmp\" ");
}

TEST(VmCommandLineTest, WritesEveryOptionInItsOrder) {
  const std::wstring end = L" Main \"D:/x y/app.ryn\" \"C:/t.tmp\" one two";
  EXPECT_EQ(modernCommandLine(fullRequest(), kJava, VmVersion(25, 0, 2)),
            L"\"C:\\a b\\java.exe\" --add-opens java.base/jdk.internal.loader=ALL-UNNAMED"
            L" --enable-native-access=ALL-UNNAMED -Dsun.java2d.uiScale.enabled=false"
            L" -Djava.locale.useOldISOCodes=true -Xms1048576 -Xmx8589934592 -verbose:gc -Xdebug -Xnoasyncgc"
            L" -Djava.compiler=off -Xnoclassgc -Dx=\"a b\"  -Dy -classpath \"D:\\a b.jar;c.jar;\"" +
                end);
  EXPECT_EQ(classicCommandLine(fullRequest(), L"C:\\j\\bin\\JREW.exe", L"C:\\j"),
            L"\"C:\\j\\bin\\JREW.exe\" -ms1048576 -mx8589934592 -verbose -debug -noasyncgc -nojit -noclassgc"
            L" -Dx=\"a b\"  -Dy -cp \"D:\\a b.jar;c.jar;C:\\j\\lib\\classes.zip;\"" +
                end);
  EXPECT_EQ(microsoftCommandLine(fullRequest(), kJava),
            L"\"C:\\a b\\java.exe\" /cp \"D:\\a b.jar;c.jar;\"" + end);
}

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
  for (const auto& [major, options] : rows) {
    EXPECT_EQ(modernCommandLine(request, L"j", VmVersion(static_cast<int16_t>(major), 99, 0)),
              L"\"j\"" + options + L" -classpath \"\"  ")
        << major;
  }
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
