#include <algorithm>
#include <climits>

#include "launcher/command_line.h"
#include "properties/keys.h"
#include "ryn/application_check.h"
#include "text/path_text.h"
#include "text/text.h"
#include "vmlaunch/launch_request.h"

namespace ryn {
namespace {

constexpr wchar_t kAdditionalKey[] = L"ryn.nl.java.option.additional";
constexpr wchar_t kHeapMaxKey[] = L"ryn.nl.java.option.java.heap.size.max";
constexpr wchar_t kHeapInitialKey[] = L"ryn.nl.java.option.java.heap.size.initial";
constexpr wchar_t kNoAsyncGcKey[] = L"ryn.nl.java.option.garbage.collection.background.thread";
/// HotSpot starts with no less, by its own words.
constexpr uint64_t kLeastHeap = uint64_t{2} << 20;
constexpr uint64_t kLeastInitialHeap = uint64_t{1} << 20;
/// About what the address space of a 32-bit program on Windows has in one piece.
constexpr uint64_t kLargestHeapOf32Bits = uint64_t{1400} << 20;
constexpr int kFirstModular = 9;

struct RefusedOption {
  /// How it begins.
  std::wstring_view option;
  /// Generations that end with an error at it, both included.
  int first = 0;
  int last = INT_MAX;
};

// Tried with Java 11, 17, 21 and 25; the first of these that refuses it, or the release that dropped it where
// its notes say so. What begins with "--" is unknown to Java 8.
constexpr RefusedOption kRefused[] = {
    {L"--", 0, 8},
    {L"--enable-native-access", 9, 16},
    {L"--finalization=", 9, 17},
    {L"--sun-misc-unsafe-memory-access", 9, 22},
    {L"-Xlog:", 0, 8},
    {L"-XX:+UseZGC", 0, 11},
    {L"-XX:+ZGenerational", 0, 17},
    {L"-XX:+UseCompactObjectHeaders", 0, 21},
    {L"-Djava.security.manager=allow", 9, 11},
    {L"-Xnoasyncgc", 11},
    {L"-Xincgc", 11},
    {L"-Xconcgc", 17},
    {L"-Xfuture", 25},
    {L"-Xrunhprof", 11},
    {L"-agentlib:hprof", 11},
    {L"-d32", 11},
    {L"-d64", 11},
    {L"-Xbootclasspath/p:", 9},
    {L"-Djava.ext.dirs=", 9},
    {L"-Djava.endorsed.dirs=", 9},
    {L"-Djava.security.manager", 24},
    {L"-XX:MaxPermSize=", 17},
    {L"-XX:PermSize=", 17},
    {L"-XX:+UseConcMarkSweepGC", 17},
    {L"-XX:+CMSClassUnloadingEnabled", 17},
    {L"-XX:+CMSIncrementalMode", 11},
    {L"-XX:+UseParNewGC", 11},
    {L"-XX:+UseSplitVerifier", 11},
    {L"-XX:+PrintGCDateStamps", 11},
    {L"-XX:+PrintGCTimeStamps", 11},
    {L"-XX:+UseGCLogFileRotation", 11},
    {L"-XX:+AggressiveOpts", 17},
    {L"-XX:+UnlockCommercialFeatures", 11},
    {L"-XX:+TraceClassLoading", 17},
    {L"-XX:+UseBiasedLocking", 21},
};

/// Options whose value is the next word.
constexpr std::wstring_view kWithValue[] = {L"--add-exports",
                                            L"--add-modules",
                                            L"--add-opens",
                                            L"--add-reads",
                                            L"--class-path",
                                            L"--enable-native-access",
                                            L"--limit-modules",
                                            L"--module-path",
                                            L"--patch-module",
                                            L"--source",
                                            L"--upgrade-module-path",
                                            L"-classpath",
                                            L"-cp",
                                            L"-p"};

/// What a path stands behind; a list of paths has ";" between them.
constexpr std::wstring_view kPathOptions[] = {L"-javaagent:",
                                              L"-agentpath:",
                                              L"-splash:",
                                              L"-Djava.library.path=",
                                              L"-Xbootclasspath/a:",
                                              L"--module-path=",
                                              L"--upgrade-module-path=",
                                              L"-XX:Flags=",
                                              L"-XX:SharedArchiveFile=",
                                              L"-XX:VMOptionsFile=",
                                              L"@"};

class OptionsChecker {
 public:
  explicit OptionsChecker(ApplicationCheck& check) : check_(check) {}

  void run() {
    checkHeap();
    if (parseFlag(optionGcBackgroundThread(properties()))) checkRefused(kNoAsyncGcKey, L"-Xnoasyncgc");
    checkAdditional();
  }

 private:
  const PropertyFile& properties() const { return check_.ryn.properties(); }

  void add(RuleRef rule, std::initializer_list<std::wstring_view> text) {
    check_.add(rule, check_.ryn, kAdditionalKey, concat(text));
  }

  void checkHeap() {
    const uint64_t most = optionHeapMax(properties());
    const uint64_t initial = optionHeapInitial(properties());
    const std::wstring text = check_.ryn.get(kHeapMaxKey);
    // Others have been told of already.
    if (text.find_first_not_of(L"0123456789kKmM") != text.npos) return;
    if (most != 0 && most < kLeastHeap) {
      check_.add("heap", check_.ryn, kHeapMaxKey,
                 concat({L"\"", text, L"\" is ", decimal(static_cast<long long>(most)),
                         L" bytes, and no VM starts with less than 2m: write m behind the number"}));
    } else if (initial != 0 && initial < kLeastInitialHeap) {
      check_.add("heap", check_.ryn, kHeapInitialKey,
                 L"is less than the 1m that VMs start with: write m behind the number");
    } else if (most != 0 && initial > most) {
      check_.add("heap", check_.ryn, kHeapInitialKey, L"is more than the largest size, which no VM accepts");
    }
    if (most > kLargestHeapOf32Bits && vmBits(properties()) != L"64" && !check_.isOwn64Bit) {
      check_.add("heap-bits", check_.ryn, kHeapMaxKey,
                 concat({L"32-bit VMs, which may be found, cannot have \"", text,
                         L"\": write ryn.win32.vm.bits=64"}));
    }
  }

  void checkRefused(std::wstring_view key, const std::wstring& option) {
    for (const RefusedOption& refused : kRefused) {
      if (!option.starts_with(refused.option)) continue;
      int java = INT_MAX;
      for (const auto& [least, greatest] : check_.javas) {
        const int first = std::max(least, refused.first);
        if (first <= std::min(greatest, refused.last)) java = std::min(java, first);
      }
      if (java == INT_MAX) continue;
      check_.add("refused-option", check_.ryn, key,
                 concat({L"Java ", decimal(java), L", which is accepted, does not start with ", option}));
      return;
    }
  }

  void checkAdditional() {
    const OptionWords options = splitOptions(optionAdditional(properties()));
    if (options.isOpen) {
      add("open-quote",
          {L"a double quote without its partner takes the class path and the main class along"});
      return;
    }
    for (size_t i = 0; i < options.words.size(); ++i) {
      const std::wstring& word = options.words[i];
      const bool hasValue =
          std::find(std::begin(kWithValue), std::end(kWithValue), word) != std::end(kWithValue);
      if (word == L"-jar") {
        add("stray-word",
            {L"-jar belongs into ryn.nl.java.launcher.main.class: here the class path becomes an "
             L"argument of the program"});
      } else if (!word.starts_with(L'-') && !word.starts_with(L'@')) {
        add("stray-word", {L"Java takes \"", word,
                           L"\" for the main class; quote an option with blanks: "
                           L"\"-Dname=two words\""});
        return;
      }
      checkOption(word, hasValue && i + 1 < options.words.size() ? options.words[i + 1] : L"");
      if (hasValue) ++i;
    }
    checkScale();
  }

  void checkOption(const std::wstring& option, const std::wstring& value) {
    checkRefused(kAdditionalKey, option);
    const std::wstring name = option.substr(0, option.find(L'='));
    if (name == L"-cp" || name == L"-classpath" || name == L"--class-path") {
      add("class-path-option",
          {L"\"", name, L"\" has no effect: the launcher's own class path stands behind it"});
    }
    if (option == L"--module-path" || option == L"-p" || option == L"--upgrade-module-path")
      checkWorkingPath(check_, kAdditionalKey, option, value);
    for (const std::wstring_view prefix : kPathOptions) {
      if (!option.starts_with(prefix)) continue;
      std::wstring paths = option.substr(prefix.size());
      if (prefix == L"-javaagent:" || prefix == L"-agentpath:") paths = paths.substr(0, paths.find(L'='));
      checkWorkingPath(check_, kAdditionalKey, prefix, paths);
    }
  }

  void checkScale() {
    const bool isSaid =
        optionAdditional(properties()).find(L"sun.java2d.uiScale.enabled") != std::wstring::npos;
    const bool isModular = std::any_of(check_.javas.begin(), check_.javas.end(),
                                       [](const auto& range) { return range.second >= kFirstModular; });
    if (isSaid || !isModular) return;
    add("ui-scale", {L"windows are small or blurred on screens of high density unless "
                     L"-Dsun.java2d.uiScale.enabled=true is among the additional options"});
  }

  ApplicationCheck& check_;
};

}  // namespace

void checkOptions(ApplicationCheck& check) {
  OptionsChecker(check).run();
}

OptionWords splitOptions(std::wstring_view text) {
  // A word of its own, unless a double quote takes it in.
  static constexpr wchar_t kEnd[] = L"\x1";
  OptionWords result{.words = splitAsWindows(concat({L"java ", text, L" ", kEnd}))};
  result.words.erase(result.words.begin());
  result.isOpen = result.words.back() != kEnd;
  if (!result.isOpen) result.words.pop_back();
  return result;
}

void checkWorkingPath(ApplicationCheck& check, std::wstring_view key, std::wstring_view option,
                      const std::wstring& paths) {
  const std::wstring folder = userDir(check.ryn.properties());
  for (const std::wstring& path : split(paths, L';')) {
    if (path.empty() || path.find(L'%') != path.npos) continue;
    if (folder.empty() && !isAbsolutePath(path)) {
      check.add("relative-option", check.ryn, key,
                concat({option, L" \"", path,
                        L"\" counts from the folder in which somebody starts the program: set "
                        L"ryn.user.dir=."}));
      continue;
    }
    const std::wstring whole = resolvePath(path, FolderProbe::resolved(folder.empty() ? L"." : folder));
    if (!FolderProbe::inside(whole)) {
      check.add(
          "outside-folder", check.ryn, key,
          concat({option, L" \"", path, L"\" is outside the folder and may not be there on other machines"}));
    } else if (!check.probe.exists(whole)) {
      check.add("option-file", check.ryn, key,
                concat({option, L" \"", path, L"\": there is nothing of that name"}));
    }
  }
}

}  // namespace ryn
