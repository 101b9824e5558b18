#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "provision/build_options.h"
#include "provision/vm_plan.h"
#include "ryn/check_rules.h"
#include "ryn/findings.h"
#include "ryn/folder_probe.h"
#include "ryn/property_lines.h"
#include "text/environment_map.h"

namespace ryn {

inline constexpr wchar_t kListKey[] = L"ryn.nl.valid.vm.list";

/// The launcher's view of an application's folder, and what was found in it.
struct ApplicationCheck {
  FolderProbe probe;
  /// The folder as the user named it, with "/" at its end or empty; findings begin with it.
  std::string prefix;
  PropertyLines ryn;
  std::optional<PropertyLines> jvmspecs;
  BuildOptions options;
  VmPlan plan;
  /// Nothing of the user's is known.
  EnvironmentMap environment;
  /// Generations of Java from a least to a greatest one, both included, that a launch may take.
  std::vector<std::pair<int, int>> javas;
  /// The Java in the folder, when no other is taken (but for what a user names); else 0.
  int ownJava = 0;
  /// It is one, with 64 bits.
  bool isOwn64Bit = false;
  Findings findings;

  void add(RuleRef rule, const std::string& file, size_t line, std::wstring_view text);
  /// At the key's line.
  void add(RuleRef rule, const PropertyLines& file, std::wstring_view key, std::wstring_view text) {
    add(rule, file.file(), file.lineOf(key), text);
  }
  /// Inside the folder, as findings name files.
  std::string nameOf(const std::wstring& fullPath) const;
};

struct OptionWords {
  std::vector<std::wstring> words;
  /// A double quote has no partner.
  bool isOpen = false;
};

/// The arguments that a VM makes of a part of its command line.
OptionWords splitOptions(std::wstring_view text);

/// A path that counts from the program's working folder, in the value of `key`: one that leads to nothing, or
/// depends on where the program is started. What may be a list has ";" between its paths.
void checkWorkingPath(ApplicationCheck& check, std::wstring_view key, std::wstring_view option,
                      const std::wstring& paths);

/// What the text of a property file and the values of known keys are; `isRyn`: the .ryn file, not
/// jvmspecs.properties.
void checkProperties(ApplicationCheck& check, const PropertyLines& file, bool isRyn);
/// Build options, descriptions, the valid-VM list, the application's own VM. Sets the Javas.
void checkVms(ApplicationCheck& check);
void checkDescriptions(ApplicationCheck& check);
/// Class path, main class, folders.
void checkStart(ApplicationCheck& check);
/// Options of the VM.
void checkOptions(ApplicationCheck& check);

}  // namespace ryn
