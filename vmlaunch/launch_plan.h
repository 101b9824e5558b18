#pragma once

#include <string>
#include <vector>

#include "vmlaunch/launch_request.h"
#include "vmlaunch/vm_command_line.h"
#include "vmsearch/vm_choice.h"
#include "vmsearch/vm_probe.h"

namespace ryn {

/// Why a VM that was chosen is not started.
enum class LaunchRefusal {
  kNone,
  kUnsafeFolder,  ///< the folder security check refuses the folder of its program
  kLostPath,      ///< a path of the command line cannot be written in the ANSI code page, nor its short form
  kVmTooOld,      ///< the Microsoft VM's build is below the least that the properties ask for
};

/// What a launch is going to do; carrying it out needs nothing more than this.
struct LaunchPlan {
  /// Everything that was seen on the way to the choice.
  std::vector<ConsideredVm> considered;
  VmCandidate vm;
  /// Full path of the VM's program; not tested for existence when it is the last resort of its kind.
  std::wstring program;
  std::wstring commandLine;
  /// The options on it and who asked for them.
  std::vector<VmOption> options;
  /// What the VM's environment gets beside this process's own.
  EnvironmentMap variables;
  /// Lines of the temporary properties file with the facts of the launch; empty when nobody asks for them.
  std::wstring facts;
  LaunchRefusal refusal = LaunchRefusal::kNone;
  /// For kLostPath.
  std::wstring lostPath;
  /// Holds the working folder, and what the start needs beside the command line.
  LaunchRequest request;
};

/// The plan for the VM that `choice`, which has one, came to. The machine is asked for the VM's program and
/// for what could refuse it; nothing is started or written.
LaunchPlan planLaunch(const VmChoice& choice, const LaunchFacts& facts, const VmProbe& probe);

}  // namespace ryn
