#include "ryn/make_command.h"

#include <charconv>
#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>

#include "image/image_error.h"
#include "packs/pack_writer.h"
#include "ryn/branding.h"
#include "ryn/output.h"
#include "ryn/ryn_file.h"
#include "text/text.h"

namespace ryn {
namespace {
namespace fs = std::filesystem;

/// As typed, in UTF-8.
struct MakeOptions {
  std::string name, out, launcher, icon, publisher, description, copyright, title, noVmText;
  std::string version = "1.0.0.0", level, mainClass, java = "JRE JDK", heapMax, runtime;
  std::vector<std::string> jars, options;
  bool json = false;
};

[[noreturn]] void refuse(const std::string& text) {
  throw CommandError(kUsage, text);
}

VersionInfo::Numbers parseVersion(const std::string& text) {
  VersionInfo::Numbers numbers{};
  const char* at = text.data();
  const char* const end = at + text.size();
  for (uint16_t& number : numbers) {
    const auto [next, error] = std::from_chars(at, end, number);
    if (error != std::errc()) break;
    if (next == end) return numbers;
    if (*next != '.') break;
    at = next + 1;
  }
  refuse("--version " + text + ": one to four numbers up to 65535 with dots between are needed");
}

std::map<uint16_t, std::wstring> readNoVmTexts(const std::string& folder) {
  std::map<uint16_t, std::wstring> texts;
  if (folder.empty()) return texts;
  for (const std::string& name : filesBelow(pathOf(folder))) {
    const std::string file = folder + "/" + name;
    const std::optional<uint16_t> language =
        name.ends_with(".txt") ? languageOfTexts(name.substr(0, name.size() - 4)) : std::nullopt;
    if (!language)
      refuse(file + ": is not named for a language of the launcher, such as de.txt or pt-BR.txt");
    const Bytes bytes = readFile(pathOf(file));
    std::string text(bytes.begin(), bytes.end());
    if (text.starts_with("\xEF\xBB\xBF")) text.erase(0, 3);
    if (toUtf8(fromUtf8(text)) != text) refuse(file + ": is not UTF-8");
    texts[*language] = std::wstring(trim(replaceAll(fromUtf8(text), L"\r\n", L"\n")));
  }
  return texts;
}

Branding brandingOf(const MakeOptions& options) {
  Branding branding{.name = fromUtf8(options.name),
                    .version = parseVersion(options.version),
                    .publisher = fromUtf8(options.publisher),
                    .description = fromUtf8(options.description),
                    .copyright = fromUtf8(options.copyright),
                    .title = fromUtf8(options.title),
                    .noVmText = readNoVmTexts(options.noVmText)};
  if (!options.icon.empty()) branding.icon = readFile(pathOf(options.icon));
  if (options.level == "asInvoker") branding.level = ExecutionLevel::kAsInvoker;
  if (options.level == "highestAvailable") branding.level = ExecutionLevel::kHighestAvailable;
  if (options.level == "requireAdministrator") branding.level = ExecutionLevel::kRequireAdministrator;
  return branding;
}

RynFile rynFileOf(const MakeOptions& options) {
  RynFile file{.name = options.name,
               .mainClass = options.mainClass,
               .validVms = options.java,
               .options = options.options,
               .hasRuntime = !options.runtime.empty()};
  for (const std::string& jar : options.jars) {
    file.jars.push_back(textOf(pathOf(jar).filename()));
    // The class path of Windows has no way to write it.
    if (file.jars.back().find(';') != std::string::npos) refuse("--jar " + jar + ": has a \";\" in its name");
  }
  if (!options.heapMax.empty()) {
    const std::optional<uint64_t> size = parseSize(options.heapMax);
    if (!size) refuse("--heap-max " + options.heapMax + ": is no size such as 512m or 1g");
    file.heapMax = *size;
  }
  return file;
}

/// Names that are to be in one folder on Windows.
void checkNames(const std::vector<std::string>& names) {
  for (const std::string& fault : packNameFaults(names)) refuse("Windows cannot hold " + fault);
}

/// A new folder, which is gone with everything in it unless `keepAs` gave it its place.
class NewFolder {
 public:
  explicit NewFolder(fs::path path) : path_(std::move(path)) {
    if (!fs::create_directory(path_)) refuse("the folder " + textOf(path_) + " is in the way");
  }
  NewFolder(const NewFolder&) = delete;
  NewFolder& operator=(const NewFolder&) = delete;
  ~NewFolder() {
    std::error_code ignored;
    if (!path_.empty()) fs::remove_all(path_, ignored);
  }

  const fs::path& path() const { return path_; }

  void keepAs(const fs::path& target) {
    // An empty folder there; not every system takes its place over.
    fs::remove(target);
    fs::rename(path_, target);
    path_.clear();
  }

 private:
  fs::path path_;
};

void writeText(const fs::path& path, const std::string& text) {
  writeFile(path, {reinterpret_cast<const uint8_t*>(text.data()), text.size()});
}

/// `runtime`: what is in the runtime's folder.
void fillFolder(const fs::path& folder, const MakeOptions& options, const Bytes& program, const RynFile& file,
                const std::vector<std::string>& runtime) {
  writeFile(folder / pathOf(options.name + ".exe"), program);
  writeText(folder / pathOf(options.name + ".ryn"), rynFileText(file));
  fs::create_directory(folder / "lib");
  for (size_t i = 0; i < file.jars.size(); ++i) {
    writeFile(folder / "lib" / pathOf(file.jars[i]), readFile(pathOf(options.jars[i])));
  }
  for (const std::string& name : runtime) {
    const fs::path target = folder / "jre" / pathOf(name);
    fs::create_directories(target.parent_path());
    if (target.has_filename()) writeFile(target, readFile(pathOf(options.runtime) / pathOf(name)));
  }
}

void makeApplication(const MakeOptions& options) {
  for (const std::string* text : {&options.name, &options.publisher, &options.description, &options.copyright,
                                  &options.title, &options.mainClass, &options.java}) {
    if (toUtf8(fromUtf8(*text)) != *text) refuse("an argument is not UTF-8");
    // A line end in a value would begin another key.
    if (text->find_first_of("\r\n") != std::string::npos) refuse("a line end in an argument: " + *text);
  }
  if (options.name.find('/') != std::string::npos)
    refuse("--name " + options.name + ": is no name of a file");
  const RynFile file = rynFileOf(options);
  checkNames({options.name + ".exe"});
  checkNames(file.jars);
  // Listed before the new folder is there, which may lie within it.
  std::vector<std::string> runtime;
  if (file.hasRuntime) {
    runtime = filesBelow(pathOf(options.runtime));
    checkNames(runtime);
    if (!fs::is_regular_file(pathOf(options.runtime) / "bin" / "java.exe")) {
      refuse("--runtime " + options.runtime + ": has no bin/java.exe");
    }
  }

  Bytes program;
  const Bytes launcher = readFile(pathOf(options.launcher));
  try {
    program = brand(launcher, brandingOf(options));
  } catch (const ImageError& error) {
    refuse(options.launcher + ": " + error.what());
  }

  // Never among files that are there: an older jar in "lib", or a file of the user's own, would go on or
  // be lost without a word. A build removes its folder first.
  const fs::path out = fs::absolute(pathOf(options.out + "/")).lexically_normal().parent_path();
  if (fs::exists(out) && !(fs::is_directory(out) && fs::is_empty(out))) {
    refuse("--out " + options.out + ": is there and not an empty folder; remove it first");
  }
  fs::create_directories(out.parent_path());
  fs::path temporary = out;
  temporary += ".tmp";
  NewFolder folder(temporary);
  fillFolder(folder.path(), options, program, file, runtime);
  folder.keepAs(out);

  const std::vector<std::string> files = filesBelow(out);
  if (options.json) {
    const nlohmann::ordered_json report = {{"schema", 1}, {"folder", textOf(out)}, {"files", files}};
    std::cout << report.dump(2) << "\n";
    return;
  }
  std::cout << options.out << ": " << options.name << ".exe, " << options.name << ".ryn, " << file.jars.size()
            << " jars" << (file.hasRuntime ? ", a runtime" : "") << "\nSign " << options.name
            << ".exe last: a later change of it breaks the signature.\n";
}

}  // namespace

void addMakeCommand(CLI::App& program) {
  CLI::App* make = program.add_subcommand("make", "Makes the folder of an application");
  make->footer(
      "Example: ryn make --name MyApp --out dist/MyApp --launcher launcher.exe --icon app.ico \\\n"
      "           --jar app.jar --main com.example.Main --java 17+ --heap-max 1g\n"
      "--config F reads options from F: lines such as name=\"MyApp\" below the line [make].");
  const auto o = std::make_shared<MakeOptions>();
  make->add_option("--name", o->name, "Of the application and its program")->required();
  make->add_option("--out", o->out, "The folder: a new or an empty one")->required();
  make->add_option("--launcher", o->launcher,
                   "The launcher.exe to brand; needed, there is none within so far")
      ->required();
  make->add_option("--icon", o->icon, "An .ico or .png file");
  make->add_option("--version", o->version, "Such as 2.4.0.17")->capture_default_str();
  make->add_option("--publisher", o->publisher, "The company");
  make->add_option("--description", o->description, "What Windows shows for the program (default: the name)");
  make->add_option("--copyright", o->copyright, "The copyright line");
  make->add_option("--title", o->title, "Of boxes with errors (default: the name)");
  make->add_option("--level", o->level, "With which rights Windows starts it")
      ->check(CLI::IsMember({"asInvoker", "highestAvailable", "requireAdministrator"}));
  make->add_option("--no-vm-text", o->noVmText, "Folder of what is said when no Java is found: de.txt, ...");
  make->add_option("--main", o->mainClass, "The main class; needed")->required();
  make->add_option("--jar", o->jars, "A jar for lib, may be repeated (default: the class path is lib/*)")
      ->allow_extra_args(false);
  make->add_option("--java", o->java, "Which Java will do, such as 17+")->capture_default_str();
  make->add_option("--heap-max", o->heapMax, "Largest heap, such as 512m or 1g");
  make->add_option("--option", o->options, "An option of the VM, may be repeated: --option=-Dkey=value")
      ->allow_extra_args(false);
  make->add_option("--runtime", o->runtime, "Folder of a Java for Windows to put into jre");
  make->add_flag("--json", o->json, "Report as JSON");
  // The program's, because CLI11 reads no file for a command alone; so its options are in a section.
  make->fallthrough();
  program.set_config("--config", "", "A file with options of make, in a section [make]: name=\"MyApp\"")
      ->check(CLI::ExistingFile);
  make->callback([o] { makeApplication(*o); });
}

}  // namespace ryn
