#pragma once

#include <windows.h>

#include <optional>
#include <string>

#include "platform/paths.h"

namespace ryn::test {

/// Sets (or, without a value, unsets) an environment variable of the test program and puts it back.
class ScopedVariable {
 public:
  ScopedVariable(std::wstring name, const std::optional<std::wstring>& value) : name_(std::move(name)) {
    wchar_t old[32768];
    SetLastError(ERROR_SUCCESS);
    const DWORD length = GetEnvironmentVariableW(name_.c_str(), old, 32768);
    if (length != 0 || GetLastError() == ERROR_SUCCESS) old_ = std::wstring(old, length);
    set(value);
  }
  ScopedVariable(const ScopedVariable&) = delete;
  ScopedVariable& operator=(const ScopedVariable&) = delete;
  ~ScopedVariable() { set(old_); }

 private:
  void set(const std::optional<std::wstring>& value) const {
    SetEnvironmentVariableW(name_.c_str(), value ? value->c_str() : nullptr);
  }

  std::wstring name_;
  std::optional<std::wstring> old_;
};

/// Makes a folder current and puts the old one back; declare it after a TempFolder that it enters.
class ScopedCurrentFolder {
 public:
  explicit ScopedCurrentFolder(const std::wstring& folder) : old_(currentFolder()) {
    SetCurrentDirectoryW(folder.c_str());
  }
  ScopedCurrentFolder(const ScopedCurrentFolder&) = delete;
  ScopedCurrentFolder& operator=(const ScopedCurrentFolder&) = delete;
  ~ScopedCurrentFolder() { SetCurrentDirectoryW(old_.c_str()); }

 private:
  std::wstring old_;
};

}  // namespace ryn::test
