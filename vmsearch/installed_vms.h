#pragma once

#include <optional>
#include <string>
#include <vector>

#include "vmsearch/vm_candidate.h"
#include "vmsearch/vm_probe.h"

namespace ryn {

/// What the search for installed VMs needs to know of its process.
struct SearchSystem {
  /// The value of PATH.
  std::wstring path;
  bool underWow64 = false;
  /// System folder of 32-bit programs; searched behind PATH when under WOW64.
  std::wstring wow64SystemFolder;

  /// What this process sees now.
  static SearchSystem current(std::wstring path);
};

/// The VMs that the registry and PATH know. The search runs once, on the first request, and its result
/// answers every later one.
class InstalledVms {
 public:
  /// `probe` must outlive the object.
  InstalledVms(SearchSystem system, const VmProbe& probe) : system_(std::move(system)), probe_(probe) {}

  /// Everything found, in the order of the sources: the registry first, unless `jvmHigh` is "0", which puts
  /// PATH first. Entries that are no candidates carry the outcome that says why. `singleArchitecture` is kept
  /// for the ranking. Later calls return the first result whatever their arguments.
  const std::vector<ConsideredVm>& find(bool singleArchitecture, const std::wstring& jvmHigh);

  /// What the first `find` was given; false before.
  bool singleArchitecture() const { return singleArchitecture_; }

 private:
  void searchRegistry();
  void searchRegistryView(REGSAM access, int bitnessClass);
  void searchPath();

  SearchSystem system_;
  const VmProbe& probe_;
  bool searched_ = false;
  bool singleArchitecture_ = false;
  std::vector<ConsideredVm> found_;
};

/// Marks as duplicates the candidates whose folder and executable an earlier one has, ignoring case.
void markDuplicates(std::vector<ConsideredVm>& vms);

/// The folders of a PATH text in their order. Quotes around a folder are dropped. Empty and relative ones are
/// left out: the launcher works in the application's folder, where they would mean something that whoever
/// wrote PATH did not mean, and a program found there could be anybody's.
std::vector<std::wstring> pathFolders(const std::wstring& path);

}  // namespace ryn
