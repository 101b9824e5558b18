#pragma once

#include <windows.h>

#include <authz.h>
#include <lmaccess.h>
#include <lmapibuf.h>

#include "platform/system_library.h"
#include "platform/unique_handle.h"
#include "vmsearch/folder_security.h"

namespace ryn {

/// Finds a library by its file name; a null module when it cannot be had.
using LibraryLoader = UniqueModule (*)(const std::wstring& fileName);

/// advapi32.dll
struct AccountFunctions {
  UniqueModule library;
  decltype(&LookupAccountNameW) lookupAccountName = nullptr;
  decltype(&LookupAccountSidW) lookupAccountSid = nullptr;
  decltype(&AllocateAndInitializeSid) allocateSid = nullptr;
  decltype(&FreeSid) freeSid = nullptr;
  decltype(&EqualSid) equalSid = nullptr;
  decltype(&OpenThreadToken) openThreadToken = nullptr;
  decltype(&OpenProcessToken) openProcessToken = nullptr;
  decltype(&GetTokenInformation) getTokenInformation = nullptr;

  bool bind(LibraryLoader load);
};

/// netapi32.dll
struct LocalGroupFunctions {
  UniqueModule library;
  decltype(&NetUserGetLocalGroups) getLocalGroups = nullptr;
  decltype(&NetApiBufferFree) freeBuffer = nullptr;

  bool bind(LibraryLoader load);
};

/// authz.dll
struct AccessCheckFunctions {
  UniqueModule library;
  decltype(&AuthzInitializeResourceManager) createManager = nullptr;
  decltype(&AuthzInitializeContextFromSid) createContext = nullptr;
  decltype(&AuthzAccessCheck) accessCheck = nullptr;
  decltype(&AuthzFreeContext) freeContext = nullptr;
  decltype(&AuthzFreeResourceManager) freeManager = nullptr;

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
