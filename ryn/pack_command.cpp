#include "ryn/pack_command.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "packs/md5.h"
#include "packs/pack_writer.h"
#include "ryn/findings_report.h"
#include "ryn/output.h"
#include "ryn/pack_check.h"

namespace ryn {
namespace {

struct PackOptions {
  std::string runtime;
  std::string out;
  bool json = false;
};

void buildPack(const PackOptions& options) {
  const std::filesystem::path out = pathOf(options.out);
  // The launcher refuses every other URL, and letter case counts for it.
  if (out.extension() != ".vm" || out.stem().empty()) {
    throw CommandError(kUsage, "--out " + options.out + ": the name of a pack ends in .vm");
  }
  const std::filesystem::path runtime = pathOf(options.runtime);
  const std::vector<std::string> names = filesBelow(runtime);
  if (const std::vector<std::string> faults = packNameFaults(names); !faults.empty()) {
    std::string text = "Windows cannot hold these names:";
    for (const std::string& fault : faults) text += "\n  " + fault;
    throw CommandError(kNegative, text);
  }
  Bytes pack;
  try {
    pack = writePack(
        names, [&](const std::string& name) { return readFile(runtime / pathOf(name)); }, textOf(out.stem()));
  } catch (const PackError& error) {
    throw CommandError(kNegative, options.runtime + ": " + error.what());
  }
  writeFile(out, pack);

  const std::string md5 = md5Of(pack);
  const std::string lines = jvmspecsLines("https://downloads.example.com/" + textOf(out.filename()), md5);
  if (options.json) {
    const nlohmann::ordered_json report = {
        {"schema", 1},         {"pack", options.out}, {"files", names.size()},
        {"size", pack.size()}, {"md5", md5},          {"jvmspecs", lines}};
    std::cout << report.dump(2) << "\n";
    return;
  }
  std::cout << options.out << ": " << names.size() << " files, " << pack.size() << " bytes, MD5 " << md5
            << "\n\nFor jvmspecs.properties, with the address of your server:\n\n"
            << lines;
}

struct PackCheckOptions {
  std::string pack;
  bool json = false;
};

void reportPack(const PackCheckOptions& options, ExitCode& ended) {
  const PackCheck check = checkPack(options.pack, readFile(pathOf(options.pack)));
  ended = isGood(check.findings) ? kGood : kNegative;
  if (!options.json) {
    uint64_t size = 0;
    for (const UnpackedEntry& entry : check.entries) size += entry.size;
    std::cout << findingsText(check.findings) << options.pack << ": " << check.entries.size()
              << " entries in the runtime, " << size << " bytes unpacked\n";
    return;
  }
  nlohmann::ordered_json report = findingsJson(options.pack, check.findings);
  report["entries"] = nlohmann::ordered_json::array();
  for (const UnpackedEntry& entry : check.entries) {
    report["entries"].push_back({{"entry", entry.entry},
                                 {"name", entry.name},
                                 {"folder", entry.isFolder},
                                 {"size", entry.size},
                                 {"attributes", entry.attributes}});
  }
  std::cout << report.dump(2) << "\n";
}

}  // namespace

std::string jvmspecsLines(std::string_view url, std::string_view md5) {
  const std::string key = "build.without.vm.not.found.download.url";
  std::string lines = "build.option=withoutvm\nbuild.without.vm.search.option=11\n";
  lines += key + "=" + std::string(url) + "\n";
  lines += key + ".md5Checksum.applicable=true\n";
  lines += key + ".md5Checksum.value=" + std::string(md5) + "\n";
  return lines;
}

void addPackCommand(CLI::App& program, ExitCode& ended) {
  CLI::App* pack =
      program.add_subcommand("pack", "VM packs, which the launcher fetches where no Java is found");
  pack->require_subcommand(1);
  pack->footer("Example: ryn pack build jdk-21-jre --out jre21.vm");
  CLI::App* build = pack->add_subcommand("build", "Makes a pack of the folder of a Java runtime for Windows");
  build->footer("Example: ryn pack build jdk-21-jre --out jre21.vm");
  const auto options = std::make_shared<PackOptions>();
  build->add_option("RUNTIME", options->runtime, "The runtime's folder, with bin/java.exe")->required();
  build->add_option("--out", options->out, "The pack, a name that ends in .vm; one that is there is replaced")
      ->required();
  build->add_flag("--json", options->json, "Report as JSON");
  build->callback([options] { buildPack(*options); });

  CLI::App* check = pack->add_subcommand("check", "Tells what the launcher would do with a pack");
  check->footer(
      "Example: ryn pack check jre21.vm\n\nFindings are \"file:entry: error|warning|note: text [rule]\"; "
      "exit code 1 "
      "for errors and warnings.");
  const auto checked = std::make_shared<PackCheckOptions>();
  check->add_option("PACK", checked->pack, "The pack, a .vm file")->required();
  check->add_flag("--json", checked->json, "Report as JSON, with every entry of the runtime");
  check->callback([checked, &ended] { reportPack(*checked, ended); });
}

}  // namespace ryn
