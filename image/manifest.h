#pragma once

#include <string>
#include <string_view>

namespace ryn {

/// With which rights Windows starts a program.
enum class ExecutionLevel { kAsInvoker, kHighestAvailable, kRequireAdministrator };

/// The manifest with the attribute "level" of its first requestedExecutionLevel set, everything else as it
/// was. Throws ImageError when it has none (so, too, for UTF-16).
std::string withExecutionLevel(std::string_view manifest, ExecutionLevel level);

}  // namespace ryn
