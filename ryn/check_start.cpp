#include <algorithm>
#include <climits>
#include <map>
#include <set>

#include "properties/keys.h"
#include "ryn/application_check.h"
#include "ryn/jar.h"
#include "ryn/output.h"
#include "text/path_text.h"
#include "text/text.h"
#include "vmlaunch/launch_request.h"

namespace ryn {
namespace {

constexpr wchar_t kClassPathKey[] = L"ryn.class.path";
constexpr wchar_t kMainKey[] = L"ryn.nl.java.launcher.main.class";
constexpr wchar_t kUserDirKey[] = L"ryn.user.dir";
constexpr wchar_t kUserOptionsKey[] = L"ryn.user.options";
constexpr wchar_t kStarter[] = L"com.vantu.ryn.Start";
constexpr std::wstring_view kStartKeys[] = {L"ryn.start.jar", L"ryn.start.class", L"ryn.start.module"};
/// Class files of Java N have the version N + 44 in their bytes 6 and 7.
constexpr int kClassVersionBase = 44;
constexpr size_t kClassHeader = 8;

/// Attributes that mean something to "java -jar" alone, and the options that say the same.
constexpr std::pair<const char*, std::wstring_view> kManifestOptions[] = {
    {"add-exports", L"--add-exports"},
    {"add-opens", L"--add-opens"},
    {"enable-native-access", L"--enable-native-access"},
    {"launcher-agent-class", L"-javaagent:"},
    {"splashscreen-image", L"-splash:"},
};

/// The Java that a class file is for; 0 when it is none.
int javaOf(ByteView classFile) {
  if (classFile.size() < kClassHeader || readU32(classFile, 0) != 0xBEBAFECA) return 0;
  return (classFile[6] << 8 | classFile[7]) - kClassVersionBase;
}

bool isClassOfProgram(const std::string& name) {
  return name.ends_with(".class") && !name.starts_with("META-INF/") && !name.ends_with("module-info.class");
}

class StartChecker {
 public:
  explicit StartChecker(ApplicationCheck& check) : check_(check) {}

  void run() {
    checkRequired();
    checkClassPath();
    checkMainClass();
    checkFolders();
    checkAge();
  }

 private:
  struct Place {
    std::wstring path;
    /// Null for a folder.
    std::shared_ptr<ZipFile> jar;
  };

  const PropertyLines& ryn() const { return check_.ryn; }

  // As the launcher does before it looks for a VM.
  void checkRequired() {
    const PropertyFile& properties = ryn().properties();
    if (ryn().get(kClassPathKey).empty()) {
      check_.add("missing-key", ryn(), kClassPathKey, L"no launch goes on without ryn.class.path");
    }
    if (mainClass(properties).empty())
      check_.add("missing-key", ryn(), kMainKey,
                 L"no launch goes on without ryn.nl.java.launcher.main.class");
    if (currentVm(properties).empty() && validVmList(properties).empty()) {
      check_.add("missing-key", ryn(), kListKey,
                 L"no launch goes on without ryn.nl.valid.vm.list, such as 17+, or ryn.nl.current.vm");
    }
  }

  void addToClassPath(RuleRef rule, std::initializer_list<std::wstring_view> text) {
    check_.add(rule, ryn(), kClassPathKey, concat(text));
  }

  void checkClassPath() {
    const std::wstring whole = ryn().get(kClassPathKey);
    if (whole.find(L'"') != whole.npos) {
      addToClassPath("class-path-quote",
                     {L"the launcher quotes the class path itself, and this double quote ends it there"});
    }
    if (whole.find(keys::kClasspathPlaceholder) != whole.npos) {
      isOpen_ = true;
      addToClassPath(
          "class-path-variable",
          {L"the user's variable CLASSPATH says what else is loaded; a double quote in it ends the "
           L"class path"});
    }
    const PropertyFile& properties = ryn().properties();
    const LaunchFacts facts{.properties = properties,
                            .propertiesPath = FolderProbe::resolved(L"application.ryn"),
                            .tempPropertiesPath = {},
                            .programPath = {},
                            .defaultFolder = {},
                            .commandLine = {},
                            .arguments = {},
                            .environment = check_.environment};
    LaunchRequest request;
    LaunchRequest::fillFromProperties(facts, request);
    for (const std::wstring& entry : request.classpath.entries) checkEntry(entry);
  }

  void checkEntry(const std::wstring& entry) {
    // Left by an escape without digits, which has been told of.
    if (entry.find(L'\0') != entry.npos) {
      isOpen_ = true;
      return;
    }
    const std::wstring path = FolderProbe::resolved(entry);
    std::optional<std::wstring> inside = FolderProbe::inside(path);
    if (!inside) {
      isOpen_ = true;
      return addToClassPath(
          "outside-folder",
          {L"\"", entry, L"\" is outside the folder and may not be there on other machines"});
    }
    inside = replaceAll(*inside, L"\\", L"/");
    if (std::any_of(inside->begin(), inside->end(), [](wchar_t c) { return c > 0x7E; }) &&
        !win32ShortPaths(ryn().properties())) {
      addToClassPath("code-page", {L"\"", *inside,
                                   L"\" is not found where Windows' ANSI code page lacks one of its "
                                   L"characters; ryn.win32.short.paths=true helps"});
    }
    if (fileName(path) == L"*") return checkWildcard(folderPart(path), *inside);
    if (inside->find(L'*') != inside->npos) {
      isOpen_ = true;
      return addToClassPath("class-path", {L"\"", *inside,
                                           L"\": Java knows no pattern but a \"*\" alone, as in "
                                           L"lib/*, which stands for all jars"});
    }
    switch (check_.probe.pathKind(path)) {
      case PathKind::kFolder:
        places_.push_back({.path = path, .jar = nullptr});
        return;
      case PathKind::kFile:
        return openJar(path);
      case PathKind::kNone:
        break;
    }
    // Nobody knows what would be in it.
    isOpen_ = true;
    const wchar_t* hint = L"";
    if (inside->find_first_of(L":,") != inside->npos) hint = L"; entries have \";\" between them";
    addToClassPath("class-path", {L"there is no \"", *inside, L"\"", hint});
  }

  void checkWildcard(const std::wstring& folder, const std::wstring& entry) {
    bool isEmpty = true;
    for (const auto& [name, path] : check_.probe.list(folder)) {
      if (!lowerCase(name).ends_with(L".jar")) continue;
      isEmpty = false;
      openJar(joinPath(folder, name));
    }
    isOpen_ = isOpen_ || isEmpty;
    if (isEmpty) addToClassPath("class-path", {L"\"", entry, L"\": there is no jar in that folder"});
  }

  void openJar(const std::wstring& path) {
    if (!opened_.insert(path).second) return;
    std::shared_ptr<ZipFile> jar = ZipFile::open(readFile(*check_.probe.find(path)));
    if (!jar) {
      isOpen_ = true;
      return addToClassPath("bad-jar", {fromUtf8(check_.nameOf(path)), L" is no jar"});
    }
    places_.push_back({path, jar});
    // A jar brings others along; those that are not there do not matter to Java.
    const std::string named = manifestOf(*jar)["class-path"];
    for (const std::wstring& url : split(fromUtf8(named), L' ')) {
      const std::wstring other = resolvePath(replaceAll(url, L"%20", L" "), folderPart(path));
      if (!url.empty() && check_.probe.fileExists(other)) openJar(other);
    }
  }

  // The Java that a class needs, 0 for one that is no class file; nothing for a class that is not there.
  std::optional<int> find(const std::wstring& className) const {
    const std::wstring name = replaceAll(className, L".", L"/") + L".class";
    for (const Place& place : places_) {
      if (place.jar != nullptr) {
        const std::optional<Bytes> content = place.jar->read(toUtf8(name), kClassHeader);
        if (content) return javaOf(*content);
      } else if (const std::wstring path = joinPath(place.path, replaceAll(name, L"/", L"\\"));
                 check_.probe.fileExists(path)) {
        return javaOf(readFile(*check_.probe.find(path)));
      }
    }
    return std::nullopt;
  }

  void requireClass(std::wstring_view key, const std::wstring& className) {
    const std::optional<int> java = find(className);
    if (java) return needJava(*java, className);
    if (isOpen_) return;
    check_.add("main-class", ryn(), key, concat({L"there is no class ", className, L" on the class path"}));
  }

  void checkMainClass() {
    const std::wstring main = mainClass(ryn().properties());
    const OptionWords words = splitOptions(main);
    const bool isStarter = main == kStarter;
    if (words.words.size() > 1 && words.words[0] == L"-jar") {
      checkWorkingPath(check_, kMainKey, L"-jar", words.words[1]);
    } else if (!words.words.empty() && !words.words[0].starts_with(L'-')) {
      requireClass(kMainKey, words.words[0]);
    }
    const auto startKey = std::find_if(ryn().lines().begin(), ryn().lines().end(), [](const auto& line) {
      return line.isEntry && line.key.starts_with(L"ryn.start.");
    });
    if (isStarter) return checkStarted();
    if (startKey != ryn().lines().end() && !main.empty()) {
      check_.add(
          "start-keys", ryn(), startKey->key,
          concat({L"\"", startKey->key, L"\" is for the main class ", kStarter, L" of ryn-start.jar alone"}));
    }
  }

  // By the rules of ryn-start.jar.
  void checkStarted() {
    const auto given = std::count_if(std::begin(kStartKeys), std::end(kStartKeys),
                                     [this](std::wstring_view key) { return !ryn().get(key).empty(); });
    if (given != 1) {
      check_.add(
          "start-keys", ryn(), kMainKey,
          concat({kStarter, L" needs one of ryn.start.jar, ryn.start.class and ryn.start.module, and has ",
                  given == 0 ? L"none" : L"more"}));
      return;
    }
    if (const std::wstring name = ryn().get(L"ryn.start.class"); !name.empty())
      requireClass(L"ryn.start.class", name);
    if (const std::wstring name = ryn().get(L"ryn.start.jar"); !name.empty()) checkStartedJar(name);
  }

  void checkStartedJar(const std::wstring& name) {
    static constexpr std::wstring_view kKey = L"ryn.start.jar";
    const std::wstring path = FolderProbe::resolved(name);
    if (!FolderProbe::inside(path)) {
      check_.add("outside-folder", ryn(), kKey,
                 concat({L"\"", name, L"\" is outside the folder and may not be there on other machines"}));
      return;
    }
    if (!check_.probe.fileExists(path)) {
      check_.add("start-jar", ryn(), kKey, concat({L"there is no \"", name, L"\""}));
      return;
    }
    if (!opened_.contains(path)) {
      check_.add("start-jar-apart", ryn(), kKey,
                 concat({L"\"", name, L"\" is not on the class path and gets a class loader of its own"}));
      openJar(path);
    }
    const auto place = std::find_if(places_.begin(), places_.end(),
                                    [&path](const Place& each) { return each.path == path; });
    if (place == places_.end()) return;
    const auto attributes = manifestOf(*place->jar);
    const auto main = attributes.find("main-class");
    if (main == attributes.end()) {
      check_.add("start-jar", ryn(), kKey, concat({L"the manifest of \"", name, L"\" names no Main-Class"}));
    } else {
      requireClass(kKey, std::wstring(trim(fromUtf8(main->second))));
    }
    const std::wstring options = optionAdditional(ryn().properties());
    for (const auto& [attribute, option] : kManifestOptions) {
      if (!attributes.contains(attribute) || options.find(option) != options.npos) continue;
      check_.add("manifest-options", ryn(), kKey,
                 concat({L"the manifest of \"", name, L"\" has ", fromUtf8(attribute), L" (",
                         fromUtf8(attributes.at(attribute)), L"), which is for java -jar alone: write ",
                         option, L" into ryn.nl.java.option.additional"}));
    }
  }

  void needJava(int java, const std::wstring& who) {
    if (java <= needed_) return;
    needed_ = java;
    needsIt_ = who;
  }

  void checkFolders() {
    const std::wstring folder = userDir(ryn().properties());
    if (folder.empty()) {
      check_.add(
          "no-user-dir", ryn(), kUserDirKey,
          L"without ryn.user.dir=. the working folder, from which classes are loaded too, is the one of "
          L"whoever starts the program");
    } else if (const std::wstring path = FolderProbe::resolved(folder); !FolderProbe::inside(path)) {
      check_.add("outside-folder", ryn(), kUserDirKey,
                 concat({L"\"", folder, L"\" is outside the folder, and without it nothing starts"}));
    } else if (!check_.probe.folderExists(path)) {
      check_.add("user-dir", ryn(), kUserDirKey,
                 concat({L"there is no folder \"", folder, L"\": the VM does not start without it"}));
    }
    const std::wstring options = userOptionsFile(ryn().properties());
    if (!options.empty() && options.find(L'%') == options.npos &&
        FolderProbe::inside(FolderProbe::resolved(options))) {
      check_.add("user-options", ryn(), kUserOptionsKey,
                 concat({L"\"", options,
                         L"\" is in the application's folder, where users may not be able to write; "
                         L"%APPDATA% names one of theirs"}));
    }
  }

  // A jar whose every class is too new is of no use, whatever else is in it; one with some of them may well
  // be.
  int leastJavaOf(const ZipFile& jar) const {
    int least = INT_MAX;
    for (size_t i = 0; i < jar.entries().size() && least > 8; ++i) {
      if (!isClassOfProgram(jar.entries()[i].name)) continue;
      const std::optional<Bytes> content = jar.read(i, kClassHeader);
      if (content) least = std::min(least, javaOf(*content));
    }
    return least == INT_MAX ? 0 : least;
  }

  void checkAge() {
    for (const Place& place : places_) {
      if (place.jar != nullptr) needJava(leastJavaOf(*place.jar), fromUtf8(check_.nameOf(place.path)));
    }
    if (needed_ == 0) return;
    const std::wstring number = decimal(needed_);
    if (check_.ownJava != 0) {
      if (check_.ownJava < needed_) {
        addToClassPath("class-too-new", {needsIt_, L" needs Java ", number,
                                         L", and the one in the folder is Java ", decimal(check_.ownJava)});
      }
      return;
    }
    int oldest = INT_MAX;
    for (const auto& [least, greatest] : check_.javas) oldest = std::min(oldest, least);
    if (oldest >= needed_) return;
    check_.add("list-too-old", ryn(), kListKey,
               concat({needsIt_, L" needs Java ", number, L", and Java ", decimal(oldest),
                       L" is accepted: write ", number, L"+"}));
  }

  ApplicationCheck& check_;
  std::vector<Place> places_;
  std::set<std::wstring> opened_;
  /// Not all of the class path is known.
  bool isOpen_ = false;
  int needed_ = 0;
  std::wstring needsIt_;
};

}  // namespace

void checkStart(ApplicationCheck& check) {
  StartChecker(check).run();
}

}  // namespace ryn
