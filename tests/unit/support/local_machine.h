#pragma once

#include <windows.h>

#include <stdexcept>
#include <string>

#include "platform/unique_handle.h"

namespace ryn::test {

/// An empty HKEY_LOCAL_MACHINE for this program while the object lives: an ordinary key of the user stands
/// in for it and is removed at the end. It has one view only, whatever view bits a key is opened with.
class ScopedLocalMachine {
 public:
  ScopedLocalMachine() {
    // Process ids come round again, and a program that crashed has left its key behind.
    RegDeleteTreeW(HKEY_CURRENT_USER, path_.c_str());
    UniqueHkey key;
    check(RegCreateKeyW(HKEY_CURRENT_USER, path_.c_str(), key.receive()));
    check(RegOverridePredefKey(HKEY_LOCAL_MACHINE, key.get()));
  }
  ScopedLocalMachine(const ScopedLocalMachine&) = delete;
  ScopedLocalMachine& operator=(const ScopedLocalMachine&) = delete;
  ~ScopedLocalMachine() {
    RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
    RegDeleteTreeW(HKEY_CURRENT_USER, path_.c_str());
  }

  /// Makes `key` where it is missing.
  UniqueHkey make(const std::wstring& key) const {
    UniqueHkey made;
    check(RegCreateKeyW(HKEY_LOCAL_MACHINE, key.c_str(), made.receive()));
    return made;
  }

 private:
  static void check(LSTATUS status) {
    if (status != ERROR_SUCCESS)
      throw std::runtime_error("test key: Windows error " + std::to_string(status));
  }

  const std::wstring path_ = L"Software\\RynLocalMachine" + std::to_wstring(GetCurrentProcessId());
};

}  // namespace ryn::test
