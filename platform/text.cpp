#include "platform/text.h"

#include <windows.h>

namespace ryn {

bool equalIgnoringCase(std::wstring_view a, std::wstring_view b) {
  // CompareStringOrdinal takes a length of 0 for an error on some systems.
  if (a.empty() || b.empty()) return a.empty() && b.empty();
  return CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(), static_cast<int>(b.size()),
                              TRUE) == CSTR_EQUAL;
}

std::wstring foldCase(std::wstring_view text) {
  std::wstring folded(text);
  CharUpperBuffW(folded.data(), static_cast<DWORD>(folded.size()));
  return folded;
}

std::string toAnsi(std::wstring_view text) {
  const int length = static_cast<int>(text.size());
  const int size = WideCharToMultiByte(CP_ACP, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
  std::string result(static_cast<size_t>(size), '\0');
  WideCharToMultiByte(CP_ACP, 0, text.data(), length, result.data(), size, nullptr, nullptr);
  return result;
}

}  // namespace ryn
