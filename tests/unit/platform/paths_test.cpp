#include "platform/paths.h"

#include <gtest/gtest.h>

#include "tests/unit/support/process_state.h"
#include "tests/unit/support/temp_folder.h"

namespace ryn {
namespace {

using test::ScopedCurrentFolder;
using test::TempFolder;

TEST(PathsTest, NormalisesFromTheCurrentFolder) {
  const TempFolder temp(TempFolder::Name::kNonAscii);
  const ScopedCurrentFolder inside(temp.path());
  const std::wstring deep = L"C:\\" + std::wstring(300, L'd');
  const std::pair<std::wstring, std::wstring> rows[] = {
      {L"C:\\a\\.\\b\\..\\c", L"C:\\a\\c"}, {L"C:/a/b", L"C:\\a\\b"},
      {L"C:\\..\\a\\", L"C:\\a\\"},         {L"", L""},
      {L"sub\\..\\x", temp.at(L"x")},       {L"C:\\.\\" + std::wstring(300, L'd'), deep},
      {deep + L"\\..\\x", L"C:\\x"}};
  for (const auto& [path, result] : rows) EXPECT_EQ(normalisePath(path), result);
}

TEST(PathsTest, KnowsDevices) {
  for (const wchar_t* device : {L"C:\\a\\aux.vm", L"nul", L"con:"})
    EXPECT_TRUE(namesDevice(device)) << device;
  for (const wchar_t* file : {L"C:\\a\\auxiliary.vm", L"C:\\aux\\a", L"", L"x"})
    EXPECT_FALSE(namesDevice(file)) << file;
}

TEST(PathsTest, ExpandsToTheLongestFormThatFits) {
  const TempFolder temp;
  const std::wstring file = temp.write(L"A Long File Name.text");
  const ScopedCurrentFolder inside(temp.path());
  wchar_t shortForm[MAX_PATH];
  wchar_t longForm[MAX_PATH];
  ASSERT_NE(GetShortPathNameW(file.c_str(), shortForm, MAX_PATH), 0u);
  ASSERT_NE(GetLongPathNameW(file.c_str(), longForm, MAX_PATH), 0u);
  const std::wstring tooLong(kPathBufferSize, L'x');
  EXPECT_EQ(expandPath(shortForm), longForm);
  EXPECT_EQ(expandPath(L".\\A Long File Name.text"), longForm);
  EXPECT_EQ(expandPath(L"absent"), temp.at(L"absent"));
  EXPECT_EQ(expandPath(tooLong), tooLong);
}

}  // namespace
}  // namespace ryn
