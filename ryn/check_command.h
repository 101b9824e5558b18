#pragma once

#include "ryn/output.h"

namespace CLI {
class App;
}

namespace ryn {

/// "ryn check"; `ended` becomes what the program ends with.
void addCheckCommand(CLI::App& program, ExitCode& ended);

}  // namespace ryn
