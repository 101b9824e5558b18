#include "ryn/findings.h"

#include <algorithm>
#include <tuple>

namespace ryn {

std::string_view nameOf(Severity severity) {
  switch (severity) {
    case Severity::kNote:
      return "note";
    case Severity::kWarning:
      return "warning";
    case Severity::kError:
      break;
  }
  return "error";
}

size_t countOf(const Findings& findings, Severity severity) {
  return static_cast<size_t>(
      std::count_if(findings.begin(), findings.end(),
                    [severity](const Finding& finding) { return finding.rule->severity == severity; }));
}

void sortFindings(Findings& findings) {
  std::stable_sort(findings.begin(), findings.end(), [](const Finding& a, const Finding& b) {
    return std::tie(a.file, a.line) < std::tie(b.file, b.line);
  });
}

bool isGood(const Findings& findings) {
  return countOf(findings, Severity::kNote) == findings.size();
}

}  // namespace ryn
