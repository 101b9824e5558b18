#pragma once

#include <string>
#include <string_view>

#include "ryn/output.h"

namespace CLI {
class App;
}

namespace ryn {

/// "ryn pack build" and "ryn pack check"; `ended` becomes what the program ends with.
void addPackCommand(CLI::App& program, ExitCode& ended);

/// The lines of jvmspecs.properties that fetch a pack when a search has found no VM.
std::string jvmspecsLines(std::string_view url, std::string_view md5);

}  // namespace ryn
