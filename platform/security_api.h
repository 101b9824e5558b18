#pragma once

#include <windows.h>

#include <authz.h>
#include <lmaccess.h>
#include <lmapibuf.h>

#include "platform/bound_function.h"
#include "platform/system_library.h"
#include "platform/unique_handle.h"
#include "vmsearch/folder_security.h"

namespace ryn {

/// Finds a library by its file name; a null module when it cannot be had.
using LibraryLoader = UniqueModule (*)(const std::wstring& fileName);

/// advapi32.dll
struct AccountFunctions {
  UniqueModule library;
  RYN_FUNCTION(LookupAccountNameW) lookupAccountName;
  RYN_FUNCTION(LookupAccountSidW) lookupAccountSid;
  RYN_FUNCTION(AllocateAndInitializeSid) allocateSid;
  RYN_FUNCTION(FreeSid) freeSid;
  RYN_FUNCTION(EqualSid) equalSid;
  RYN_FUNCTION(OpenThreadToken) openThreadToken;
  RYN_FUNCTION(OpenProcessToken) openProcessToken;
  RYN_FUNCTION(GetTokenInformation) getTokenInformation;

  bool bind(LibraryLoader load);
};

/// netapi32.dll
struct LocalGroupFunctions {
  UniqueModule library;
  RYN_FUNCTION(NetUserGetLocalGroups) getLocalGroups;
  RYN_FUNCTION(NetApiBufferFree) freeBuffer;

  bool bind(LibraryLoader load);
};

/// authz.dll
struct AccessCheckFunctions {
  UniqueModule library;
  RYN_FUNCTION(AuthzInitializeResourceManager) createManager;
  RYN_FUNCTION(AuthzInitializeContextFromSid) createContext;
  RYN_FUNCTION(AuthzAccessCheck) accessCheck;
  RYN_FUNCTION(AuthzFreeContext) freeContext;
  RYN_FUNCTION(AuthzFreeResourceManager) freeManager;

  bool bind(LibraryLoader load);
};

/// The security functions of Windows. Lists that it hands out refer to it and must not outlive it.
class WindowsSecurity final : public SecuritySystem {
 public:
  /// The functions come from the libraries that `load` finds.
  explicit WindowsSecurity(LibraryLoader load = &loadSystemLibrary) : load_(load) {}

  bool bind(SecurityLibrary library) override;
  TokenReading readToken(TokenOwner owner) const override;
  std::unique_ptr<AccessList> readAccessList(const std::wstring& folder) const override;
  std::vector<std::wstring> localGroups(const std::wstring& accountName) const override;

  /// The access list of a security descriptor with owner and group. Null when the descriptor has none:
  /// it then admits everyone, but names no account to judge.
  std::unique_ptr<AccessList> accessListOf(UniqueLocalMemory descriptor) const;

 private:
  LibraryLoader load_;
  AccountFunctions accounts_;
  LocalGroupFunctions localGroups_;
  AccessCheckFunctions accessCheck_;
};

}  // namespace ryn
