#pragma once

#include <string>
#include <string_view>

namespace CLI {
class App;
}

namespace ryn {

/// "ryn pack build".
void addPackCommand(CLI::App& program);

/// The lines of jvmspecs.properties that fetch a pack when a search has found no VM.
std::string jvmspecsLines(std::string_view url, std::string_view md5);

}  // namespace ryn
