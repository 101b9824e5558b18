#pragma once

#include <string>

namespace ryn {

/// True when the process is a 32-bit one on a 64-bit Windows; false where the system cannot tell.
bool runsUnderWow64();

/// The system folder of 32-bit programs on a 64-bit Windows; empty where there is none.
std::wstring wow64SystemFolder();

/// Switches file-system redirection off for the calling thread and for good, so that "system32" means what
/// it says.
void disableFileSystemRedirection();

}  // namespace ryn
