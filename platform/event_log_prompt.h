#pragma once

#include <string>

#include "platform/user_prompt.h"

namespace ryn {

/// For a process without a desktop, where a box would wait for ever: every text becomes an entry of the
/// Windows application log under the name `source`, and goes to standard error.
class EventLogPrompt final : public UserPrompt {
 public:
  explicit EventLogPrompt(std::wstring source) : source_(std::move(source)) {}

  void showError(const std::wstring& text, const std::wstring& title) override;
  void showMessage(const std::wstring& text, const std::wstring& title) override;

 private:
  std::wstring source_;
};

}  // namespace ryn
