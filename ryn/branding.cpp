#include "ryn/branding.h"

#include <algorithm>

#include "image/icon.h"
#include "image/image_error.h"
#include "image/string_block.h"
#include "text/text.h"

namespace ryn {
namespace {

// Of the launcher's texts.
constexpr unsigned kNoValidVm = 101;
constexpr unsigned kErrorTitle = 110;

/// The group that the download's window asks for, in capitals as the loader does it.
constexpr wchar_t kDownloadIcon[] = L"DOWNLOADING JVM PACK";

/// What the texts say in place of the application's name, "*". Languages that inflect a name, or say what it
/// is the name of, have rows of their own in front of those for all; an article that goes by the first letter
/// of the name stays.
struct Wording {
  /// 0 for all.
  uint16_t language;
  std::wstring_view from;
  std::wstring_view behindVowel;
  std::wstring_view behindConsonant;
};
constexpr Wording kWordings[] = {
    {1029, L"společnosti Brivant", L"produktu *", L"produktu *"},
    {1032, L"της Brivant", L"του *", L"του *"},
    {1035, L"Kestrunen", L"*n", L"*in"},
    {1035, L"Brivantin", L"*n", L"*in"},
    {1045, L"firmy Brivant", L"programu *", L"programu *"},
    {1046, L"da Brivant", L"do *", L"do *"},
    {1051, L"spoločnosti Brivant", L"produktu *", L"produktu *"},
    {1060, L"podjetja Brivant", L"programa *", L"programa *"},
    {1069, L"Kestrune-ren", L"*-ren", L"*-en"},
    {1069, L"Brivant-en", L"*-ren", L"*-en"},
    {2070, L"da Brivant", L"do *", L"do *"},
    {0, L"Kestrune", L"*", L"*"},
    {0, L"Brivant", L"*", L"*"},
};

struct LanguageName {
  std::string_view name;
  uint16_t language;
};
constexpr LanguageName kLanguageNames[] = {
    {"es", 10},      {"ar", 1025}, {"ca", 1027}, {"zh-TW", 1028}, {"cs", 1029},    {"da", 1030},
    {"de", 1031},    {"el", 1032}, {"en", 1033}, {"fi", 1035},    {"fr", 1036},    {"hu", 1038},
    {"it", 1040},    {"ja", 1041}, {"ko", 1042}, {"nl", 1043},    {"nb", 1044},    {"pl", 1045},
    {"pt-BR", 1046}, {"ru", 1049}, {"sk", 1051}, {"sv", 1053},    {"th", 1054},    {"tr", 1055},
    {"id", 1057},    {"sl", 1060}, {"eu", 1069}, {"zh-CN", 2052}, {"pt-PT", 2070}, {"fr-CA", 3084},
};

[[noreturn]] void fail(std::initializer_list<std::wstring_view> text) {
  throw ImageError(toUtf8(concat(text)));
}

void checkText(std::wstring_view what, std::wstring_view text) {
  if (text.size() > kLongestText) {
    fail({what, L" is ", decimal(static_cast<long long>(text.size())),
          L" characters long, of which the launcher shows ", decimal(kLongestText)});
  }
}

/// One line, for what Windows shows in one.
void checkLine(std::wstring_view what, std::wstring_view text) {
  checkText(what, text);
  if (std::any_of(text.begin(), text.end(), [](wchar_t c) { return c < L' '; })) {
    fail({what, L" has a line break or another control character"});
  }
}

bool endsInVowel(std::wstring_view name) {
  const std::wstring lower = lowerCase(name);
  return !lower.empty() && std::wstring_view(L"aeiouyåäöáéíóú").find(lower.back()) != std::wstring_view::npos;
}

/// In one go, so that a name may contain what is replaced.
std::wstring withName(std::wstring_view text, uint16_t language, std::wstring_view name) {
  std::wstring result;
  while (!text.empty()) {
    const auto* const wording =
        std::find_if(std::begin(kWordings), std::end(kWordings), [&](const Wording& row) {
          return (row.language == 0 || row.language == language) && text.starts_with(row.from);
        });
    if (wording == std::end(kWordings)) {
      result.push_back(text.front());
      text.remove_prefix(1);
      continue;
    }
    result += replaceFirst(endsInVowel(name) ? wording->behindVowel : wording->behindConsonant, L"*", name);
    text.remove_prefix(wording->from.size());
  }
  return result;
}

void setTexts(Resources& resources, const Branding& branding) {
  const std::set<uint16_t> languages = stringLanguages(resources);
  const std::wstring& title = branding.title.empty() ? branding.name : branding.title;
  changeStrings(resources, [&](unsigned id, uint16_t language, const std::wstring& text) {
    if (id == kErrorTitle) return title;
    std::wstring named = withName(text, language, branding.name);
    if (named != text) checkText(L"with this name a text of the launcher", named);
    return named;
  });
  for (const auto& [language, text] : branding.noVmText) {
    const std::wstring number = decimal(language);
    if (!languages.contains(language)) fail({L"the launcher has no texts in the language ", number});
    const std::wstring lines(trim(replaceAll(text, L"\r\n", L"\n")));
    if (lines.empty()) fail({L"the text for a missing Java in the language ", number, L" is empty"});
    checkText(concat({L"the text for a missing Java in the language ", number}), lines);
    setString(resources, kNoValidVm, language, lines);
  }
}

void setVersion(Resources& resources, const Branding& branding) {
  VersionInfo info;
  std::wstring launcherVersion;
  if (const auto language = firstLanguage(resources, kRtVersion, 1)) {
    const VersionInfo old = readVersionInfo(resources.at({kRtVersion, 1, *language}).data);
    launcherVersion = old.text(kLauncherVersion);
    if (launcherVersion.empty()) launcherVersion = old.text(L"ProductVersion");
  }
  info.fileVersion = branding.version;
  info.productVersion = branding.version;
  const std::wstring version = versionText(branding.version);
  VersionInfo::StringTable table;
  const std::pair<const wchar_t*, std::wstring> texts[] = {
      {L"CompanyName", branding.publisher},
      {L"FileDescription", branding.description.empty() ? branding.name : branding.description},
      {L"FileVersion", version},
      {L"InternalName", branding.name},
      {L"LegalCopyright", branding.copyright},
      {L"OriginalFilename", branding.name + L".exe"},
      {L"ProductName", branding.name},
      {L"ProductVersion", version},
      {kLauncherVersion, launcherVersion}};
  for (const auto& [key, text] : texts) {
    if (!text.empty()) table.strings.emplace_back(key, text);
  }
  info.tables.push_back(std::move(table));
  replaceInAllLanguages(resources, kRtVersion, 1, writeVersionInfo(info));
}

/// The window of a download asks for its group by name. That is the launcher's only one and therefore what
/// Explorer shows; a group in front of it would take that place, and gets the same pictures.
void setIcon(Resources& resources, const Bytes& file) {
  std::vector<IconImage> icon;
  try {
    icon = readIcon(file);
  } catch (const ImageError& error) {
    throw ImageError(std::string("the icon: ") + error.what());
  }
  const ResourceId first = resources.lower_bound({kRtGroupIcon, std::wstring(L"\x01"), 0})->first.name;
  const ResourceId download = std::wstring(kDownloadIcon);
  setIconGroup(resources, download, icon);
  if (!(first == download)) setIconGroup(resources, first, icon);
}

void setLevel(Resources& resources, ExecutionLevel level) {
  for (auto& [key, resource] : resources) {
    if (!(key.type == kRtManifest)) continue;
    const std::string manifest = withExecutionLevel(
        {reinterpret_cast<const char*>(resource.data.data()), resource.data.size()}, level);
    resource.data.assign(manifest.begin(), manifest.end());
  }
}

}  // namespace

Bytes brand(Bytes image, const Branding& branding) {
  const PeImage launcher(std::move(image));
  Resources resources = readResources(launcher);
  const std::set<uint16_t> languages = stringLanguages(resources);
  if (!firstLanguage(resources, kRtGroupIcon, std::wstring(kDownloadIcon)) ||
      std::none_of(languages.begin(), languages.end(), [&](uint16_t language) {
        return findString(resources, kErrorTitle, language) && findString(resources, kNoValidVm, language);
      })) {
    throw ImageError("it is not the launcher: it lacks its icon or its texts");
  }

  if (branding.name.empty()) throw ImageError("the application has no name");
  checkLine(L"the name", branding.name);
  checkLine(L"the title", branding.title);
  checkLine(L"the publisher", branding.publisher);
  checkLine(L"the description", branding.description);
  checkLine(L"the copyright", branding.copyright);
  setTexts(resources, branding);
  setVersion(resources, branding);
  if (!branding.icon.empty()) setIcon(resources, branding.icon);
  if (branding.level) setLevel(resources, *branding.level);
  return withResources(launcher, resources);
}

std::optional<uint16_t> languageOfTexts(std::string_view name) {
  const std::wstring wanted = lowerCase(widenBytes(name));
  for (const LanguageName& row : kLanguageNames) {
    if (wanted == lowerCase(widenBytes(row.name)) || wanted == decimal(row.language)) return row.language;
  }
  return {};
}

}  // namespace ryn
