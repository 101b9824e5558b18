#pragma once

#include <string>

#include "provision/build_options.h"

namespace ryn {

/// The three ways to a VM that a build can ask for.
class VmSources {
 public:
  /// Searches this machine, led by the jvmspec entries or not (BuildOptions::usesJvmspecs). True when a VM
  /// was found; the source keeps it.
  virtual bool search() = 0;

  /// java.exe of the VM that ships with the application; empty when it has none.
  virtual std::wstring shippedVm() = 0;

  /// java.exe of a pack that was fetched and unpacked; empty when that failed, and the user has been told.
  /// `digestFailureText` is for a pack whose digest is wrong.
  virtual std::wstring fetchPack(const PackSource& pack, const std::wstring& digestFailureText) = 0;

 protected:
  ~VmSources() = default;
};

/// Neither member set: the build options lead to no VM.
struct VmDecision {
  bool foundBySearch = false;
  /// java.exe to use.
  std::wstring executable;
};

/// Goes through the sources that the build options name, in their order, until one has a VM.
VmDecision decideVm(const BuildOptions& options, VmSources& sources);

}  // namespace ryn
