#include <locale.h>
#include <wctype.h>

#include <algorithm>

#include "text/fold_case.h"
#include "text/text.h"

namespace ryn {

bool equalIgnoringCase(std::wstring_view a, std::wstring_view b) {
  return a.size() == b.size() && foldCase(a) == foldCase(b);
}

std::wstring foldCase(std::wstring_view text) {
  // One that knows all letters, whatever the user's own; never freed.
  static const locale_t locale = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  if (locale == nullptr) return upperCase(text);
  std::wstring folded(text);
  std::transform(folded.begin(), folded.end(), folded.begin(), [](wchar_t unit) {
    const wint_t upper = towupper_l(static_cast<wint_t>(unit), locale);
    return upper <= 0xFFFF ? static_cast<wchar_t>(upper) : unit;
  });
  return folded;
}

}  // namespace ryn
