#pragma once

#include <string>
#include <vector>

namespace ryn {

/// The whole program: `arguments` in UTF-8, its own name first. Returns the exit code.
int runProgram(const std::vector<std::string>& arguments);

}  // namespace ryn
