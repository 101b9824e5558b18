#include "resources/string_table.h"

#include <windows.h>

namespace ryn {

StringTable& StringTable::instance() {
  static StringTable table;
  return table;
}

std::wstring StringTable::get(unsigned id) {
  auto& texts = instance().texts_;
  const auto known = texts.find(id);
  if (known != texts.end()) return known->second;

  wchar_t buffer[256];
  const int length = LoadStringW(GetModuleHandleW(nullptr), id, buffer, static_cast<int>(std::size(buffer)));
  if (length <= 0) throw StringTableException(L"invalid key");
  return texts[id] = std::wstring(buffer, static_cast<size_t>(length));
}

}  // namespace ryn
