#pragma once

#include <string>

#include "vmlaunch/launch_request.h"

namespace ryn {

/// Lines of the temporary properties file that tell the Java side what it cannot find out by itself, each
/// with its "\n". Empty when no key of the property file asks anything of it: other programs may read that
/// file.
std::wstring factLines(const LaunchFacts& facts);

}  // namespace ryn
