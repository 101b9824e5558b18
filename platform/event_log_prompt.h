#pragma once

#include <string>

#include "platform/user_prompt.h"

namespace ryn {

/// Whether this process's windows can be seen: its window station is the visible one. A service's is not.
bool hasVisibleWindowStation();

/// For a process without a desktop, where a box would wait for ever: every text becomes an entry of the
/// Windows application log under the name `source`. What a box would have shown goes to standard error, too.
class EventLogPrompt final : public UserPrompt {
 public:
  explicit EventLogPrompt(std::wstring source) : source_(std::move(source)) {}

  void showError(const std::wstring& text, const std::wstring& title) override;
  void showMessage(const std::wstring& text, const std::wstring& title) override;
  void noteFailure(std::wstring_view text) override;

 private:
  std::wstring source_;
};

}  // namespace ryn
