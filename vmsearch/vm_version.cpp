#include "vmsearch/vm_version.h"

#include <string>

#include "text/text.h"

namespace ryn {

VmVersion parseVmVersion(std::wstring_view text) {
  std::vector<std::wstring> pieces = split(replaceAll(text, L"_", L"."), L'.');
  if (pieces.front() != L"1") pieces.insert(pieces.begin(), L"1");
  pieces.resize(4);
  const auto component = [&](size_t index) { return static_cast<int16_t>(parseInteger(pieces[index])); };
  return VmVersion(component(1), component(2), component(3));
}

}  // namespace ryn
