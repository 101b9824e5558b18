#include "platform/environment.h"

#include <gtest/gtest.h>

#include "tests/unit/support/process_state.h"

namespace ryn {
namespace {

TEST(EnvironmentTest, ParsesABlock) {
  EXPECT_EQ(
      parseEnvironmentBlock(L"=C:=C:\\work\0=ExitCode=00000001\0A=1\0a=2\0B=x=y\0E=\0junk\0C=3\0\0D=4\0"),
      (EnvironmentMap{{L"A", L"1"}, {L"a", L"2"}, {L"B", L"x=y"}, {L"E", L""}, {L"C", L"3"}}));
  EXPECT_TRUE(parseEnvironmentBlock(L"\0").empty());
}

TEST(EnvironmentTest, FindsPathInAnyCase) {
  EXPECT_EQ(pathVariable({{L"APATH", L"no"}, {L"pAtH", L"C:\\bin"}, {L"PATHEXT", L".exe"}}), L"C:\\bin");
}

TEST(EnvironmentTest, ReadsTheProcess) {
  for (const std::wstring& value :
       {std::wstring(), std::wstring(L"\u00e9 \u4e2d"), std::wstring(20000, L'x')}) {
    const test::ScopedVariable variable(L"RYN_Test", value);
    EXPECT_EQ(environmentVariable(L"ryn_TEST"), value);
    EXPECT_EQ(readEnvironment().at(L"RYN_Test"), value);
  }
  EXPECT_EQ(environmentVariable(L"RYN_Test"), L"");
}

}  // namespace
}  // namespace ryn
