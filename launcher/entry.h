#pragma once

#include <windows.h>

namespace ryn {

/// The whole run of the program: one launch, or one service. Catches and shows every error that ends a
/// launch; returns the exit code of the process.
int runEntry(HINSTANCE instance);

}  // namespace ryn
