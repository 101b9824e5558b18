#include "ryn/findings_report.h"

#include <nlohmann/json.hpp>

#include "ryn/check_rules.h"

namespace ryn {
namespace {

// A path as a reference of RFC 3986.
std::string uriOf(const std::string& path) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  std::string uri;
  if (path.starts_with('/')) uri = "file://";
  if (path.size() > 1 && path[1] == ':') uri = "file:///";
  for (const char c : path) {
    const auto byte = static_cast<unsigned char>(c);
    const bool isPlain = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
    if (isPlain || std::string_view("-._~/").find(c) != std::string_view::npos ||
        (c == ':' && !uri.empty())) {
      uri.push_back(c);
    } else {
      uri += {'%', kHex[byte >> 4], kHex[byte & 0xF]};
    }
  }
  return uri;
}

}  // namespace

std::string findingsText(const Findings& findings) {
  std::string text;
  for (const Finding& finding : findings) {
    text += finding.file + ":" + std::to_string(finding.line) + ": ";
    text += std::string(nameOf(finding.rule->severity)) + ": " + finding.text;
    text += " [" + std::string(finding.rule->id) + "]\n";
  }
  return text;
}

nlohmann::ordered_json findingsJson(const std::string& checked, const Findings& findings) {
  nlohmann::ordered_json report = {{"schema", 1},
                                   {"checked", checked},
                                   {"errors", countOf(findings, Severity::kError)},
                                   {"warnings", countOf(findings, Severity::kWarning)},
                                   {"notes", countOf(findings, Severity::kNote)},
                                   {"findings", nlohmann::ordered_json::array()}};
  for (const Finding& finding : findings) {
    report["findings"].push_back({{"file", finding.file},
                                  {"line", finding.line},
                                  {"severity", nameOf(finding.rule->severity)},
                                  {"rule", finding.rule->id},
                                  {"text", finding.text}});
  }
  return report;
}

std::string findingsSarif(const Findings& findings) {
  using Json = nlohmann::ordered_json;
  Json rules = Json::array();
  for (const Rule& rule : kRules) {
    rules.push_back({{"id", rule.id},
                     {"shortDescription", {{"text", rule.summary}}},
                     {"defaultConfiguration", {{"level", nameOf(rule.severity)}}}});
  }
  Json results = Json::array();
  for (const Finding& finding : findings) {
    const Json location = {{"artifactLocation", {{"uri", uriOf(finding.file)}}},
                           {"region", {{"startLine", finding.line}}}};
    results.push_back({{"ruleId", finding.rule->id},
                       {"ruleIndex", finding.rule - kRules},
                       {"level", nameOf(finding.rule->severity)},
                       {"message", {{"text", finding.text}}},
                       {"locations", Json::array({{{"physicalLocation", location}}})}});
  }
  const Json driver = {{"name", "ryn"}, {"version", RYN_VERSION}, {"rules", rules}};
  const Json run = {{"tool", {{"driver", driver}}}, {"results", results}};
  return Json{{"$schema", "https://json.schemastore.org/sarif-2.1.0.json"},
              {"version", "2.1.0"},
              {"runs", Json::array({run})}}
             .dump(2) +
         "\n";
}

}  // namespace ryn
