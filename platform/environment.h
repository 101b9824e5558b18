#pragma once

#include <string>

#include "text/environment_map.h"

namespace ryn {

/// The environment of this process as it is now.
EnvironmentMap readEnvironment();

/// One variable of this process, its name compared as Windows does; empty when unset.
std::wstring environmentVariable(const std::wstring& name);

}  // namespace ryn
