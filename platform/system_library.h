#pragma once

#include <windows.h>

#include <string>

#include "platform/unique_handle.h"

namespace ryn {

/// The Windows system folder, without a trailing separator; empty when the system does not tell it.
std::wstring systemFolder();

/// The system folder that holds libraries of the process's own bitness: the WOW64 one when the
/// process runs under 32-bit emulation.
std::wstring systemFolderForProcess();

/// Looks `name` up in `module`, typed by the declaration of the function:
/// `getFunction<decltype(&SetDllDirectoryW)>(kernel32, "SetDllDirectoryW")`. Null when absent.
template <typename Function>
Function getFunction(HMODULE module, const char* name) {
  if (module == nullptr) return nullptr;
  return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

/// The same in kernel32, which every process has loaded.
template <typename Function>
Function getKernelFunction(const char* name) {
  return getFunction<Function>(GetModuleHandleW(L"kernel32"), name);
}

/// Loads `fileName` from `folder` and nowhere else: by full path, first with the flag that also
/// keeps its dependencies to the system folder (absent before an old security update), then by the
/// full path alone. Null when it cannot be had.
UniqueModule loadLibraryFrom(const std::wstring& folder, const std::wstring& fileName);

/// loadLibraryFrom the system folder.
UniqueModule loadSystemLibrary(const std::wstring& fileName);

}  // namespace ryn
