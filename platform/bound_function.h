#pragma once

#include <windows.h>

#include <cstddef>

namespace ryn {

/// The name of a function as a template argument.
template <size_t size>
struct FunctionName {
  // NOLINTNEXTLINE(google-explicit-constructor): the text itself is the argument.
  consteval FunctionName(const char (&text)[size]) {
    for (size_t i = 0; i < size; ++i) characters[i] = text[i];
  }
  char characters[size] = {};
};

/// Null when the module is null or has no such function.
inline void* findFunction(HMODULE module, const char* name) {
  return module == nullptr ? nullptr : reinterpret_cast<void*>(GetProcAddress(module, name));
}

/// A function that is looked up in its library at run time; called like the function itself. Named with
/// RYN_FUNCTION only, so that its type and the text that is looked up come from one name.
template <typename Function, FunctionName name>
class BoundFunction {
 public:
  BoundFunction() = default;
  explicit BoundFunction(HMODULE module) { bind(module); }

  /// False when the module is null or has no such function; this is then null.
  bool bind(HMODULE module) {
    function_ = reinterpret_cast<Function>(findFunction(module, name.characters));
    return function_ != nullptr;
  }

  // NOLINTNEXTLINE(google-explicit-constructor): makes it callable, and comparable with null.
  operator Function() const { return function_; }

 private:
  Function function_ = nullptr;
};

/// True when `module` has all of them.
template <typename... Functions>
[[nodiscard]] bool bindAll(HMODULE module, Functions&... functions) {
  return (functions.bind(module) && ...);
}

/// kernel32, which every process has loaded.
inline HMODULE kernelLibrary() {
  return GetModuleHandleW(L"kernel32");
}

}  // namespace ryn

#define RYN_FUNCTION_TEXT(name) #name
/// The type of a member or variable that holds the function declared as `name` once it is bound:
/// `const RYN_FUNCTION(SetDllDirectoryW) set(kernelLibrary()); if (set) set(L"");`. A name that is a macro
/// stands for what the macro stands for, in both places.
#define RYN_FUNCTION(name) ::ryn::BoundFunction<decltype(&::name), RYN_FUNCTION_TEXT(name)>
