#pragma once

#include <string>

namespace ryn {

// Where the parts of an application lie, seen from the folder of its launcher (without a trailing separator).
// A result is empty when the application has no such place.

/// The first of jvmspecsPaths that exists.
std::wstring findJvmspecs(const std::wstring& launcherFolder);

/// Where the pack of `url` is stored: the jvmspecs folder and the last segment of the URL, joined without
/// a separator ("...\Windows\jvmspecsjre.vm"), so that the pack lies beside that folder.
std::wstring packDestination(const std::wstring& launcherFolder, const std::wstring& url);

/// Where a pack is unpacked, with a trailing separator: the place of the VM that ships with the
/// application.
std::wstring extractionFolder(const std::wstring& launcherFolder);

/// java.exe in the extraction folder, whether it exists or not; empty when the folder holds neither
/// "bin" nor "jre\bin".
std::wstring unpackedVm(const std::wstring& extractionFolder);

}  // namespace ryn
