#include "vmsearch/vm_names.h"

namespace ryn {

// No default below: the compiler then warns of an enumerator without a name.

std::wstring_view nameOf(VmKind kind) {
  switch (kind) {
    case VmKind::kJdk:
      return L"JDK";
    case VmKind::kJre:
      return L"JRE";
    case VmKind::kMsj:
      return L"MSJ";
  }
  return {};
}

std::wstring_view nameOf(VmSource source) {
  switch (source) {
    case VmSource::kEnvironment:
      return L"environment";
    case VmSource::kCurrentVm:
      return L"currentVm";
    case VmSource::kRegistry:
      return L"registry";
    case VmSource::kPath:
      return L"path";
    case VmSource::kDescription:
      return L"description";
    case VmSource::kShipped:
      return L"shipped";
    case VmSource::kPack:
      return L"pack";
  }
  return {};
}

std::wstring_view nameOf(VmOutcome outcome) {
  switch (outcome) {
    case VmOutcome::kNotReached:
      return L"notReached";
    case VmOutcome::kChosen:
      return L"chosen";
    case VmOutcome::kMissing:
      return L"missing";
    case VmOutcome::kHalfUnpacked:
      return L"halfUnpacked";
    case VmOutcome::kUnreadableKey:
      return L"unreadableKey";
    case VmOutcome::kNoUsableHome:
      return L"noUsableHome";
    case VmOutcome::kDuplicate:
      return L"duplicate";
    case VmOutcome::kNoMatchingToken:
      return L"noMatchingToken";
    case VmOutcome::kValidatorRejected:
      return L"validatorRejected";
    case VmOutcome::kValidatorTimedOut:
      return L"validatorTimedOut";
    case VmOutcome::kValidatorNotStarted:
      return L"validatorNotStarted";
    case VmOutcome::kOtherBitness:
      return L"otherBitness";
    case VmOutcome::kWrongBits:
      return L"wrongBits";
    case VmOutcome::kUnsafeFolder:
      return L"unsafeFolder";
    case VmOutcome::kNotFirst:
      return L"notFirst";
    case VmOutcome::kOutranked:
      return L"outranked";
    case VmOutcome::kNoDescription:
      return L"noDescription";
    case VmOutcome::kOtherSystem:
      return L"otherSystem";
    case VmOutcome::kNotFetched:
      return L"notFetched";
  }
  return {};
}

}  // namespace ryn
