#include "provision/application_layout.h"

#include <gtest/gtest.h>

#include "tests/unit/support/temp_folder.h"

namespace ryn {
namespace {

TEST(ApplicationLayoutTest, EarlierPlacesWin) {
  // In each, what is put in place last is found from then on.
  const test::TempFolder folder;
  const std::wstring& root = folder.path();
  EXPECT_EQ(findJvmspecs(root), L"");
  for (const wchar_t* name : {L"Windows_Pure_64_Bit\\jvmspecs\\jvmspecs.properties",
                              L"Windows\\jvmspecs\\jvmspecs.properties", L"jvmspecs\\jvmspecs.properties"}) {
    const std::wstring path = folder.write(name);
    EXPECT_EQ(findJvmspecs(root), path);
  }
}

TEST(ApplicationLayoutTest, LooksForTheTwoFoldersOfThePackSeparately) {
  const test::TempFolder folder;
  const std::wstring& root = folder.path();
  EXPECT_EQ(packDestination(root, L"x.vm") + extractionFolder(root), L"");
  folder.makeFolder(L"Windows_Pure_64_Bit\\jvmspecs");
  folder.makeFolder(L"Windows");
  EXPECT_EQ(packDestination(root, L"http://h/ \tjre 17.vm"),
            root + L"\\Windows_Pure_64_Bit\\jvmspecsjre 17.vm");
  EXPECT_EQ(packDestination(root, L".vm"), root + L"\\Windows_Pure_64_Bit\\jvmspecs.vm");
  EXPECT_EQ(extractionFolder(root), root + L"\\Windows\\resource\\jre\\");
}

TEST(ApplicationLayoutTest, UnpackedVmIsInBinFirst) {
  const test::TempFolder folder;
  const std::wstring home = folder.path() + L"\\";
  EXPECT_EQ(unpackedVm(home), L"");
  folder.makeFolder(L"jre\\bin");
  EXPECT_EQ(unpackedVm(home), home + L"\\jre\\bin\\java.exe");
  folder.makeFolder(L"bin");
  EXPECT_EQ(unpackedVm(home), home + L"\\bin\\java.exe");
}

}  // namespace
}  // namespace ryn
