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

}  // namespace ryn
