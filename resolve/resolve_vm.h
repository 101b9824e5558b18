#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "properties/property_file.h"
#include "provision/build_options.h"
#include "text/environment_map.h"
#include "vmsearch/vm_choice.h"
#include "vmsearch/vm_probe.h"

namespace ryn {

/// "Which VM?" for one application: everything that decides the answer, apart from the machine itself.
struct VmQuestion {
  const PropertyFile& properties;
  /// The entries of jvmspecs.properties; null for an application without the file.
  const PropertyFile* jvmspecs = nullptr;
  /// The folder of the launcher and its property file. What is relative counts from here.
  std::wstring applicationFolder;
  const EnvironmentMap& environment;
  /// The launcher has a console: VMs are judged by their console programs.
  bool console = false;
  /// Go on behind the VM that is chosen, so that the record shows all that the application could see. A
  /// launch does not.
  bool exhaustive = false;
};

/// Fetches a VM pack and returns the path of its java.exe; empty when that failed, and the user has been
/// told. `digestFailureText` is for a pack whose digest is wrong.
using PackFetcher = std::function<std::wstring(const VmPack& pack, std::wstring_view digestFailureText)>;

/// The chosen VM, if any, and the record of all that was seen, in the order of the sources: the VM that the
/// environment names; else the ordinary search, or the ways that the build options name. With a null
/// `fetchPack` nothing is fetched. The question and the probe are all that the answer depends on.
VmChoice resolveVm(const VmQuestion& question, const VmProbe& probe, const PackFetcher& fetchPack);

}  // namespace ryn
