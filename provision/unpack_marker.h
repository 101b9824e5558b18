#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace ryn {

/// The files of which one exists when `folder`, or one of the two folders above it, holds what a pack left
/// there whose unpacking was begun and not ended: a VM that may lack files and must not be started. Of an
/// executable, pass its folder (absolute, with "\"; separators at the end do not count). What somebody put
/// there by hand holds no marker and is never half unpacked.
std::vector<std::wstring> unpackMarkers(const std::wstring& folder);

/// Whether one of them does.
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
