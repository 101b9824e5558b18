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

/// The lines of jvmspecs.properties that fetch the pack `fileName` when a search has found no VM. The address
/// of the server is the maker's to fill in.
std::string jvmspecsLines(std::string_view fileName, std::string_view md5);

}  // namespace ryn
