#include "platform/environment.h"

#include <windows.h>

#include <memory>

namespace ryn {

EnvironmentMap readEnvironment() {
  struct Free {
    void operator()(wchar_t* block) const { FreeEnvironmentStringsW(block); }
  };
  const std::unique_ptr<wchar_t, Free> block(GetEnvironmentStringsW());
  return block ? parseEnvironmentBlock(block.get()) : EnvironmentMap();
}

std::wstring environmentVariable(const std::wstring& name) {
  std::wstring value;
  // The size can grow between two calls when another thread sets the variable.
  for (DWORD size = GetEnvironmentVariableW(name.c_str(), nullptr, 0); size > value.size();) {
    value.resize(size);
    size = GetEnvironmentVariableW(name.c_str(), value.data(), size);
    if (size < value.size()) {
      value.resize(size);
      return value;
    }
  }
  return {};
}

}  // namespace ryn
