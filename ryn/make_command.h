#pragma once

namespace CLI {
class App;
}

namespace ryn {

/// "ryn make".
void addMakeCommand(CLI::App& program);

}  // namespace ryn
