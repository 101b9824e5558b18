#include "platform/user_prompt.h"

#include <windows.h>

namespace ryn {

bool readsRightToLeft(std::wstring_view text) {
  for (const wchar_t character : text) {
    WORD direction = 0;
    if (!GetStringTypeW(CT_CTYPE2, &character, 1, &direction)) continue;
    if (direction == C2_RIGHTTOLEFT) return true;
    if (direction == C2_LEFTTORIGHT) return false;
  }
  return false;
}

namespace {

// The text decides and not the user's language: there are messages that exist in English only.
void showBox(const std::wstring& text, const std::wstring& title, UINT style) {
  if (readsRightToLeft(text)) style |= MB_RTLREADING | MB_RIGHT;
  MessageBoxW(nullptr, text.c_str(), title.c_str(), style);
}

}  // namespace

void MessageBoxPrompt::showError(const std::wstring& text, const std::wstring& title) {
  showBox(text, title, MB_OK | MB_ICONERROR);
}

void MessageBoxPrompt::showMessage(const std::wstring& text, const std::wstring& title) {
  showBox(text, title, MB_OK);
}

}  // namespace ryn
