#include "platform/short_path.h"

#include <windows.h>

#include "platform/text.h"

namespace ryn {

bool fitsAnsi(std::wstring_view text) {
  // There and back: the code page may be UTF-8, which takes none of the flags that would tell.
  const std::string bytes = toAnsi(text);
  std::wstring back(bytes.size(), L'\0');
  const int length = MultiByteToWideChar(CP_ACP, 0, bytes.data(), static_cast<int>(bytes.size()), back.data(),
                                         static_cast<int>(back.size()));
  back.resize(static_cast<size_t>(length));
  return back == text;
}

std::optional<std::wstring> shortPath(const std::wstring& path) {
  std::wstring result(path.size() + 1, L'\0');
  for (;;) {
    const DWORD length = GetShortPathNameW(path.c_str(), result.data(), static_cast<DWORD>(result.size()));
    if (length == 0) return std::nullopt;
    const bool fits = length < result.size();
    result.resize(length);
    if (fits) return result;
  }
}

}  // namespace ryn
