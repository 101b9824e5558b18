#pragma once

#include <windows.h>

#include <string>

namespace ryn {

/// Whether one of unpackMarkers exists.
bool isHalfUnpacked(const std::wstring& folder);

/// Marks `folder` as half unpacked until endUnpacking; the mark is on the disk on return, so that it outlives
/// the process. False when the folder cannot take it.
[[nodiscard]] bool beginUnpacking(const std::wstring& folder);

/// Takes the mark away.
void endUnpacking(const std::wstring& folder);

/// Notes that a whole pack has just been unpacked into `folder`: from now on the folder counts as created
/// now.
void noteUnpacked(const std::wstring& folder);

/// Whether that was later than `moment` (UTC), and unpacking has not begun again.
bool wasUnpackedSince(const std::wstring& folder, const FILETIME& moment);

}  // namespace ryn
