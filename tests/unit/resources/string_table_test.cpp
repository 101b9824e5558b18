#include "resources/string_table.h"

#include <gtest/gtest.h>
#include <windows.h>

namespace ryn {
namespace {

TEST(StringTableTest, HoldsTheEnglishTexts) {
  // Windows goes by the first, Wine by the second.
  SetThreadUILanguage(1033);
  SetThreadLocale(1033);
  const std::pair<unsigned, const wchar_t*> rows[] = {
      {101,
       L"Could not find a valid Java virtual machine to load.\n\n"
       L"You may need to reinstall a supported Java virtual machine."},
      {102, L"The Kestrune properties file is missing"},
      {103, L"Windows error %d occured while loading the Java VM"},
      {104, L"The Brivant properties file contains invalid information"},
      {105, L"Could not connect to the specified URL"},
      {106, L"JVM Download Error"},
      {109, L"Download of VM pack failed. Installer exiting..."},
      {110, L"Kestrune Error"},
      {111, L"Network Connection Error"},
      {112, L"JVM Extraction Error"},
      {113, L"Could not extract the downloaded VM pack. Installer exiting..."},
      {114, L"Downloading"},
      {115, L"Downloading Java Virtual Machine pack"},
      {118, L"Security Error"},
      {119,
       L"The JVM used for this installer seems to have been installed in a unsecured location (non-admin "
       L"user "
       L"folder). Installer would now exit. Please reach out to your vendor for more details."}};
  for (const auto& [id, text] : rows) EXPECT_EQ(StringTable::get(id), text) << id;
}

TEST(StringTableTest, RefusesIdsWithoutText) {
  for (const unsigned id : {0u, 100u, 107u, 108u, 116u, 117u, 120u}) {
    try {
      StringTable::get(id);
      ADD_FAILURE() << id << " has a text";
    } catch (const StringTableException& error) {
      EXPECT_STREQ(error.what(), "invalid key");
    }
  }
}

}  // namespace
}  // namespace ryn
