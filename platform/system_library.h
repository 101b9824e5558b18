#pragma once

#include <string>

#include "platform/bound_function.h"
#include "platform/unique_handle.h"

namespace ryn {

/// The Windows system folder, without a trailing separator; empty when the system does not tell it.
std::wstring systemFolder();

/// The system folder that holds libraries of the process's own bitness: the WOW64 one when the
/// process runs under 32-bit emulation.
std::wstring systemFolderForProcess();

/// Loads `fileName` from `folder` and nowhere else: by full path, first with the flag that also
/// keeps its dependencies to the system folder (absent before an old security update), then by the
/// full path alone. Null when it cannot be had.
[[nodiscard]] UniqueModule loadLibraryFrom(const std::wstring& folder, const std::wstring& fileName);

/// loadLibraryFrom the system folder.
[[nodiscard]] UniqueModule loadSystemLibrary(const std::wstring& fileName);

}  // namespace ryn
