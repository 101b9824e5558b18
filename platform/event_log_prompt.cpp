#include "platform/event_log_prompt.h"

#include <windows.h>

#include "platform/output.h"
#include "platform/text.h"
#include "platform/unique_handle.h"

namespace ryn {
namespace {

struct EventSourcePolicy {
  using Value = HANDLE;
  static Value none() { return nullptr; }
  static void close(Value value) { DeregisterEventSource(value); }
};

}  // namespace

bool hasVisibleWindowStation() {
  USEROBJECTFLAGS flags = {};
  return GetUserObjectInformationW(GetProcessWindowStation(), UOI_FLAGS, &flags, sizeof(flags), nullptr) &&
         (flags.dwFlags & WSF_VISIBLE) != 0;
}

void EventLogPrompt::showError(const std::wstring& text, const std::wstring& title) {
  const std::wstring entry = concat({title, L": ", text});
  writeError(entry + L"\n");
  noteFailure(entry);
}

void EventLogPrompt::showMessage(const std::wstring& text, const std::wstring& title) {
  showError(text, title);
}

void EventLogPrompt::noteFailure(std::wstring_view text) {
  const UniqueResource<EventSourcePolicy> log(RegisterEventSourceW(nullptr, source_.c_str()));
  const std::wstring entry(trim(text));
  const wchar_t* strings[] = {entry.c_str()};
  if (log) ReportEventW(log.get(), EVENTLOG_ERROR_TYPE, 0, 0, nullptr, 1, 0, strings, nullptr);
}

}  // namespace ryn
