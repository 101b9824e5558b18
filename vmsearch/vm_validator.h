#pragma once

#include <windows.h>

#include <map>
#include <string>

#include "vmsearch/vm_candidate.h"

namespace ryn {

/// Answers tokens of the valid-VM list that are no keywords, by asking the candidate itself: it runs the
/// application's own validator class from jvmspecs\Verify.jar with the token as its argument, and exit code 0
/// accepts. Whatever goes wrong on the way is a no. A candidate is started once for each token; the answer is
/// remembered for the life of the object.
class VmValidator {
 public:
  static constexpr DWORD kLimitMs = 5000;

  /// `applicationFolder` holds the folder jvmspecs. A VM that takes longer than `limitMs` from its start to
  /// its end is ended.
  explicit VmValidator(const std::wstring& applicationFolder, DWORD limitMs = kLimitMs);

  /// Fits TokenValidator. Without the jar nothing is started; the Microsoft VM, which is too old for the
  /// jar's class, is never asked.
  bool accepts(const VmCandidate& candidate, const std::wstring& token);

 private:
  std::wstring jar_;
  DWORD limitMs_;
  // By executable and token.
  std::map<std::wstring, bool> answers_;
};

}  // namespace ryn
