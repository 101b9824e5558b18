#include "platform/text.h"

#include <windows.h>

namespace ryn {

std::string toAnsi(std::wstring_view text) {
  const int length = static_cast<int>(text.size());
  const int size = WideCharToMultiByte(CP_ACP, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
  std::string result(static_cast<size_t>(size), '\0');
  WideCharToMultiByte(CP_ACP, 0, text.data(), length, result.data(), size, nullptr, nullptr);
  return result;
}

}  // namespace ryn
