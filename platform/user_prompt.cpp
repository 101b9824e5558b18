#include "platform/user_prompt.h"

#include <windows.h>

namespace ryn {

void MessageBoxPrompt::showError(const std::wstring& text, const std::wstring& title) {
  MessageBoxW(nullptr, text.c_str(), title.c_str(), MB_OK | MB_ICONERROR);
}

void MessageBoxPrompt::showMessage(const std::wstring& text, const std::wstring& title) {
  MessageBoxW(nullptr, text.c_str(), title.c_str(), MB_OK);
}

}  // namespace ryn
