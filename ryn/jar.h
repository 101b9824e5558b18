#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "text/little_endian.h"

namespace ryn {

/// The content of the entry `name` (in any letter case) of a zip archive such as a jar; nothing for what is
/// no archive, has no such entry or cannot be read.
std::optional<std::string> archiveEntry(ByteView archive, const std::string& name);

/// The manifest of a jar; empty when there is none.
std::string manifestOf(ByteView jar);

/// An attribute of the main section of a manifest, such as "Main-Class"; empty when it is not there. Source:
/// "JAR File Specification" in Oracle's documentation of Java.
std::string manifestAttribute(std::string_view manifest, std::string_view name);

}  // namespace ryn
