#pragma once

#include <map>
#include <string>

#include "ryn/zip_file.h"

namespace ryn {

/// The attributes of the main section of a jar's manifest, names in small letters; none without a manifest.
/// Source: "JAR File Specification" in Oracle's documentation of Java.
std::map<std::string, std::string> manifestOf(const ZipFile& jar);

}  // namespace ryn
