#pragma once

#include <string>

namespace ryn {

/// How the launcher speaks to the person in front of it; a test watches it, and a process without a
/// desktop replaces the boxes.
class UserPrompt {
 public:
  /// A modal box without owner, with an error icon and an OK button. Returns when it was closed.
  virtual void showError(const std::wstring& text, const std::wstring& title) = 0;

  /// The same without an icon.
  virtual void showMessage(const std::wstring& text, const std::wstring& title) = 0;

 protected:
  ~UserPrompt() = default;
};

/// The real boxes.
class MessageBoxPrompt final : public UserPrompt {
 public:
  void showError(const std::wstring& text, const std::wstring& title) override;
  void showMessage(const std::wstring& text, const std::wstring& title) override;
};

}  // namespace ryn
