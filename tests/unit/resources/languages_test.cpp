// The texts and the dialog as they lie in the built launcher, in every language.
#include <windows.h>

#include <cstring>
#include <cwchar>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/text.h"
#include "resources/resource.h"

namespace ryn {
namespace {

constexpr WORD kEnglish = 1033;
constexpr WORD kSpanish = 10;
constexpr WORD kArabic = 1025;

// `letters` are those that a language has besides those of ASCII; a language with a script of its own names
// its range, "a-b". What is garbled or in the wrong file stands out.
const struct Language {
  WORD id;
  const wchar_t* letters;
} kLanguages[] = {
    {kSpanish, L"áéíñóúü"},
    {kArabic, L"\u0600-\u06ff"},
    {1027, L"àçèéíïòóú·"},
    {1028, L"\u3000-\u303f\u4e00-\u9fff\uff00-\uffef"},
    {1029, L"áčďéěíňóřšťúůýž"},
    {1030, L"æøå"},
    {1031, L"äöüß"},
    {1032, L"\u0370-\u03ff"},
    {kEnglish, L""},
    {1035, L"äö"},
    {1036, L"àâçèéêîôùû"},
    {1038, L"áéíóöőúüű"},
    {1040, L"àèéìòù"},
    {1041, L"\u3000-\u30ff\u4e00-\u9fff\uff00-\uffef"},
    {1042, L"\uac00-\ud7a3"},
    {1043, L"ëï"},
    {1044, L"æøå"},
    {1045, L"ąćęłńóśźż"},
    {1046, L"àáâãçéêíóôõú"},
    {1049, L"\u0410-\u044f"},
    {1051, L"áäčďéíĺľňóôŕšťúýž"},
    {1053, L"åäö"},
    {1054, L"\u0e00-\u0e7f"},
    {1055, L"çğıİöşü"},
    {1057, L""},
    {1060, L"čšž"},
    {1069, L""},
    {2052, L"\u3000-\u303f\u4e00-\u9fff\uff00-\uffef"},
    {2070, L"àáâãçéêíóôõú"},
    {3084, L"àâçèéêîôùû"},
};

constexpr unsigned kTexts[] = {
    IDS_NO_VALID_VM,         IDS_PROPERTIES_MISSING,     IDS_VM_START_FAILED,    IDS_PROPERTIES_INVALID,
    IDS_CONNECT_FAILED,      IDS_DOWNLOAD_ERROR_TITLE,   IDS_DOWNLOAD_FAILED,    IDS_ERROR_TITLE,
    IDS_CONNECT_ERROR_TITLE, IDS_EXTRACTION_ERROR_TITLE, IDS_EXTRACTION_FAILED,  IDS_DOWNLOADING_TITLE,
    IDS_DOWNLOADING_TEXT,    IDS_SECURITY_ERROR_TITLE,   IDS_UNSECURED_LOCATION,
};

HMODULE launcher() {
  static HMODULE module = LoadLibraryExW(replaceAll(fromUtf8(RYN_LAUNCHER_PATH), L"/", L"\\").c_str(),
                                         nullptr, LOAD_LIBRARY_AS_DATAFILE);
  return module;
}

/// A resource's bytes, as 16-bit units; nothing when the language has none.
std::vector<wchar_t> resource(const wchar_t* type, unsigned id, WORD language) {
  HRSRC found = FindResourceExW(launcher(), type, MAKEINTRESOURCEW(id), language);
  if (!found) return {};
  const auto* data = static_cast<const wchar_t*>(LockResource(LoadResource(launcher(), found)));
  return {data, data + SizeofResource(launcher(), found) / sizeof(wchar_t)};
}

// Sixteen texts share a resource; each is preceded by its length.
std::wstring text(unsigned id, WORD language) {
  const auto block = resource(RT_STRING, id / 16 + 1, language);
  size_t at = 0;
  for (unsigned i = 0; i < id % 16 && at < block.size(); ++i) at += 1u + block[at];
  return at < block.size() ? std::wstring(&block[at + 1], block[at]) : std::wstring();
}

std::set<WORD> languagesOf(const wchar_t* type, unsigned id) {
  std::set<WORD> languages;
  EnumResourceLanguagesW(
      launcher(), type, MAKEINTRESOURCEW(id),
      [](HMODULE, LPCWSTR, LPCWSTR, WORD language, LONG_PTR all) -> BOOL {
        reinterpret_cast<std::set<WORD>*>(all)->insert(language);
        return TRUE;
      },
      reinterpret_cast<LONG_PTR>(&languages));
  return languages;
}

size_t count(const std::wstring& in, const wchar_t* what) {
  size_t found = 0;
  for (size_t at = in.find(what); at != std::wstring::npos; at = in.find(what, at + 1)) ++found;
  return found;
}

bool isIn(wchar_t character, const std::wstring& letters) {
  wchar_t folded = character;
  CharLowerBuffW(&folded, 1);
  for (size_t i = 0; i < letters.size(); ++i) {
    if (letters[i] == character || letters[i] == folded) return true;
    if (letters[i] == L'-' && letters[i - 1] <= character && character <= letters[i + 1]) return true;
  }
  return false;
}

// In widths of a Latin letter: those of East Asia take two, vowel and tone marks of Thai and Arabic none.
size_t columns(const std::wstring& of) {
  size_t width = 0;
  for (const wchar_t character : of) {
    WORD kind = 0;
    GetStringTypeW(CT_CTYPE3, &character, 1, &kind);
    if (!(kind & C3_NONSPACING)) width += character >= 0x1100 ? 2u : 1u;
  }
  return width;
}

class LanguagesTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_TRUE(launcher()) << RYN_LAUNCHER_PATH << ": " << GetLastError(); }
};

TEST_F(LanguagesTest, FileHoldsThirtyAndNoOther) {
  std::set<WORD> expected;
  for (const Language& language : kLanguages) expected.insert(language.id);
  ASSERT_EQ(expected.size(), 30u);

  EXPECT_EQ(languagesOf(RT_DIALOG, IDD_DOWNLOAD), expected);
  for (const unsigned id : kTexts) EXPECT_EQ(languagesOf(RT_STRING, id / 16 + 1), expected) << id;
}

TEST_F(LanguagesTest, TextsKeepWhatTheCodeAndTheUserNeed) {
  for (const Language& language : kLanguages) {
    for (const unsigned id : kTexts) {
      SCOPED_TRACE(std::to_string(language.id) + ", text " + std::to_string(id));
      const std::wstring english = text(id, kEnglish);
      const std::wstring translated = text(id, language.id);
      ASSERT_FALSE(translated.empty());
      EXPECT_LE(translated.size(), 255u);
      EXPECT_EQ(translated == english, language.id == kEnglish);

      EXPECT_EQ(count(translated, L"%d"), id == IDS_VM_START_FAILED ? 1u : 0u);
      EXPECT_EQ(count(translated, L"%"), count(translated, L"%d"));
      EXPECT_EQ(count(translated, L"\n\n"), count(english, L"\n\n"));
      EXPECT_EQ(count(translated, L"\n"), count(english, L"\n"));
      EXPECT_EQ(count(translated, L"..."), count(english, L"..."));
      EXPECT_EQ(count(translated, L"("), count(translated, L")"));
      EXPECT_EQ(trim(translated), translated);
      EXPECT_EQ(count(translated, L"  "), 0u);
      for (const wchar_t* name : {L"Kestrune", L"Brivant", L"Java", L"Windows", L"VM", L"JVM", L"URL"}) {
        if (count(english, name)) {
          EXPECT_GT(count(translated, name), 0u) << testing::PrintToString(name);
        }
      }
    }
  }
}

TEST_F(LanguagesTest, TextsAreWrittenInTheLanguagesLetters) {
  std::set<std::wstring> seen;
  for (const Language& language : kLanguages) {
    const bool ownScript = std::wcschr(language.letters, L'-') != nullptr;
    size_t allOwn = 0;
    std::wstring all;
    for (const unsigned id : kTexts) {
      SCOPED_TRACE(std::to_string(language.id) + ", text " + std::to_string(id));
      const std::wstring translated = text(id, language.id);
      size_t own = 0;
      for (const wchar_t character : translated) {
        if (character < 0x80) continue;
        EXPECT_TRUE(isIn(character, language.letters)) << "U+" << std::hex << unsigned{character};
        ++own;
      }
      // The rest are blanks and the names of products, Latin everywhere.
      EXPECT_GE(own * 6, ownScript ? translated.size() : 0u);
      allOwn += own;
      all += translated;
    }
    EXPECT_TRUE(seen.insert(all).second) << language.id << " is a copy of another language";
    EXPECT_EQ(allOwn != 0, *language.letters != 0) << language.id;
  }
}

// The dialog has one line of 174 dialog units for it, a quarter of the average letter each.
TEST_F(LanguagesTest, TextOfTheDownloadFitsTheDialog) {
  for (const Language& language : kLanguages) {
    EXPECT_LE(columns(text(IDS_DOWNLOADING_TEXT, language.id)), 174u / 4) << language.id;
  }
}

TEST_F(LanguagesTest, DialogHasTheTitleAndDirectionOfItsLanguage) {
  for (const Language& language : kLanguages) {
    SCOPED_TRACE(language.id);
    const auto dialog = resource(RT_DIALOG, IDD_DOWNLOAD, language.id);
    // DLGTEMPLATEEX: version, signature, help, extended style, style, item count, frame, menu, class, title.
    ASSERT_GT(dialog.size(), 15u);
    ASSERT_EQ(dialog[1], 0xffff);
    DWORD extendedStyle;
    std::memcpy(&extendedStyle, &dialog[4], sizeof extendedStyle);
    EXPECT_EQ(extendedStyle, language.id == kArabic ? WS_EX_LAYOUTRTL | WS_EX_RTLREADING : 0u);
    ASSERT_EQ(dialog[13], 0) << "menu";
    ASSERT_EQ(dialog[14], 0) << "class";
    EXPECT_EQ(std::wstring(&dialog[15]), text(IDS_DOWNLOADING_TITLE, language.id));
  }
}

TEST_F(LanguagesTest, SpanishServesEveryRegion) {
  constexpr WORD kSpainMexicoArgentina[] = {0x0c0a, 0x080a, 0x2c0a};
  for (const WORD region : kSpainMexicoArgentina) {
    EXPECT_EQ(text(IDS_ERROR_TITLE, region), text(IDS_ERROR_TITLE, kSpanish)) << region;
  }
}

TEST_F(LanguagesTest, LoadStringFollowsTheLanguageOfTheThread) {
  const LCID locale = GetThreadLocale();
  const LANGID uiLanguage = GetThreadUILanguage();
  for (const Language& language : kLanguages) {
    if (language.id == kSpanish) continue;
    // Windows goes by the first, Wine by the second.
    SetThreadUILanguage(language.id);
    SetThreadLocale(MAKELCID(language.id, SORT_DEFAULT));
    for (const unsigned id : kTexts) {
      wchar_t buffer[256];
      const int length = LoadStringW(launcher(), id, buffer, static_cast<int>(std::size(buffer)));
      EXPECT_EQ(std::wstring(buffer, static_cast<size_t>(length)), text(id, language.id))
          << language.id << ", " << id;
    }
  }
  SetThreadUILanguage(uiLanguage);
  SetThreadLocale(locale);
}

// Everything of .rsrc but what other resources take: the texts, the dialogs and their directory.
TEST_F(LanguagesTest, AllLanguagesTakeLessThan60Kilobytes) {
  const auto* image = reinterpret_cast<const BYTE*>(reinterpret_cast<UINT_PTR>(launcher()) & ~UINT_PTR{3});
  const auto* headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(
      image + reinterpret_cast<const IMAGE_DOS_HEADER*>(image)->e_lfanew);
  DWORD size = 0;
  for (unsigned i = 0; i < headers->FileHeader.NumberOfSections; ++i) {
    const IMAGE_SECTION_HEADER& section = IMAGE_FIRST_SECTION(headers)[i];
    if (std::memcmp(section.Name, ".rsrc", 6) == 0) size = section.SizeOfRawData;
  }
  ASSERT_GT(size, 0u);
  for (const wchar_t* type : {RT_ICON, RT_MANIFEST, RT_VERSION}) {
    EnumResourceNamesW(
        launcher(), type,
        [](HMODULE module, LPCWSTR of, LPWSTR name, LONG_PTR rest) -> BOOL {
          *reinterpret_cast<DWORD*>(rest) -= SizeofResource(module, FindResourceW(module, name, of));
          return TRUE;
        },
        reinterpret_cast<LONG_PTR>(&size));
  }
  RecordProperty("bytes", static_cast<int>(size));
  EXPECT_LE(size, 60u * 1024);
}

}  // namespace
}  // namespace ryn
