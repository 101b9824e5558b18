#pragma once

#include <filesystem>

#include "ryn/output.h"

namespace CLI {
class App;
}

namespace ryn {

/// "ryn explain"; sets `ended`.
void addExplainCommand(CLI::App& program, ExitCode& ended);

/// Writes "MyApp-report.txt" for the application beside the program to the user's desktop and returns its
/// path. Throws CommandError when there is no such application, or more than one.
std::filesystem::path writeSupportReport();

}  // namespace ryn
