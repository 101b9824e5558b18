#pragma once

#include "ryn/output.h"

namespace CLI {
class App;
}

namespace ryn {

/// "ryn make"; its exit code goes to `ended`.
void addMakeCommand(CLI::App& program, ExitCode& ended);

}  // namespace ryn
