#include "text/environment_map.h"

#include <algorithm>

#include "text/fold_case.h"

namespace ryn {

EnvironmentMap parseEnvironmentBlock(const wchar_t* block) {
  EnvironmentMap variables;
  for (std::wstring_view entry(block); !entry.empty(); entry = entry.data() + entry.size() + 1) {
    const size_t separator = entry.find(L'=');
    if (separator == 0 || separator == std::wstring_view::npos) continue;
    variables[std::wstring(entry.substr(0, separator))] = entry.substr(separator + 1);
  }
  return variables;
}

std::wstring pathVariable(const EnvironmentMap& environment) {
  return variableIn(environment, L"PATH");
}

std::wstring variableIn(const EnvironmentMap& environment, std::wstring_view name) {
  const auto found = std::find_if(environment.begin(), environment.end(), [&](const auto& variable) {
    return equalIgnoringCase(variable.first, name);
  });
  return found == environment.end() ? std::wstring() : found->second;
}

std::optional<std::wstring> expandVariables(std::wstring_view text, const EnvironmentMap& environment) {
  std::wstring result;
  for (;;) {
    const size_t begin = text.find(L'%');
    const size_t end = begin == std::wstring_view::npos ? begin : text.find(L'%', begin + 1);
    if (end == std::wstring_view::npos) return result.append(text);
    result += text.substr(0, begin);
    const std::wstring value = variableIn(environment, text.substr(begin + 1, end - begin - 1));
    if (value.empty()) return std::nullopt;
    result += value;
    text.remove_prefix(end + 1);
  }
}

}  // namespace ryn
