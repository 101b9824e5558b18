#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "ryn/findings.h"

namespace ryn {

/// A line for each: "file:line: error: text [rule]".
std::string findingsText(const Findings& findings);

/// One object with the findings and their numbers: docs/check.md.
nlohmann::ordered_json findingsJson(const std::string& checked, const Findings& findings);

/// A log in the Static Analysis Results Interchange Format 2.1.0 of OASIS, with all rules of the program.
std::string findingsSarif(const Findings& findings);

}  // namespace ryn
