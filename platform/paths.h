#pragma once

#include <windows.h>

#include <string>

#include "text/path_text.h"

namespace ryn {

/// Characters in the system's classic path buffers, terminator included.
inline constexpr DWORD kPathBufferSize = MAX_PATH;

/// Full path of the running program, of any length. Throws TerminalError
/// "unable to locate executable" when the system does not tell it.
std::wstring modulePath();

/// The current folder; empty when it is longer than the classic path buffer.
std::wstring currentFolder();

/// Without "." and ".." segments, as GetFullPathNameW gives it; relative paths count from the
/// current folder. Unchanged when the system refuses it, empty for an empty path.
std::wstring normalisePath(const std::wstring& path);

/// Whether Windows opens a device by this path, as it does by "C:\folder\aux.vm": attributes make a file of
/// it, and reading may wait for ever.
bool namesDevice(const std::wstring& path);

/// Absolute long form (GetFullPathNameW, then GetLongPathNameW, each with the classic buffer).
/// A path that does not fit keeps the longest form that was had.
std::wstring expandPath(const std::wstring& path);

}  // namespace ryn
