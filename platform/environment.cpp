#include "platform/environment.h"

#include <windows.h>

#include <algorithm>
#include <memory>
#include <string_view>

#include "platform/text.h"

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

EnvironmentMap readEnvironment() {
  struct Free {
    void operator()(wchar_t* block) const { FreeEnvironmentStringsW(block); }
  };
  const std::unique_ptr<wchar_t, Free> block(GetEnvironmentStringsW());
  return block ? parseEnvironmentBlock(block.get()) : EnvironmentMap();
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

std::wstring environmentVariable(const std::wstring& name) {
  std::wstring value;
  // The size can grow between two calls when another thread sets the variable.
  for (DWORD size = GetEnvironmentVariableW(name.c_str(), nullptr, 0); size > value.size();) {
    value.resize(size);
    size = GetEnvironmentVariableW(name.c_str(), value.data(), size);
    if (size < value.size()) {
      value.resize(size);
      return value;
    }
  }
  return {};
}

}  // namespace ryn
