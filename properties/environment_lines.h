#pragma once

#include <string>

#include "text/environment_map.h"

namespace ryn {

/// The lines that hand the environment to the Java side: per variable, in the map's order, its value under
/// its name in lower case, in upper case ("ryn.nl.env.") and as spelled ("ryn.nl.env.exact_case."). Names
/// and values are escaped; a name that escaping changes gets an empty value.
std::wstring environmentLines(const EnvironmentMap& environment);

}  // namespace ryn
