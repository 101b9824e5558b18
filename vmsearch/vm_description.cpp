#include "vmsearch/vm_description.h"

#include <algorithm>

#include "text/text.h"

namespace ryn {
namespace {

constexpr std::wstring_view kKeyPrefix = L"build.jvmspec.";
constexpr wchar_t kFolder[] = L"jvmspecs\\";

}  // namespace

VmDescription VmDescription::parse(std::wstring_view text) {
  VmDescription description;
  std::vector<std::wstring>* block = nullptr;
  for (const std::wstring& whole : split(text, L'\n')) {
    if (whole.starts_with(L'#')) continue;
    const std::wstring_view line = trim(whole);
    if (line.empty()) continue;
    if (block != nullptr) {
      if (line.find(kEndOfBlock) != std::wstring_view::npos)
        block = nullptr;
      else
        block->emplace_back(line);
      continue;
    }
    // A key may stand anywhere in the line, and a line can hold several: each one sets its text. So
    // BOOT_CLASSPATH also sets the class path, and files that want both name CLASSPATH behind it.
    for (const DescriptionKey& key : kDescriptionKeys) {
      const size_t at = line.find(key.name);
      if (at == std::wstring_view::npos) continue;
      if (key.text != nullptr) description.*key.text = trim(line.substr(at + key.name.size()));
      if (key.block != nullptr && block == nullptr) block = &(description.*key.block);
    }
  }
  return description;
}

bool VmDescription::empty() const {
  return std::all_of(std::begin(kDescriptionKeys), std::end(kDescriptionKeys),
                     [this](const DescriptionKey& key) {
                       return (key.text == nullptr || (this->*key.text).empty()) &&
                              (key.block == nullptr || (this->*key.block).empty());
                     });
}

std::wstring descriptionPath(const PropertyFile& jvmspecs, int index) {
  return kFolder + jvmspecs.get(concat({kKeyPrefix, decimal(index)}));
}

std::vector<std::wstring> descriptionPaths(const PropertyFile& jvmspecs, int count) {
  // Not from 0 to `count`, which is as large as somebody wrote it.
  std::vector<int> indexes;
  for (const auto& [key, value] : jvmspecs.entries()) {
    if (!key.starts_with(kKeyPrefix)) continue;
    const std::wstring_view text = std::wstring_view(key).substr(kKeyPrefix.size());
    const int index = parseInteger(text);
    if (index < 0 || index >= count || decimal(index) != text) continue;
    indexes.insert(std::upper_bound(indexes.begin(), indexes.end(), index), index);
  }
  std::vector<std::wstring> paths;
  for (const int index : indexes) paths.push_back(descriptionPath(jvmspecs, index));
  return paths;
}

}  // namespace ryn
