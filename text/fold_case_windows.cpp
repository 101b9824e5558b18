#include <windows.h>

#include "text/fold_case.h"

namespace ryn {

bool equalIgnoringCase(std::wstring_view a, std::wstring_view b) {
  // CompareStringOrdinal takes a length of 0 for an error on some systems.
  if (a.empty() || b.empty()) return a.empty() && b.empty();
  return CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(), static_cast<int>(b.size()),
                              TRUE) == CSTR_EQUAL;
}

std::wstring foldCase(std::wstring_view text) {
  std::wstring folded(text);
  // One at a time: the file system knows no pairs, and some systems fold them here.
  for (wchar_t& unit : folded) CharUpperBuffW(&unit, 1);
  return folded;
}

}  // namespace ryn
