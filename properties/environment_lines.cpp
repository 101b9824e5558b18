#include "properties/environment_lines.h"

#include "properties/keys.h"
#include "properties/property_file.h"
#include "text/text.h"

namespace ryn {

std::wstring environmentLines(const EnvironmentMap& environment) {
  std::wstring lines;
  for (const auto& variable : environment) {
    const std::wstring name = escapeProperty(variable.first);
    // Not under the variable's own name: docs/quirks.md.
    const auto found = environment.find(name);
    const std::wstring value = found == environment.end() ? std::wstring() : escapeProperty(found->second);
    lines += concat({keys::kEnvironmentPrefix, lowerCase(name), L"=", value, L"\n",  //
                     keys::kEnvironmentPrefix, upperCase(name), L"=", value, L"\n",  //
                     keys::kExactEnvironmentPrefix, name, L"=", value, L"\n"});
  }
  return lines;
}

}  // namespace ryn
