#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace ryn {

/// An error makes a launch fail or do something other than what is written, a warning is what fails on some
/// machines, a note is worth knowing.
enum class Severity { kNote, kWarning, kError };

/// "note", "warning" or "error".
std::string_view nameOf(Severity severity);

struct Rule {
  std::string_view id;
  Severity severity = Severity::kError;
  /// What the rule finds, as a sentence without a full stop.
  std::string_view summary;
};

struct Finding {
  const Rule* rule = nullptr;
  /// As the user named it, with "/".
  std::string file;
  /// From 1, which also stands for the whole file.
  size_t line = 1;
  /// What is wrong there and what to do, in UTF-8.
  std::string text;
};

using Findings = std::vector<Finding>;

size_t countOf(const Findings& findings, Severity severity);

/// Nothing but notes.
bool isGood(const Findings& findings);

/// A line for each: "file:line: error: text [rule]".
std::string findingsText(const Findings& findings);

/// One object with the findings and their numbers: docs/check.md.
std::string findingsJson(const std::string& checked, const Findings& findings);

/// A log in the Static Analysis Results Interchange Format 2.1.0 of OASIS, with all rules of the program.
std::string findingsSarif(const Findings& findings);

}  // namespace ryn
