#include <algorithm>
#include <climits>

#include "properties/keys.h"
#include "provision/application_paths.h"
#include "provision/url_scheme.h"
#include "resolve/resolve_vm.h"
#include "ryn/application_check.h"
#include "text/fold_case.h"
#include "text/path_text.h"
#include "text/text.h"
#include "vmsearch/version_range.h"
#include "vmsearch/vm_program.h"

namespace ryn {
namespace {

constexpr wchar_t kPlatformKey[] = L"ryn.nl.win32.java.launcher.platform";
constexpr wchar_t kBitsKey[] = L"ryn.win32.vm.bits";
constexpr wchar_t kOptionKey[] = L"build.option";
constexpr wchar_t kValidatorJar[] = L"jvmspecs\\Verify.jar";
/// Older ones are met on no machine of today.
constexpr int kOldestJava = 8;

VmCandidate someJava(int generation, VmKind kind = VmKind::kJre) {
  VmCandidate vm;
  vm.version = VmVersion(static_cast<int16_t>(generation), 0, 0);
  vm.kind = kind;
  return vm;
}

class VmsChecker {
 public:
  explicit VmsChecker(ApplicationCheck& check)
      : check_(check),
        hasValidator_(check.probe.fileExists(FolderProbe::resolved(kValidatorJar))),
        searches_(!check.jvmspecs || check.plan.search != VmSearch::kNone) {}

  void run() {
    checkPlaces();
    checkList();
    checkOwnVm();
    checkPlatform();
    if (!check_.jvmspecs) return;
    checkBuildOptions();
    if (check_.plan.pack != nullptr) checkPack();
  }

 private:
  const PropertyFile& properties() const { return check_.ryn.properties(); }

  void checkPlaces() {
    bool isRead = true;
    for (const std::wstring& path : jvmspecsPaths(FolderProbe::kFolder)) {
      if (!check_.probe.fileExists(path)) continue;
      if (!isRead) {
        check_.add("jvmspecs-place", check_.nameOf(path), 1,
                   concat({L"is not read: the launcher takes ", fromUtf8(check_.jvmspecs->file())}));
      }
      isRead = false;
    }
    const std::wstring beside = FolderProbe::resolved(L"jvmspecs.properties");
    if (check_.probe.fileExists(beside)) {
      check_.add("jvmspecs-place", check_.nameOf(beside), 1,
                 L"is not read here: its place is the folder \"jvmspecs\"");
    }
  }

  void checkList() {
    for (const std::wstring& token : validVmTokens(validVmList(properties()))) {
      const std::optional<VersionRange> range = parseVersionRange(token);
      if (range && range->greatest < range->least) {
        addToList("valid-vm", {L"\"", token, L"\" accepts nothing: the first version is the greater one"});
      } else if (range && hasValidator_) {
        addToList("validator-cost", {L"\"", token,
                                     L"\" starts every VM that the search finds, because there "
                                     L"is a jvmspecs/Verify.jar; without it nothing is started"});
      }
      if (range) listed_.emplace_back(range->least.generation, range->greatest.generation);
      if (range) continue;
      if (const std::optional<bool> acceptsOld = matchesToken(someJava(kOldestJava), token)) {
        if (*acceptsOld || matchesToken(someJava(kOldestJava, VmKind::kJdk), token) == true)
          listed_.emplace_back(kOldestJava, INT_MAX);
      } else if (!hasValidator_ || token.find(L'"') != token.npos) {
        addToList("valid-vm",
                  {L"\"", token, L"\" accepts nothing",
                   token.find_first_of(L",;|\t") == token.npos ? L"" : L": tokens have blanks between them"});
      }
    }
  }

  void addToList(RuleRef rule, std::initializer_list<std::wstring_view> text) {
    check_.add(rule, check_.ryn, kListKey, concat(text));
  }

  // By the launcher's own choice, on a machine that has nothing else.
  void checkOwnVm() {
    const VmQuestion question{.properties = properties(),
                              .jvmspecs = check_.jvmspecs ? &check_.jvmspecs->properties() : nullptr,
                              .applicationFolder = FolderProbe::kFolder,
                              .environment = check_.environment};
    const VmChoice choice = resolveVm(question, check_.probe, nullptr);
    for (const ConsideredVm& vm : choice.considered) {
      if (vm.source == VmSource::kCurrentVm) checkCurrentVm(vm);
      if (vm.source == VmSource::kShipped) checkShippedVm(vm);
    }
    checkUnreadCurrentVm();
    if (searches_) check_.javas = listed_;
    if (!choice.chosen) return;
    const int generation = generationOf(*choice.chosen);
    isFirst_ = !searches_ || (choice.considered.front().source == VmSource::kCurrentVm &&
                              choice.considered.front().outcome == VmOutcome::kChosen);
    if (isFirst_) {
      check_.ownJava = generation;
      check_.isOwn64Bit = check_.probe.imageBitness(choice.chosen->executable) == ImageBitness::k64;
      check_.javas.clear();
    }
    if (generation != 0) check_.javas.emplace_back(generation, generation);
  }

  void checkCurrentVm(const ConsideredVm& vm) {
    const auto add = [&](RuleRef rule, std::wstring_view text) {
      check_.add(rule, check_.ryn, keys::kCurrentVm, text);
    };
    switch (vm.outcome) {
      case VmOutcome::kMissing:
        if (!FolderProbe::inside(vm.where)) {
          add("outside-folder", concat({L"\"", currentVm(properties()),
                                        L"\" is outside the folder and may not be there on other machines"}));
        } else if (check_.probe.folderExists(vm.where)) {
          add("current-vm",
              concat({L"\"", currentVm(properties()), L"\" is a folder: name the java.exe in it"}));
        } else if (check_.plan.pack == nullptr || !isShippedPlace(vm.where)) {
          add("current-vm", concat({L"there is no \"", currentVm(properties()), L"\""}));
        }
        return;
      case VmOutcome::kHalfUnpacked:
        add("half-unpacked", L"a file ryn.unpacking lies in its folder, and so it is not used");
        return;
      case VmOutcome::kNoMatchingToken:
        add("runtime-refused", concat({L"the list \"", validVmList(properties()), L"\" has no token for it, ",
                                       described(vm.candidate)}));
        return;
      default:
        checkProgram(vm, check_.ryn, keys::kCurrentVm);
    }
  }

  void checkShippedVm(const ConsideredVm& vm) {
    if (vm.outcome == VmOutcome::kMissing) {
      check_.add("no-shipped-vm", *check_.jvmspecs, kOptionKey,
                 L"there is no Windows/resource/jre/bin/java.exe, nor one at another of its places");
    } else if (vm.outcome == VmOutcome::kHalfUnpacked) {
      check_.add("half-unpacked", *check_.jvmspecs, kOptionKey,
                 L"a file ryn.unpacking lies in the folder of the application's VM, and so it is not used");
    } else {
      checkProgram(vm, *check_.jvmspecs, kOptionKey);
    }
  }

  void checkProgram(const ConsideredVm& vm, const PropertyLines& file, std::wstring_view key) {
    for (const bool console : {false, true}) {
      const std::wstring program = vmProgram(vm.candidate, console, check_.probe);
      if (!check_.probe.fileExists(program)) {
        check_.add("runtime-program", file, key,
                   concat({L"there is no ", fileName(program), L" beside ", fileName(vm.candidate.executable),
                           L", which ", console ? L"a console" : L"a launch without a console", L" starts"}));
        continue;
      }
      const ImageBitness bits = check_.probe.imageBitness(program);
      const std::wstring wanted = vmBits(properties());
      if (bits == ImageBitness::kUnknown) {
        check_.add("runtime-image", file, key,
                   concat({fileName(program), L" is no program for x86 or x86-64 Windows"}));
        return;
      }
      if (vm.outcome == VmOutcome::kWrongBits) {
        check_.add("runtime-bits", file, key,
                   concat({fileName(program), L" has ", bits == ImageBitness::k64 ? L"64" : L"32",
                           L" bits, and ", kBitsKey, L" asks for ", wanted}));
        return;
      }
    }
  }

  std::wstring described(const VmCandidate& vm) const {
    const int generation = generationOf(vm);
    if (generation == 0) return L"a Java that does not tell its version";
    const bool isKnown = vm.version != VmVersion();
    return concat({L"Java ", decimal(generation),
                   isKnown ? L"" : L", whose java.exe does not tell its version, which is what counts"});
  }

  // The runtime's own word; programs without a version resource have no other.
  int generationOf(const VmCandidate& vm) const {
    PropertyFile release;
    release.parse(check_.probe.readText(joinPath(vm.folder, L"release")).value_or(L""));
    const std::wstring version = replaceAll(release.get(L"JAVA_VERSION"), L"\"", L"");
    return version.empty() ? vm.version.generation() : parseVmVersion(version).generation();
  }

  static bool isShippedPlace(const std::wstring& path) {
    const std::vector<std::wstring> places = shippedVmPaths(FolderProbe::kFolder);
    return std::any_of(places.begin(), places.end(),
                       [&path](const std::wstring& place) { return equalIgnoringCase(place, path); });
  }

  void checkUnreadCurrentVm() {
    const std::wstring current = currentVm(properties());
    const bool isRead = !check_.jvmspecs || check_.plan.search == VmSearch::kInstalled;
    if (current.empty() || isRead || isShippedPlace(FolderProbe::resolved(current))) return;
    check_.add("current-vm", check_.ryn, keys::kCurrentVm,
               concat({L"is not read with the build options in ", fromUtf8(check_.jvmspecs->file())}));
  }

  void checkPlatform() {
    if (!searches_ || isFirst_) return;
    VmRules rules;
    rules.validVmList = L"ALL";
    rules.platform = launcherPlatform(properties());
    // What a 64-bit launcher finds is of class 0.
    if (chooseAmong({ConsideredVm()}, rules).chosen) return;
    check_.add("platform", check_.ryn, kPlatformKey,
               check_.ryn.has(kPlatformKey)
                   ? L"no search finds a VM with this number: write 2"
                   : L"ryn.nl.win32.java.launcher.platform is missing, and no search finds a VM: write 2");
  }

  void checkBuildOptions() {
    const VmPlan& plan = check_.plan;
    if (plan.search == VmSearch::kNone && !plan.shippedVm && plan.pack == nullptr) {
      check_.add("build-options", *check_.jvmspecs, kOptionKey,
                 concat({L"build.option \"", check_.options.option, L"\" with the search options ",
                         decimal(check_.options.withVmSearchOption), L" and ",
                         decimal(check_.options.withoutVmSearchOption),
                         L" leads to no VM: it is withvm (20, 21) or withoutvm (10, 11, 12)"}));
    }
    checkDescriptions(check_);
  }

  void checkPack() {
    const VmPack& pack = *check_.plan.pack;
    const bool isDirect = &pack == &check_.options.directPack;
    const std::wstring url =
        isDirect ? L"build.without.vm.direct.download.url" : L"build.without.vm.not.found.download.url";
    const std::wstring checksum =
        (isDirect ? L"build.without.vm.dont.search.download.url" : url) + L".md5Checksum";
    const PropertyLines& file = *check_.jvmspecs;
    if (!namesPack(pack.url)) {
      check_.add("pack-url", file, url,
                 concat({L"\"", pack.url, L"\" does not end in .vm, in small letters"}));
    } else if (urlScheme(pack.url) == UrlScheme::kOther) {
      check_.add("pack-url", file, url,
                 concat({L"\"", pack.url, L"\" does not begin with https, http or ftp, in small letters"}));
    } else if (!pack.url.starts_with(L"https:")) {
      check_.add("pack-unsafe", file, url, L"whoever is on the way can change what is fetched: use https");
    }
    if (!pack.verify) {
      check_.add("no-digest", file, url, L"a damaged pack is unpacked as far as it goes: give it a digest");
    } else if (pack.digest.size() != 32 ||
               pack.digest.find_first_not_of(L"0123456789abcdef") != pack.digest.npos) {
      check_.add("pack-digest", file, checksum + L".value",
                 concat({L"\"", pack.digest, L"\" is the digest of no pack: 32 digits, letters small"}));
    }
    if (isDirect) {
      check_.add("fetch-every-start", file, L"build.without.vm.search.option",
                 L"option 12 fetches the pack at every start; option 11 can fetch it once");
    } else if (check_.plan.search == VmSearch::kDescribed) {
      check_.add(
          "fetch-every-start", file, url,
          L"where the descriptions lead to no VM, every start fetches the pack: name its place in one, "
          L"Windows/resource/jre, as a path hint");
    } else if (!isShippedPlace(FolderProbe::resolved(currentVm(properties())))) {
      check_.add("fetch-every-start", file, url,
                 L"where the search finds no VM, every start fetches the pack: write "
                 L"ryn.nl.current.vm=Windows/resource/jre/bin/java.exe into the .ryn file");
    }
    const bool hasFolder =
        std::any_of(std::begin(kWindowsFolders), std::end(kWindowsFolders), [this](std::wstring_view folder) {
          return check_.probe.folderExists(concat({FolderProbe::kFolder, folder, L"\\jvmspecs"}));
        });
    if (!hasFolder) {
      check_.add("pack-folders", file, url,
                 L"the download fails without a folder Windows/jvmspecs, be it an empty one");
    }
  }

  ApplicationCheck& check_;
  const bool hasValidator_;
  const bool searches_;
  std::vector<std::pair<int, int>> listed_;
  /// The application's own VM is taken before anything is searched.
  bool isFirst_ = false;
};

}  // namespace

void checkVms(ApplicationCheck& check) {
  VmsChecker(check).run();
}

}  // namespace ryn
