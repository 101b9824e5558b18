#pragma once

#include "text/environment_map.h"

namespace ryn {

/// Appends the lines that hand the environment to the Java side to the temporary properties file.
void exportEnvironment(const EnvironmentMap& environment);

}  // namespace ryn
