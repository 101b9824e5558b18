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

TEST(ApplicationLayoutTest, PlacesOfThePack) {
  const test::TempFolder folder;
  const std::wstring& root = folder.path();
  EXPECT_EQ(packDestination(root, L"http://h/jre.vm"), L"");
  EXPECT_EQ(extractionFolder(root), L"");

  folder.makeFolder(L"Windows_Pure_64_Bit\\jvmspecs");
  EXPECT_EQ(extractionFolder(root), root + L"\\Windows_Pure_64_Bit\\resource\\jre\\");
  const struct {
    const wchar_t* url;
    const wchar_t* destination;
  } rows[] = {
      {L"http://h/d/jre.vm", L"\\Windows_Pure_64_Bit\\jvmspecsjre.vm"},
      {L"http://h/ \tjre 17.vm", L"\\Windows_Pure_64_Bit\\jvmspecsjre 17.vm"},
      {L"http://h/.vm", L"\\Windows_Pure_64_Bit\\jvmspecs.vm"},
      {L".vm", L"\\Windows_Pure_64_Bit\\jvmspecs.vm"},
  };
  for (const auto& row : rows) EXPECT_EQ(packDestination(root, row.url), root + row.destination);

  // The two folders are looked for separately.
  folder.makeFolder(L"Windows");
  EXPECT_EQ(packDestination(root, L"x.vm"), root + L"\\Windows_Pure_64_Bit\\jvmspecsx.vm");
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
