#pragma once

#include <string>
#include <string_view>

namespace ryn {

/// How the launcher speaks to the person in front of it; a test watches it, and a process without a
/// desktop replaces the boxes.
class UserPrompt {
 public:
  /// A modal box without owner, with an error icon and an OK button. Returns when it was closed.
  virtual void showError(const std::wstring& text, const std::wstring& title) = 0;

  /// The same without an icon.
  virtual void showMessage(const std::wstring& text, const std::wstring& title) = 0;

  /// Told of a failure that was written to the console as `text`: for a process whose console nobody sees.
  virtual void noteFailure(std::wstring_view text) = 0;

 protected:
  ~UserPrompt() = default;
};

/// Whether a text runs from right to left: its first letter decides (rule P2 of Unicode's bidirectional
/// algorithm); digits, blanks and signs do not count, and a text without letters runs from left to right.
bool readsRightToLeft(std::wstring_view text);

/// The real boxes, laid out from right to left for a text that reads so.
class MessageBoxPrompt final : public UserPrompt {
 public:
  void showError(const std::wstring& text, const std::wstring& title) override;
  void showMessage(const std::wstring& text, const std::wstring& title) override;
  void noteFailure(std::wstring_view /*text*/) override {}
};

}  // namespace ryn
