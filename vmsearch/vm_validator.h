#pragma once

#include <windows.h>

#include <map>
#include <string>

#include "vmsearch/vm_probe.h"

namespace ryn {

/// Asks VMs about tokens of the valid-VM list that are no keywords, by running the application's own
/// validator class with the token as its argument; exit code 0 accepts. A VM is started once for each token;
/// the answer is remembered for the life of the object.
class VmValidator {
 public:
  static constexpr DWORD kLimitMs = 5000;

  /// A VM that takes longer than `limitMs` from its start to its end is ended.
  explicit VmValidator(DWORD limitMs = kLimitMs) : limitMs_(limitMs) {}

  /// `token` holds no double quote.
  ValidatorAnswer ask(const std::wstring& executable, const std::wstring& jar, const std::wstring& token);

 private:
  DWORD limitMs_;
  // By executable and token.
  std::map<std::wstring, ValidatorAnswer> answers_;
};

}  // namespace ryn
