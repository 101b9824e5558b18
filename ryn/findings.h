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

/// By file and line; what has both in common keeps its order.
void sortFindings(Findings& findings);

/// Nothing but notes.
bool isGood(const Findings& findings);

}  // namespace ryn
