#include "provision/pack_decision.h"

#include <string_view>

namespace ryn {
namespace {

struct Row {
  std::wstring_view buildOption;
  int BuildOptions::*searchOption;
  int searchOptionValue;
  bool searches;
  bool usesShippedVm;
  /// Null for rows that fetch nothing.
  PackSource BuildOptions::*pack;
  /// The two texts differ in one letter, and each stays with its option.
  const wchar_t* digestFailureText;
};

constexpr int BuildOptions::*kWithVm = &BuildOptions::withVmSearchOption;
constexpr int BuildOptions::*kWithoutVm = &BuildOptions::withoutVmSearchOption;

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

VmDecision decideVm(const BuildOptions& options, VmSources& sources) {
  for (const Row& row : kRows) {
    if (options.option != row.buildOption || options.*row.searchOption != row.searchOptionValue) continue;
    if (row.searches && sources.search()) return {.foundBySearch = true, .executable = {}};
    if (row.usesShippedVm) return {.executable = sources.shippedVm()};
    if (row.pack != nullptr)
      return {.executable = sources.fetchPack(options.*row.pack, row.digestFailureText)};
    break;
  }
  return {};
}

}  // namespace ryn
