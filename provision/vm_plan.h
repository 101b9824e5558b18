#pragma once

#include <string>
#include <string_view>

#include "provision/build_options.h"

namespace ryn {

enum class VmSearch {
  kNone,
  kInstalled,  ///< the registry and PATH
  kDescribed,  ///< the places that the jvmspec entries describe
};

/// The ways to a VM that a build asks for, to be gone in the order of the members until one leads to a VM.
/// All unset: the build options lead to none.
struct VmPlan {
  VmSearch search = VmSearch::kNone;
  /// The VM that ships with the application.
  bool shippedVm = false;
  /// The pack to fetch; null for none.
  const VmPack* pack = nullptr;
  /// What the user reads when the pack's digest is wrong.
  std::wstring_view digestFailureText;
};

/// `options` must outlive the plan.
VmPlan planVm(const BuildOptions& options);

}  // namespace ryn
