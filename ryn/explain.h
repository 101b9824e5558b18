#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "launcher/command_line.h"
#include "properties/property_file.h"
#include "ryn/folder_probe.h"
#include "text/environment_map.h"
#include "text/little_endian.h"
#include "vmlaunch/launch_plan.h"
#include "vmsearch/vm_candidate.h"
#include "vmsearch/vm_probe.h"

namespace ryn {

/// An application's folder on this system.
struct Application {
  std::filesystem::path folder;
  FolderProbe here;
  /// Of the launcher and the property file, without extension.
  std::wstring name;
  PropertyFile properties;
  /// Below the folder, with "\"; empty for an application without jvmspecs.properties.
  std::wstring jvmspecsPath;
  PropertyFile jvmspecs;
  /// The bytes of the launcher; none when it is not there.
  Bytes launcher;

  /// By what propertyFileOf takes.
  explicit Application(const std::filesystem::path& given);
};

/// What a launch depends on beside the application and the machine.
struct Situation {
  /// Full path of the launcher, and the folder in which it is started.
  std::wstring programPath;
  std::wstring startFolder;
  EnvironmentMap environment;
  CommandLine commandLine;
  /// Of the launcher: "none", "valid", "invalid", or "unchecked" where the system cannot tell.
  std::string signature;
};

/// One line of the record, and what it takes to tell it.
struct SeenVm {
  ConsideredVm vm;
  /// 32 or 64, of the program that would be started; nothing when that is not known.
  std::optional<int> bits;
  /// Of one that the application does not search: it would do.
  bool isAccepted = false;

  /// A VM, not only a place where there should have been one.
  bool isVm() const { return !vm.candidate.folder.empty(); }
};

/// The launcher's choice for an application, and what a launch would do.
struct Explanation {
  std::wstring programPath;
  std::wstring propertiesPath;
  /// Empty without one.
  std::wstring jvmspecsPath;
  /// Of the launcher and of the program that was made of it; empty when they do not tell.
  std::wstring launcherVersion;
  std::wstring programVersion;
  bool hasLauncher = false;
  std::string signature;
  std::vector<std::wstring> tokens;
  uint64_t platform = 0;
  /// 32 or 64; nothing when either will do.
  std::optional<int> bits;
  bool takesHighest = true;
  /// The application has a validator, which its VMs were started with.
  bool asksValidator = false;
  std::vector<SeenVm> considered;
  /// What else the machine has; nothing when it was not looked for.
  std::optional<std::vector<SeenVm>> onMachine;
  /// Into `considered`.
  std::optional<size_t> chosen;
  /// With `chosen`.
  std::optional<LaunchPlan> plan;
  /// The command line of the plan, the program first.
  std::vector<std::wstring> arguments;
  /// Nothing when a VM runs, whose own code it will be, or when a pack is fetched first.
  std::optional<int> exitCode;
  /// The address of the pack that a launch would now fetch; empty for none.
  std::wstring packUrl;
  /// Sentences in UTF-8: about the launch; what helps on this machine; what the application should change.
  std::vector<std::string> warnings;
  std::vector<std::string> helpsNow;
  std::vector<std::string> forMaker;

  /// A launch would start a VM.
  bool isLaunched() const { return plan && plan->refusal == LaunchRefusal::kNone; }
};

/// With `all`, or when no VM is chosen, what else lies on the machine is told as well. Starts nothing but
/// what `machine` starts for a validator, and fetches nothing. Throws CommandError (kNegative) for an
/// application that is not complete.
Explanation explain(const Application& application, const Situation& situation, const VmProbe& machine,
                    bool all);

/// For people.
std::string explanationText(const Explanation& explanation, const Application& application);
/// As docs/ryn.md has it.
std::string explanationJson(const Explanation& explanation, const Application& application);

}  // namespace ryn
