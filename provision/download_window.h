#pragma once

#include <windows.h>

namespace ryn {

/// Registers the window class "Downloading JVM Pack" for the process, though no window is made of it
/// (docs/quirks.md). Windows loads icon, cursor and theme with it, so this is for a launch that is about to
/// show a window anyway. A failure does not matter.
void registerDownloadWindowClass(HINSTANCE instance);

}  // namespace ryn
