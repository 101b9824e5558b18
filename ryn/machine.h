#pragma once

#include <filesystem>
#include <functional>
#include <optional>

#include "ryn/explain.h"

namespace ryn {

// The machine that this program runs on, as a launch there would see it.

/// What a launch of `program` with these arguments (in UTF-8) depends on, and the machine itself, for as long
/// as the call lasts. Throws CommandError (kUsage) on systems that launch nothing.
void withThisMachine(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                     const std::function<void(const Situation&, const VmProbe&)>& use);

/// "launcher path" and arguments as a command line of Windows.
std::wstring commandLineOf(const std::wstring& programPath, const std::vector<std::string>& arguments);

/// A double click started the program: its console is its own and goes with it.
bool hasOwnConsole();
/// The program's own folder and the user's desktop; empty where the system does not tell.
std::filesystem::path programFolder();
std::filesystem::path desktopFolder();

}  // namespace ryn
