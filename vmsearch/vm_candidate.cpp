#include "vmsearch/vm_candidate.h"

namespace ryn {

std::wstring_view kindName(VmKind kind) {
  switch (kind) {
    case VmKind::kJdk:
      return L"JDK";
    case VmKind::kMsj:
      return L"MSJ";
    case VmKind::kJre:
      break;
  }
  return L"JRE";
}

VmDialect dialectOf(const VmCandidate& candidate) {
  if (candidate.kind == VmKind::kMsj) return VmDialect::kMicrosoft;
  return candidate.version.generation() <= 1 ? VmDialect::kClassic : VmDialect::kModern;
}

}  // namespace ryn
