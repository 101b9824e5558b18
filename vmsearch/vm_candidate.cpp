#include "vmsearch/vm_candidate.h"

namespace ryn {

VmDialect dialectOf(const VmCandidate& candidate) {
  if (candidate.kind == VmKind::kMsj) return VmDialect::kMicrosoft;
  return candidate.version.generation() <= 1 ? VmDialect::kClassic : VmDialect::kModern;
}

ConsideredVm emptyPlace(VmSource source, std::wstring where, VmOutcome outcome) {
  ConsideredVm place;
  place.source = source;
  place.where = std::move(where);
  place.outcome = outcome;
  return place;
}

}  // namespace ryn
