#include "ryn/branding.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>

#include "image/icon.h"
#include "image/string_block.h"
#include "tests/unit/image/image_builder.h"

namespace ryn {
namespace {

using test::bytesOf;
using test::complaint;

const ResourceId kDownloadGroup = std::wstring(L"DOWNLOADING JVM PACK");

/// An icon of one black picture of 16 x 16.
Bytes smallIcon() {
  Bytes icon;
  for (const unsigned field : {0U, 1U, 1U}) appendU16(icon, static_cast<uint16_t>(field));
  for (const uint32_t field : {0x1010U, 0x200001U, 40U + 1088U, 22U, 40U, 16U, 32U, 0x200001U})
    appendU32(icon, field);
  icon.resize(22 + 40 + 1088);
  return icon;
}

/// Of each language 102, 104 and 110, and the same of 101.
Bytes makeLauncher() {
  Resources resources;
  const auto addTexts = [&](uint16_t language, const wchar_t* missing, const wchar_t* invalid,
                            const wchar_t* title) {
    resources[{kRtString, 7, language}].data.resize(32);
    setString(resources, 101, language, L"no Java");
    setString(resources, 102, language, missing);
    setString(resources, 104, language, invalid);
    setString(resources, 110, language, title);
  };
  addTexts(1029, L"Chyb\u00ed soubor vlastnost\u00ed produktu Kestrune",
           L"Soubor vlastnost\u00ed spole\u010dnosti Brivant obsahuje", L"Chyba produktu Kestrune");
  addTexts(1031, L"Die Kestrune-Eigenschaftendatei fehlt", L"Die Brivant-Eigenschaftendatei",
           L"Kestrune-Fehler");
  addTexts(1033, L"The Kestrune properties file is missing", L"The Brivant properties file",
           L"Kestrune Error");
  addTexts(1035, L"Kestrunen ominaisuustiedosto puuttuu", L"Brivantin ominaisuustiedosto", L"Kestrune-virhe");
  addTexts(1069, L"Kestrune-ren propietateen fitxategia", L"Brivant-en propietateen",
           L"Kestrune-ren errorea");
  VersionInfo version;
  version.tables = {{L"040904b0", {{L"ProductVersion", L"1.0.0"}}}};
  resources[{kRtVersion, 1, 1033}].data = writeVersionInfo(version);
  resources[{kRtManifest, 1, 1033}].data = bytesOf("<requestedExecutionLevel level='asInvoker'/>");
  setIconGroup(resources, kDownloadGroup, readIcon(smallIcon()));
  return test::makeImage(true, resources, "overlay");
}

TEST(BrandingTest, EveryResourceBecomesTheMakers) {
  Branding branding{
      .name = L"MyApp \xd83d\xde00", .version = {2, 4, 0, 17}, .publisher = L"Maker", .title = L"Title"};
  branding.level = ExecutionLevel::kHighestAvailable;
  branding.noVmText[1031] = L"Kein Java\r\nHilfe: brivant.example \n";
  branding.icon = bytesOf(
      std::string_view("\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\1\0\0\0\1\0\x08\6\0\0\0....\0\0\0\0IENDsum.", 45));
  const Bytes bytes = brand(makeLauncher(), branding);
  const Resources resources = readResources(PeImage(bytes));

  EXPECT_EQ(findString(resources, 101, 1031), L"Kein Java\nHilfe: brivant.example");
  EXPECT_EQ(findString(resources, 101, 1033), L"no Java");
  for (const uint16_t language : stringLanguages(resources))
    EXPECT_EQ(findString(resources, 110, language), L"Title");
  const VersionInfo version = readVersionInfo(resources.at({kRtVersion, 1, 1033}).data);
  EXPECT_EQ(version.fileVersion, branding.version);
  EXPECT_EQ(version.tables[0].strings,
            (decltype(version.tables[0].strings){{L"CompanyName", L"Maker"},
                                                 {L"FileDescription", branding.name},
                                                 {L"FileVersion", L"2.4.0.17"},
                                                 {L"InternalName", branding.name},
                                                 {L"OriginalFilename", branding.name + L".exe"},
                                                 {L"ProductName", branding.name},
                                                 {L"ProductVersion", L"2.4.0.17"},
                                                 {L"LauncherVersion", L"1.0.0"}}));
  EXPECT_EQ(resources.at({kRtManifest, 1, 1033}).data,
            bytesOf("<requestedExecutionLevel level='highestAvailable'/>"));
  ASSERT_EQ(iconGroup(resources, kDownloadGroup).size(), 1u);
  EXPECT_EQ(iconGroup(resources, kDownloadGroup)[0].width, 256u);

  // A second time over the first, which has nothing left to replace.
  EXPECT_TRUE(brand(bytes, branding) == bytes);
}

TEST(BrandingTest, TextsNameTheApplicationAsTheirLanguageWants) {
  const std::tuple<uint16_t, const wchar_t*, std::wstring, std::wstring> rows[] = {
      {1029, L"Brivant", L"Chyb\u00ed soubor vlastnost\u00ed produktu Brivant",
       L"Soubor vlastnost\u00ed produktu Brivant obsahuje"},
      {1031, L"My App", L"Die My App-Eigenschaftendatei fehlt", L"Die My App-Eigenschaftendatei"},
      {1033, L"Kestrune 2", L"The Kestrune 2 properties file is missing", L"The Kestrune 2 properties file"},
      {1035, L"Aino", L"Ainon ominaisuustiedosto puuttuu", L"Ainon ominaisuustiedosto"},
      {1035, L"MyApp", L"MyAppin ominaisuustiedosto puuttuu", L"MyAppin ominaisuustiedosto"},
      {1069, L"MyApp", L"MyApp-en propietateen fitxategia", L"MyApp-en propietateen"}};
  for (const auto& [language, name, missing, invalid] : rows) {
    const Resources resources = readResources(PeImage(brand(makeLauncher(), {.name = name})));
    EXPECT_EQ(findString(resources, 102, language), missing);
    EXPECT_EQ(findString(resources, 104, language), invalid);
    EXPECT_EQ(findString(resources, 110, language), name);
  }
}

TEST(BrandingTest, IconComesFirstAndServesTheDownload) {
  Resources resources = readResources(PeImage(makeLauncher()));
  setIconGroup(resources, std::wstring(L"A GROUP"), readIcon(smallIcon()));
  setIconGroup(resources, std::wstring(L"Z GROUP"), readIcon(smallIcon()));
  Bytes png = bytesOf(std::string_view(
      "\x89PNG\r\n\x1a\n\0\0\0\rIHDR\0\0\0\x20\0\0\0\x20\x08\6\0\0\0....\0\0\0\0IENDsum.", 45));
  const Bytes launcher = withResources(PeImage(makeLauncher()), resources);
  resources = readResources(PeImage(brand(launcher, {.name = L"MyApp", .icon = png})));
  for (const auto& [name, width] : {std::pair<const wchar_t*, unsigned>{L"A GROUP", 32},
                                    {L"DOWNLOADING JVM PACK", 32},
                                    {L"Z GROUP", 16}}) {
    EXPECT_EQ(iconGroup(resources, std::wstring(name)).at(0).width, width) << std::wstring(name);
  }
}

TEST(BrandingTest, RefusesWhatDoesNotFit) {
  const std::wstring longText(256, L'x');
  const std::pair<Branding, const char*> rows[] = {
      {{}, "the application has no name"},
      {{.name = L"a\nb"}, "the name has a line break or another control character"},
      {{.name = L"a", .title = longText},
       "the title is 256 characters long, of which the launcher shows 255"},
      {{.name = longText.substr(20)},
       "with this name a text of the launcher is 269 characters long, of which the launcher shows 255"},
      {{.name = L"a", .icon = bytesOf("GIF")}, "the icon: it is neither an .ico nor a .png file"},
      {{.name = L"a", .noVmText = {{9, L"x"}}}, "the launcher has no texts in the language 9"},
      {{.name = L"a", .noVmText = {{1031, L" \n"}}},
       "the text for a missing Java in the language 1031 is empty"},
      {{.name = L"a", .noVmText = {{1031, longText}}},
       "the text for a missing Java in the language 1031 is 256 characters long, of which the launcher shows "
       "255"}};
  for (const auto& [branding, text] : rows)
    EXPECT_EQ(complaint([&wanted = branding] { brand(makeLauncher(), wanted); }), text);
  EXPECT_EQ(complaint([] { brand(test::makeImage(true, {}), {.name = L"a"}); }),
            "it is not the launcher: it lacks its icon or its texts");
}

TEST(BrandingTest, KnowsLanguagesByNameAndNumber) {
  const std::pair<const char*, std::optional<uint16_t>> rows[] = {
      {"de", 1031}, {"DE", 1031}, {"pt-br", 1046}, {"2070", 2070},
      {"es", 10},   {"xx", {}},   {"", {}},        {"1034", {}}};
  for (const auto& [name, language] : rows) EXPECT_EQ(languageOfTexts(name), language) << name;
}

#ifdef RYN_LAUNCHER_PATH
TEST(BrandingTest, TakesTheRealLauncher) {
  std::ifstream file(RYN_LAUNCHER_PATH, std::ios::binary);
  const Bytes before{std::istreambuf_iterator<char>(file), {}};
  // The linker's own check sum.
  Bytes counted = before;
  const PeImage launcher(before);
  updateCheckSum(counted, launcher.optionalHeader());
  EXPECT_TRUE(counted == before);

  const Bytes after = brand(before, {.name = L"MyApp", .icon = smallIcon()});
  const Resources resources = readResources(PeImage(after));
  EXPECT_EQ(stringLanguages(resources).size(), 30u);
  for (const uint16_t language : stringLanguages(resources)) {
    EXPECT_EQ(findString(resources, 110, language), L"MyApp");
    EXPECT_TRUE(findString(resources, 102, language)->find(L"MyApp") != std::wstring::npos) << language;
    EXPECT_TRUE(findString(resources, 104, language)->find(L"MyApp") != std::wstring::npos) << language;
  }
  // Neither product nor vendor is left, but in the manifest's assembly name.
  for (const auto& [key, resource] : resources) {
    if (key.type == kRtManifest) continue;
    for (const std::string_view name :
         {std::string_view("K\0e\0s\0t\0r\0u", 11), std::string_view("B\0r\0i\0v\0a\0n", 11)}) {
      EXPECT_EQ(std::string(resource.data.begin(), resource.data.end()).find(name), std::string::npos)
          << key.language;
    }
  }
  EXPECT_EQ(std::count_if(resources.begin(), resources.end(),
                          [](const auto& item) { return item.first.type == kRtIcon; }),
            1);
  // Without its changes it is the launcher again.
  const Bytes normal = withResources(launcher, readResources(launcher));
  EXPECT_TRUE(withResources(PeImage(after), readResources(launcher)) == normal);
}
#endif

}  // namespace
}  // namespace ryn
