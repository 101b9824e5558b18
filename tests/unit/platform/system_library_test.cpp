#include "platform/system_library.h"

#include <gtest/gtest.h>

#include "platform/dll_search.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "platform/version_resource.h"
#include "tests/unit/support/process_state.h"
#include "tests/unit/support/temp_folder.h"

namespace ryn {
namespace {

using test::ScopedCurrentFolder;
using test::TempFolder;

// Names that no system folder has: a library built beside the test program, and its copy elsewhere.
constexpr wchar_t kPlanted[] = L"rynplanted.dll";
constexpr wchar_t kCopied[] = L"ryncopied.dll";

std::wstring besideProgram() {
  return joinPath(folderPart(modulePath()), kPlanted);
}

std::wstring pathOf(const UniqueModule& module) {
  wchar_t path[MAX_PATH];
  return module ? std::wstring(path, GetModuleFileNameW(module.get(), path, MAX_PATH)) : L"";
}

/// What the process's own search for a bare name comes up with.
std::wstring searchFor(const wchar_t* name) {
  return pathOf(UniqueModule(LoadLibraryW(name)));
}

TEST(SystemLibraryTest, FindsLibrariesAndFunctions) {
  const UniqueModule library = loadSystemLibrary(L"version.dll");
  EXPECT_TRUE(equalIgnoringCase(pathOf(library), joinPath(systemFolder(), L"version.dll")));
  EXPECT_EQ(systemFolderForProcess(), systemFolder());
  RYN_FUNCTION(GetTickCount) present(kernelLibrary());
  EXPECT_EQ(present, &GetTickCount);
  RYN_FUNCTION(MessageBoxW) elsewhere(kernelLibrary());
  EXPECT_FALSE(elsewhere);
  EXPECT_FALSE(bindAll(kernelLibrary(), present, elsewhere));
  EXPECT_FALSE(present.bind(nullptr));
}

TEST(SystemLibraryTest, LoadsNothingThatIsPlanted) {
  const TempFolder temp(TempFolder::Name::kNonAscii);
  ASSERT_TRUE(CopyFileW(besideProgram().c_str(), temp.at(kCopied).c_str(), TRUE));
  const ScopedCurrentFolder inside(temp.path());
  ASSERT_EQ(searchFor(kPlanted), besideProgram());
  ASSERT_EQ(searchFor(kCopied), temp.at(kCopied));
  for (const wchar_t* name : {kPlanted, kCopied}) {
    EXPECT_EQ(pathOf(loadSystemLibrary(name)), L"");
    EXPECT_EQ(pathOf(loadLibraryFrom(L"", name)), L"");
  }
  EXPECT_EQ(pathOf(loadLibraryFrom(temp.path(), kCopied)), temp.at(kCopied));

  // For good: whatever follows in the same process lives with it.
  narrowDllSearch();
  EXPECT_EQ(searchFor(kPlanted), L"");
  EXPECT_EQ(searchFor(kCopied), L"");
  EXPECT_TRUE(loadSystemLibrary(L"version.dll"));
}

TEST(VersionReaderTest, ReadsVersionsAndCompany) {
  const VersionReader reader;
  const VersionResource planted = reader.read(besideProgram());
  EXPECT_EQ(planted.fileVersion, (FourPartVersion{1, 2, 300, 65535}));
  EXPECT_EQ(planted.productVersion, (FourPartVersion{8, 0, 2020, 4}));
  EXPECT_EQ(planted.companyName, L"Caf\u00e9 \u4e2d");
  EXPECT_EQ(reader.read(joinPath(systemFolder(), L"version.dll")).companyName, L"Microsoft Corporation");
  for (const std::wstring& path : {modulePath(), joinPath(systemFolder(), L"absent.exe")}) {
    const VersionResource nothing = reader.read(path);
    EXPECT_FALSE(nothing.fileVersion || nothing.productVersion || !nothing.companyName.empty()) << path;
  }
}

}  // namespace
}  // namespace ryn
