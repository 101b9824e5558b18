#include "provision/vm_plan.h"

namespace ryn {
namespace {

using SearchOption = int BuildOptions::*;
using Pack = VmPack BuildOptions::*;

struct Row {
  std::wstring_view buildOption;
  SearchOption searchOption;
  int searchOptionValue;
  bool searches;
  bool shippedVm;
  /// Null for rows that fetch nothing.
  Pack pack;
  /// The two texts differ in one letter, and each stays with its option.
  std::wstring_view digestFailureText;
};

constexpr SearchOption kWithVm = &BuildOptions::withVmSearchOption;
constexpr SearchOption kWithoutVm = &BuildOptions::withoutVmSearchOption;

// What is in no row leads to no VM.
constexpr Row kRows[] = {
    {L"withvm", kWithVm, 20, true, true, nullptr, L""},
    {L"withvm", kWithVm, 21, false, true, nullptr, L""},
    {L"withoutvm", kWithoutVm, 10, true, false, nullptr, L""},
    {L"withoutvm", kWithoutVm, 11, true, false, &BuildOptions::notFoundPack,
     L"Warning!! MD5 checksum verification for downloaded JVM failed\nInstaller exiting..."},
    {L"withoutvm", kWithoutVm, 12, false, false, &BuildOptions::directPack,
     L"Warning!! MD5 checksum verification for downloaded JVM failed\nInstaller Exiting..."},
};

}  // namespace

VmPlan planVm(const BuildOptions& options) {
  for (const Row& row : kRows) {
    if (options.option != row.buildOption || options.*row.searchOption != row.searchOptionValue) continue;
    VmPlan plan;
    plan.shippedVm = row.shippedVm;
    plan.digestFailureText = row.digestFailureText;
    if (row.searches) plan.search = options.usesJvmspecs() ? VmSearch::kDescribed : VmSearch::kInstalled;
    if (row.pack != nullptr) plan.pack = &(options.*row.pack);
    return plan;
  }
  return {};
}

}  // namespace ryn
