#include "ryn/explain_command.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <set>

#include "image/image_error.h"
#include "image/pe_image.h"
#include "ryn/embedded.h"
#include "ryn/explain.h"
#include "ryn/machine.h"
#include "ryn/machine_record.h"
#include "ryn/output.h"
#include "text/fold_case.h"
#include "text/path_text.h"
#include "text/text.h"

namespace ryn {
namespace {

using nlohmann::json;

struct ExplainOptions {
  std::string application, save, machine;
  std::vector<std::string> arguments;
  bool all = false;
  bool json = false;
};

// What searches ask for by name; others only where a text of the record names them.
constexpr const wchar_t* kSearchedVariables[] = {L"RYN_VM",       L"PATH",         L"CLASSPATH",
                                                 L"JAVA_HOME",    L"TMP",          L"TEMP",
                                                 L"ProgramFiles", L"ProgramW6432", L"ProgramFiles(x86)"};

/// The texts that say where VMs are looked for.
std::wstring searchedTexts(const Application& application, const json& record) {
  std::wstring texts = textOfBytes(embeddedVendors());
  for (const PropertyFile* file : {&application.properties, &application.jvmspecs}) {
    for (const auto& [key, value] : file->entries()) texts += L"\n" + value;
  }
  const json content = record.value("texts", json::object());
  for (const auto& [path, text] : content.items()) texts += L"\n" + fromUtf8(text.get<std::string>());
  return texts;
}

EnvironmentMap neededVariables(const EnvironmentMap& environment, const std::wstring& texts) {
  const std::wstring searched = foldCase(texts);
  EnvironmentMap needed;
  for (const auto& variable : environment) {
    const std::wstring& name = variable.first;
    const auto isName = [&](const wchar_t* each) { return equalIgnoringCase(each, name); };
    if (std::any_of(std::begin(kSearchedVariables), std::end(kSearchedVariables), isName) ||
        searched.find(foldCase(concat({L"%", name, L"%"}))) != std::wstring::npos) {
      needed.insert(variable);
    }
  }
  return needed;
}

/// Everything that this machine says about the application, without its user.
json recordOf(const Application& application, const Situation& situation, const VmProbe& machine) {
  json record = {{"schema", 1}};
  {
    const RecordingProbe recorder(machine, record);
    explain(application, situation, recorder, false);
    explain(application, situation, recorder, true);
  }
  const std::wstring texts = searchedTexts(application, record);
  record["program"] = {{"path", toUtf8(situation.programPath)}, {"signature", situation.signature}};
  record["startFolder"] = toUtf8(situation.startFolder);
  const CommandLine& line = situation.commandLine;
  record["commandLine"] = {{"text", toUtf8(line.text)},
                           {"arguments", utf8Of(line.arguments)},
                           {"service", line.service},
                           {"console", line.console},
                           {"tempFolder", toUtf8(line.tempFolder)}};
  for (const auto& [name, value] : neededVariables(situation.environment, texts))
    record["environment"][toUtf8(name)] = toUtf8(value);
  hideUser(record, situation.environment, texts);
  return record;
}

bool existsNowhere(const std::wstring& /*path*/) {
  return false;
}

std::wstring unchanged(const std::wstring& path) {
  return path;
}

/// `arguments` in place of those of the record, when there are any.
Situation situationOf(const json& record, const Application& application,
                      const std::vector<std::string>& arguments) {
  Situation situation;
  const auto text = [](const json& object, const char* name) {
    return fromUtf8(object.value(name, std::string()));
  };
  const json none = json::object();
  const json& program = record.contains("program") ? record["program"] : none;
  // The folder of that machine with today's program in it.
  std::wstring folder = folderPart(text(program, "path"));
  if (folder == L".") folder = L"C:\\Program Files\\" + application.name;
  situation.programPath = concat({folder, L"\\", application.name, L".exe"});
  situation.signature = program.value("signature", std::string());
  situation.startFolder = text(record, "startFolder");
  if (situation.startFolder.empty()) situation.startFolder = folder;
  const json environment = record.value("environment", none);
  for (const auto& [name, value] : environment.items())
    situation.environment[fromUtf8(name)] = fromUtf8(value.get<std::string>());

  CommandLine& line = situation.commandLine;
  if (!arguments.empty() || !record.contains("commandLine")) {
    // Paths that only that machine could complete.
    line = parseCommandLine(commandLineOf(situation.programPath, arguments), {.exists = existsNowhere,
                                                                              .folderExists = existsNowhere,
                                                                              .normalise = unchanged,
                                                                              .expand = unchanged});
    return situation;
  }
  const json& told = record["commandLine"];
  line.text = text(told, "text");
  for (const json& argument : told.value("arguments", json::array()))
    line.arguments.push_back(fromUtf8(argument.get<std::string>()));
  line.service = told.value("service", false);
  line.console = told.value("console", false);
  line.tempFolder = text(told, "tempFolder");
  return situation;
}

bool isSigned(const Bytes& program) {
  try {
    return PeImage(program).isSigned();
  } catch (const ImageError&) {
    return false;
  }
}

Explanation replay(const json& record, const Application& application,
                   const std::vector<std::string>& arguments, bool all) {
  Situation situation;
  try {
    situation = situationOf(record, application, arguments);
  } catch (const json::exception& error) {
    throw CommandError(kUsage, std::string("the record of a machine: ") + error.what());
  }
  // Today's program is another than the one that was looked at.
  if (!isSigned(application.launcher)) {
    situation.signature = "none";
  } else if (situation.signature.empty() || situation.signature == "none") {
    situation.signature = "unchecked";
  }
  return explain(application, situation,
                 ReplayProbe(record, folderPart(situation.programPath), application.here), all);
}

json readRecord(const std::string& file) {
  const Bytes bytes = readFile(pathOf(file));
  json record = json::parse(bytes.begin(), bytes.end(), nullptr, false);
  if (!record.is_object() || record.value("schema", json()) != 1)
    throw CommandError(kUsage, file + ": is no record of a machine (schema 1)");
  return record;
}

void writeText(const std::filesystem::path& path, const std::string& text) {
  writeFile(path, {reinterpret_cast<const uint8_t*>(text.data()), text.size()});
}

Explanation explanationFor(const ExplainOptions& options, const Application& application) {
  if (!options.machine.empty())
    return replay(readRecord(options.machine), application, options.arguments, options.all);
  std::optional<Explanation> result;
  withThisMachine(application.folder / pathOf(toUtf8(application.name) + ".exe"), options.arguments,
                  [&](const Situation& situation, const VmProbe& machine) {
                    if (options.save.empty()) {
                      result = explain(application, situation, machine, options.all);
                      return;
                    }
                    const json record = recordOf(application, situation, machine);
                    writeText(pathOf(options.save), record.dump(1) + "\n");
                    // What is told is what the file says: neither names the user.
                    result = replay(record, application, {}, options.all);
                  });
  return std::move(*result);
}

ExitCode explainApplication(const ExplainOptions& options) {
  const Application application(pathOf(options.application));
  const Explanation explanation = explanationFor(options, application);
  std::cout << (options.json ? explanationJson(explanation, application)
                             : explanationText(explanation, application));
  return explanation.isLaunched() ? kGood : kNegative;
}

}  // namespace

std::wstring commandLineOf(const std::wstring& programPath, const std::vector<std::string>& arguments) {
  std::wstring line = concat({L"\"", programPath, L"\""});
  for (const std::string& argument : arguments) {
    const bool quoted = argument.find(' ') != std::string::npos;
    line += concat({quoted ? L" \"" : L" ", fromUtf8(argument), quoted ? L"\"" : L""});
  }
  return line;
}

std::filesystem::path writeSupportReport() {
  const std::filesystem::path folder = programFolder();
  const std::filesystem::path desktop = desktopFolder();
  if (folder.empty() || desktop.empty()) throw CommandError(kUsage, "the system names no desktop");
  const Application application(folder);
  ExplainOptions options;
  options.all = true;
  const std::string text = explanationText(explanationFor(options, application), application);
  std::filesystem::path report = desktop / pathOf(toUtf8(application.name) + "-report.txt");
  // For programs of Windows that know nothing else.
  writeText(report, "\xEF\xBB\xBF" + toUtf8(replaceAll(fromUtf8(text), L"\n", L"\r\n")));
  return report;
}

void addExplainCommand(CLI::App& program, ExitCode& ended) {
  CLI::App* explain = program.add_subcommand("explain", "Tells which Java an application takes, and why");
  explain->footer(
      "Example: ryn explain MyApp.exe\n"
      "         ryn explain MyApp.exe --save machine.json -- -i console\n"
      "         ryn explain dist/MyApp --machine machine.json\n\n"
      "Nothing is started but an application's own validator (jvmspecs\\Verify.jar), as in a launch.\n"
      "Exit codes: 0 a launch starts a VM, 1 it starts none, 2 usage or unreadable input.");
  const auto o = std::make_shared<ExplainOptions>();
  explain->add_option("APPLICATION", o->application, "Its program, or its folder")->required();
  CLI::Option* const save = explain->add_option(
      "--save", o->save, "Keep what was seen of the machine, without the user's name, in a file");
  explain->add_option("--machine", o->machine, "Take the machine from such a file instead of this one")
      ->excludes(save);
  explain->add_flag("--all", o->all, "Go on behind the choice, and tell what else lies on the machine");
  explain->add_flag("--json", o->json, "Report as JSON");
  explain->add_option("ARGUMENTS", o->arguments, "Arguments of the launch, behind \"--\"");
  explain->callback([o, &ended] { ended = explainApplication(*o); });
}

}  // namespace ryn
