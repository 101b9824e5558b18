#include "ryn/make_command.h"

#include <algorithm>
#include <charconv>
#include <CLI/CLI.hpp>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>

#include "image/image_error.h"
#include "packs/pack_writer.h"
#include "ryn/branding.h"
#include "ryn/check_application.h"
#include "ryn/embedded.h"
#include "ryn/findings_report.h"
#include "ryn/jar.h"
#include "ryn/output.h"
#include "ryn/pack_command.h"
#include "ryn/ryn_file.h"
#include "text/text.h"

namespace ryn {
namespace {
namespace fs = std::filesystem;

constexpr char kStartJar[] = "lib/ryn-start.jar";

/// As typed, in UTF-8.
struct MakeOptions {
  std::string name, out, launcher, icon, publisher, description, copyright, title, noVmText;
  std::string version = "1.0.0.0", level, mainClass, java = "JRE JDK", heapMax, runtime, pack, digest;
  std::vector<std::string> jars, options;
  bool vendors = false, console = false, noStart = false, json = false;
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

/// Where the runtime in the folder `home` has its program: "bin/java.exe" or "jre/bin/java.exe".
std::string programOfRuntime(const std::string& home) {
  for (const char* const program : {"bin/java.exe", "jre/bin/java.exe"}) {
    if (fs::is_regular_file(pathOf(home) / program)) return program;
  }
  refuse("--runtime " + home +
         ": is no Java for Windows: it has neither bin/java.exe nor jre/bin/java.exe below it");
}

std::string mainClassOf(const MakeOptions& options) {
  if (!options.mainClass.empty()) return options.mainClass;
  if (options.jars.empty()) refuse("--main or --jar is needed");
  const std::string& jar = options.jars.front();
  const auto archive = ZipFile::open(readFile(pathOf(jar)));
  std::string name = archive ? manifestOf(*archive)["main-class"] : "";
  name = toUtf8(trim(fromUtf8(name)));
  if (name.empty()) refuse("--jar " + jar + ": its manifest names no Main-Class; give --main");
  return name;
}

RynFile rynFileOf(const MakeOptions& options) {
  RynFile file{.name = options.name,
               .mainClass = mainClassOf(options),
               .start = !options.noStart,
               .validVms = options.java,
               .options = options.options,
               .console = options.console};
  // Java knows best what its manifests mean.
  if (file.start && options.mainClass.empty()) file.mainClass.clear();
  if (file.start &&
      (file.mainClass.starts_with('-') || file.mainClass.find_first_of(" /") != std::string::npos))
    refuse("--main " + file.mainClass + ": is no name of a class; --no-start takes everything");
  for (const std::string& jar : options.jars) {
    file.jars.push_back(textOf(pathOf(jar).filename()));
    // The class path of Windows has no way to write it.
    if (file.jars.back().find(';') != std::string::npos) refuse("--jar " + jar + ": has a \";\" in its name");
  }
  if (!options.runtime.empty()) file.currentVm = "jre/" + programOfRuntime(options.runtime);
  // Where the launcher unpacks it to.
  if (!options.pack.empty()) file.currentVm = "Windows/resource/jre/bin/java.exe";
  if (!options.heapMax.empty()) {
    const std::optional<uint64_t> size = parseSize(options.heapMax);
    if (!size) refuse("--heap-max " + options.heapMax + ": is no size such as 512m or 1g");
    file.heapMax = *size;
  }
  return file;
}

/// The vendors' description. An elevated program does without the places that a plain user can write to:
/// every hint that the description says this of.
std::string vendorsFor(const std::string& level) {
  const std::string all(embeddedVendors().begin(), embeddedVendors().end());
  if (level.empty() || level == "asInvoker") return all;
  std::string kept;
  bool inHints = false, drop = false;
  std::istringstream lines(all);
  for (std::string line; std::getline(lines, line);) {
    if (!drop) kept += line + "\n";
    inHints = inHints || line.starts_with("PATH_HINT:");
    drop = inHints && line.starts_with('#') && line.find("plain user can write there") != std::string::npos;
  }
  return kept;
}

using NamedText = std::pair<std::string, std::string>;

/// What tells the launcher where else a VM is to be had: files and their contents.
std::vector<NamedText> buildOptionsOf(const MakeOptions& options) {
  if (options.vendors) {
    return {
        {"jvmspecs/jvmspecs.properties", {embeddedVendorsOptions().begin(), embeddedVendorsOptions().end()}},
        {"jvmspecs/vendors.txt", vendorsFor(options.level)}};
  }
  if (options.pack.empty()) return {};
  const std::string& url = options.pack;
  const bool known = url.starts_with("http://") || url.starts_with("https://") || url.starts_with("ftp://");
  if (!known || !url.ends_with(".vm") ||
      std::any_of(url.begin(), url.end(), [](char c) { return c <= ' ' || c > '~' || c == '\\'; }))
    refuse("--pack " + url + ": has to begin with http://, https:// or ftp:// and to end in .vm");
  const std::string digest = toUtf8(lowerCase(fromUtf8(options.digest)));
  if (digest.size() != 32 || digest.find_first_not_of("0123456789abcdef") != std::string::npos)
    refuse("--digest " + options.digest + ": is no MD5 digest of 32 hexadecimal digits");
  // The folder Windows/jvmspecs has to be there for the download.
  return {{"Windows/jvmspecs/jvmspecs.properties",
           "# When no Java is found this one is fetched. It stays where ryn.nl.current.vm looks for it.\n" +
               jvmspecsLines(url, digest)}};
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

/// `runtime`: what is in the runtime's folder.
void fillFolder(const fs::path& folder, const MakeOptions& options, const Bytes& program, const RynFile& file,
                const std::vector<std::string>& runtime) {
  const auto write = [&](const std::string& name, ByteView bytes) {
    fs::create_directories((folder / pathOf(name)).parent_path());
    writeFile(folder / pathOf(name), bytes);
  };
  const auto writeText = [&](const std::string& name, const std::string& text) {
    write(name, {reinterpret_cast<const uint8_t*>(text.data()), text.size()});
  };
  write(options.name + ".exe", program);
  writeText(options.name + ".ryn", rynFileText(file));
  fs::create_directory(folder / "lib");
  if (file.start) write(kStartJar, embeddedStartJar());
  for (size_t i = 0; i < file.jars.size(); ++i)
    write("lib/" + file.jars[i], readFile(pathOf(options.jars[i])));
  for (const auto& [name, text] : buildOptionsOf(options)) writeText(name, text);
  for (const std::string& name : runtime) {
    if (name.ends_with('/'))
      fs::create_directories(folder / "jre" / pathOf(name));
    else
      write("jre/" + name, readFile(pathOf(options.runtime) / pathOf(name)));
  }
}

Bytes launcherOf(const MakeOptions& options) {
  if (!options.launcher.empty()) return readFile(pathOf(options.launcher));
  if (embeddedLauncher().empty()) refuse("this ryn was built without a launcher; give one with --launcher");
  return {embeddedLauncher().begin(), embeddedLauncher().end()};
}

std::string howToSign(const std::string& program) {
  return "Sign the program last: a later change of it breaks the signature. With one of\n"
         "  signtool sign /fd SHA256 /tr http://timestamp.example.com /td SHA256 " +
         program +
         "\n"
         "  osslsigncode sign -pkcs12 me.p12 -h sha256 -ts http://timestamp.example.com -in " +
         program +
         " -out signed.exe\n"
         "  jsign --storetype PKCS12 --keystore me.p12 --tsaurl http://timestamp.example.com " +
         program + "\n";
}

ExitCode makeApplication(const MakeOptions& options) {
  for (const std::string* text : {&options.name, &options.publisher, &options.description, &options.copyright,
                                  &options.title, &options.mainClass, &options.java, &options.pack}) {
    if (toUtf8(fromUtf8(*text)) != *text) refuse("an argument is not UTF-8");
    // A line end in a value would begin another key.
    if (text->find_first_of("\r\n") != std::string::npos) refuse("a line end in an argument: " + *text);
  }
  if (options.name.find('/') != std::string::npos)
    refuse("--name " + options.name + ": is no name of a file");
  if (!options.noStart && embeddedStartJar().empty())
    refuse("this ryn was built without ryn-start.jar; give --no-start");
  const RynFile file = rynFileOf(options);
  buildOptionsOf(options);
  checkNames({options.name + ".exe"});
  std::vector<std::string> jars = file.jars;
  if (file.start) jars.push_back(fs::path(kStartJar).filename().string());
  checkNames(jars);
  // Listed before the new folder is there, which may lie within it.
  std::vector<std::string> runtime;
  if (!options.runtime.empty()) runtime = filesBelow(pathOf(options.runtime));
  checkNames(runtime);

  Bytes program;
  try {
    program = brand(launcherOf(options), brandingOf(options));
  } catch (const ImageError& error) {
    refuse((options.launcher.empty() ? "the launcher" : options.launcher) + ": " + error.what());
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
  const Findings findings = checkApplication(pathOf(options.out));
  const ExitCode ended = isGood(findings) ? kGood : kNegative;
  if (options.json) {
    nlohmann::ordered_json report = {{"schema", 1}, {"folder", textOf(out)}, {"files", files}};
    report["check"] = findingsJson(options.out, findings);
    std::cout << report.dump(2) << "\n";
    return ended;
  }
  const std::string exe = textOf(pathOf(options.out) / pathOf(options.name + ".exe"));
  std::cout << options.out << ": " << files.size() << " files\n" << findingsText(findings) << howToSign(exe);
  return ended;
}

}  // namespace

void addMakeCommand(CLI::App& program, ExitCode& ended) {
  CLI::App* make = program.add_subcommand("make", "Makes the folder of an application");
  make->footer(
      "Example: ryn make --name MyApp --out dist/MyApp --icon app.ico --publisher \"My Company\" \\\n"
      "           --version 2.4.0.17 --jar app.jar --java 17+ --heap-max 1g --runtime jdk-21-jre\n"
      "--config F reads options from F: lines such as name=\"MyApp\" below the line [make].");
  const auto o = std::make_shared<MakeOptions>();
  make->add_option("--name", o->name, "Of the application and its program")->required();
  make->add_option("--out", o->out, "The folder: a new or an empty one")->required();
  make->add_option("--launcher", o->launcher, "Another launcher.exe to brand than the one within");
  make->add_option("--icon", o->icon, "An .ico or .png file");
  make->add_option("--version", o->version, "Such as 2.4.0.17")->capture_default_str();
  make->add_option("--publisher", o->publisher, "The company");
  make->add_option("--description", o->description, "What Windows shows for the program (default: the name)");
  make->add_option("--copyright", o->copyright, "The copyright line");
  make->add_option("--title", o->title, "Of boxes with errors (default: the name)");
  make->add_option("--level", o->level, "With which rights Windows starts it")
      ->check(CLI::IsMember({"asInvoker", "highestAvailable", "requireAdministrator"}));
  make->add_option("--no-vm-text", o->noVmText, "Folder of what is said when no Java is found: de.txt, ...");
  make->add_option("--main", o->mainClass, "The main class (default: that of the first jar's manifest)");
  make->add_option("--jar", o->jars, "A jar for lib, may be repeated (default: the class path is lib/*)")
      ->allow_extra_args(false);
  make->add_option("--java", o->java, "Which Java will do, such as 17+")->capture_default_str();
  make->add_option("--heap-max", o->heapMax, "Largest heap, such as 512m or 1g");
  make->add_option("--option", o->options, "An option of the VM, may be repeated: --option=-Dkey=value")
      ->allow_extra_args(false);
  CLI::Option* runtime =
      make->add_option("--runtime", o->runtime, "Folder of a Java for Windows to put into jre");
  CLI::Option* pack = make->add_option(
      "--pack", o->pack, "URL of a VM pack (with bin/java.exe) to fetch once where no Java is found");
  CLI::Option* digest = make->add_option("--digest", o->digest, "MD5 digest of the pack");
  CLI::Option* vendors = make->add_flag("--vendors", o->vendors,
                                        "Find the Java of every vendor, with their description in jvmspecs");
  pack->needs(digest)->excludes(runtime)->excludes(vendors);
  digest->needs(pack);
  runtime->excludes(vendors);
  make->add_flag("--console", o->console, "Open a console for the program");
  make->add_flag("--no-start", o->noStart,
                 "The main class takes the launcher's two arguments itself: no ryn-start.jar and its keys");
  make->add_flag("--json", o->json, "Report as JSON");
  // The program's, because CLI11 reads no file for a command alone; so its options are in a section.
  make->fallthrough();
  program.set_config("--config", "", "A file with options of make, in a section [make]: name=\"MyApp\"")
      ->check(CLI::ExistingFile);
  make->callback([o, &ended] { ended = makeApplication(*o); });
}

}  // namespace ryn
