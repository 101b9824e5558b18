#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ryn {

// Where the parts of an application may lie, seen from the folder of its launcher (without a trailing
// separator). The builder puts what belongs to Windows into one of these folders.
inline constexpr std::wstring_view kWindowsFolders[] = {L"\\Windows", L"\\Windows_Pure_64_Bit"};

/// jvmspecs.properties: in "jvmspecs" beside the launcher, else in that of a Windows folder; the first that
/// exists counts.
std::vector<std::wstring> jvmspecsPaths(const std::wstring& launcherFolder);

/// java.exe of the VM that ships with the application; the first that exists counts.
std::vector<std::wstring> shippedVmPaths(const std::wstring& launcherFolder);

/// The files of which one exists when `folder`, or one of the two folders above it, holds what a pack left
/// there whose unpacking was begun and not ended: a VM that may lack files and must not be started. Of an
/// executable, pass its folder (absolute, with "\"; separators at the end do not count). What somebody put
/// there by hand holds no marker and is never half unpacked. The first is the marker of `folder` itself.
std::vector<std::wstring> unpackMarkers(const std::wstring& folder);

}  // namespace ryn
