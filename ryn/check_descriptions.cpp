#include <algorithm>
#include <iterator>

#include "ryn/application_check.h"
#include "text/text.h"
#include "vmsearch/described_search.h"
#include "vmsearch/vm_description.h"

namespace ryn {
namespace {

constexpr wchar_t kCountKey[] = L"build.jvmspec.total.num";
constexpr wchar_t kPrefix[] = L"build.jvmspec.";
/// Whoever writes more has made a mistake, and one finding tells it.
constexpr int kMostDescriptions = 1000;

constexpr std::wstring_view kRoots[] = {L"HKEY_CLASSES_ROOT", L"HKEY_CURRENT_CONFIG", L"HKEY_CURRENT_USER",
                                        L"HKEY_LOCAL_MACHINE", L"HKEY_USERS"};

// The key of a description in a line, as the launcher finds it: anywhere.
const DescriptionKey* keyIn(std::wstring_view line) {
  const auto found = std::find_if(std::begin(kDescriptionKeys), std::end(kDescriptionKeys),
                                  [line](const DescriptionKey& key) {
                                    return (key.text != nullptr || key.block != nullptr) &&
                                           line.find(key.name) != std::wstring_view::npos;
                                  });
  return found == std::end(kDescriptionKeys) ? nullptr : &*found;
}

bool namesKey(std::wstring_view hint) {
  return hint.starts_with(L'\\') &&
         std::any_of(std::begin(kRoots), std::end(kRoots), [hint](std::wstring_view root) {
           return hint.substr(1).starts_with(root) && hint.size() > root.size() + 2 &&
                  hint[root.size() + 1] == L'\\';
         });
}

// Line by line, in step with VmDescription::parse.
void checkLines(ApplicationCheck& check, const std::string& file, const std::wstring& text) {
  DescriptionKey::Block block = nullptr;
  size_t blockLine = 0;
  size_t number = 0;
  for (const std::wstring& whole : split(text, L'\n')) {
    ++number;
    const std::wstring_view line = trim(whole);
    if (whole.starts_with(L'#') || line.empty()) continue;
    const DescriptionKey* const key = keyIn(line);
    if (block == nullptr) {
      if (key != nullptr && key->block != nullptr) {
        block = key->block;
        blockLine = number;
      }
      continue;
    }
    if (line.find(kEndOfBlock) != std::wstring_view::npos) {
      block = nullptr;
      continue;
    }
    // Options of a VM may look like anything.
    if (block == &VmDescription::jvmProperties) continue;
    if (key != nullptr) {
      check.add("open-block", file, blockLine,
                concat({L"the block has no \"/:\" before line ", decimal(static_cast<long long>(number)),
                        L", \"", line, L"\", which means nothing within it"}));
      return;
    }
    const std::wstring upper = upperCase(line);
    const bool meansKey = upper.starts_with(L"HKEY_") || upper.starts_with(L"\\HKEY_") ||
                          upper.starts_with(L"\\HKLM\\") || upper.starts_with(L"\\HKCU\\") ||
                          upper.starts_with(L"HKLM\\") || upper.starts_with(L"HKCU\\");
    if (block == &VmDescription::pathHints && meansKey && !namesKey(line)) {
      check.add("hint", file, number,
                concat({L"\"", line,
                        L"\" names no key: one begins with \\HKEY_LOCAL_MACHINE\\ or another root, in "
                        L"capitals and whole"}));
    }
  }
}

}  // namespace

void checkDescriptions(ApplicationCheck& check) {
  const PropertyLines& jvmspecs = *check.jvmspecs;
  const bool isDescribed = check.plan.search == VmSearch::kDescribed;
  const int count = isDescribed ? std::min(check.options.jvmspecCount, kMostDescriptions) : 0;
  for (const PropertyLines::Line& line : jvmspecs.lines()) {
    if (!line.key.starts_with(kPrefix)) continue;
    const std::wstring index = line.key.substr(std::size(kPrefix) - 1);
    if (index.empty() || index.find_first_not_of(L"0123456789") != index.npos) continue;
    if (parseInteger(index) < count) continue;
    check.add("description-unused", jvmspecs.file(), line.number,
              isDescribed
                  ? L"build.jvmspec.total.num counts fewer descriptions than this one"
                  : L"no search goes by descriptions: build.jvmspec.applicable=true, "
                    L"build.jvmspec.total.num of at least 1 and a search option with a search do that");
  }
  for (int index = 0; index < count; ++index) {
    const std::wstring key = kPrefix + decimal(index);
    const std::wstring path = FolderProbe::resolved(descriptionPath(jvmspecs.properties(), index));
    const std::optional<std::wstring> text = check.probe.readText(path);
    if (!jvmspecs.has(key)) {
      check.add("description", jvmspecs, kCountKey, key + L" is counted and not there");
    } else if (!text) {
      check.add("description", jvmspecs, key,
                concat({L"there is no ", fromUtf8(check.nameOf(path)), L" beside the .ryn file"}));
    } else if (const VmDescription description = VmDescription::parse(*text); description.empty()) {
      check.add("description", check.nameOf(path), 1, L"the file has none of the keys of a description");
    } else {
      if (!fitsPlatform(description.platformHints)) {
        check.add("description-system", check.nameOf(path), 1,
                  L"none of the platform hints is for Windows, so it is passed over");
      }
      checkLines(check, check.nameOf(path), *text);
    }
  }
}

}  // namespace ryn
