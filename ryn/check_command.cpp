#include "ryn/check_command.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "ryn/check_application.h"
#include "ryn/findings_report.h"

namespace ryn {
namespace {

struct CheckOptions {
  std::string checked;
  bool json = false;
  bool sarif = false;
};

void report(const CheckOptions& options, ExitCode& ended) {
  const Findings findings = checkApplication(pathOf(options.checked));
  if (options.sarif)
    std::cout << findingsSarif(findings);
  else if (options.json)
    std::cout << findingsJson(options.checked, findings).dump(2) << "\n";
  else
    std::cout << findingsText(findings);
  ended = isGood(findings) ? kGood : kNegative;
}

}  // namespace

void addCheckCommand(CLI::App& program, ExitCode& ended) {
  CLI::App* check = program.add_subcommand("check", "Tells what would go wrong with an application's folder");
  check->footer(
      "Example: ryn check dist/MyApp\n\n"
      "Findings are \"file:line: error|warning|note: text [rule]\"; exit code 1 for errors and warnings.");
  const auto options = std::make_shared<CheckOptions>();
  check->add_option("APPLICATION", options->checked, "The folder, or the .ryn file in it")->required();
  CLI::Option* json = check->add_flag("--json", options->json, "Report as JSON");
  check->add_flag("--sarif", options->sarif, "Report as SARIF 2.1.0, for build servers and editors")
      ->excludes(json);
  check->callback([options, &ended] { report(*options, ended); });
}

}  // namespace ryn
