#pragma once

#include <windows.h>

#include <authz.h>
#include <lmaccess.h>
#include <lmapibuf.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/bound_function.h"
#include "platform/system_library.h"
#include "platform/unique_handle.h"

namespace ryn {

/// One group of a token.
struct TokenGroup {
  bool isAdministrators = false;
  /// SE_GROUP_... bits.
  uint32_t attributes = 0;
};

/// An attempt to open a token for query and to list its groups.
struct TokenReading {
  bool opened = false;
  /// Windows error when the token could not be opened.
  uint32_t error = 0;
  /// Empty when they could not be read.
  std::vector<TokenGroup> groups;
};

/// The account behind an access list's entry.
struct Account {
  std::wstring domain;
  std::wstring name;
  /// A person's account, not a group, an alias or a well-known group.
  bool isUser = false;

  std::wstring fullName() const { return domain + L"\\" + name; }
};

/// The access list of one folder, as it was when it was read.
struct AccessList {
  /// With owner and group, which an access check asks for.
  UniqueLocalMemory descriptor;
  /// Inside `descriptor`; never null.
  ACL* entries;
};

/// The access list of a security descriptor. Nothing when the descriptor has none: it then admits everyone,
/// but names no account to judge.
[[nodiscard]] std::optional<AccessList> accessListOf(UniqueLocalMemory descriptor);

/// Nothing when the folder cannot be opened or has no access list that can be read.
[[nodiscard]] std::optional<AccessList> readAccessList(const std::wstring& folder);

/// Libraries that an old or cut-down Windows can lack.
enum class SecurityLibrary { kAccounts, kLocalGroups, kAccessCheck };

enum class TokenOwner { kThread, kProcess };

/// Finds a library by its file name; a null module when it cannot be had.
using LibraryLoader = UniqueModule (*)(const std::wstring& fileName);

/// What Windows knows of accounts and their rights. Nothing here throws.
class SecurityApi {
 public:
  /// The functions come from the libraries that `load` finds.
  explicit SecurityApi(LibraryLoader load = &loadSystemLibrary) : load_(load) {}

  /// False when the library or one of its functions is missing. The rest may be called only for a library
  /// that was bound. Cheap after the first success.
  [[nodiscard]] bool bind(SecurityLibrary library);

  /// Needs SecurityLibrary::kAccounts.
  TokenReading readToken(TokenOwner owner) const;

  /// The account of an entry, counted from 0; nothing when the system knows none. Needs
  /// SecurityLibrary::kAccounts.
  std::optional<Account> account(const AccessList& list, DWORD entry) const;

  /// The local groups of an account, also those it is in through other groups; empty when they cannot be
  /// had. Needs SecurityLibrary::kLocalGroups.
  std::vector<std::wstring> localGroups(const std::wstring& accountName) const;

  /// All rights (an access mask) that the account of that name ends up with under the list; nothing when they
  /// cannot be told. The groups of the account count when it is a user's and they can be had, else only the
  /// entries that name the account itself. Needs SecurityLibrary::kAccounts and kAccessCheck.
  std::optional<uint32_t> rightsOf(const std::wstring& accountName, const AccessList& list) const;

 private:
  LibraryLoader load_;

  UniqueModule advapi_;
  RYN_FUNCTION(LookupAccountNameW) lookupAccountName_;
  RYN_FUNCTION(LookupAccountSidW) lookupAccountSid_;
  RYN_FUNCTION(AllocateAndInitializeSid) allocateSid_;
  RYN_FUNCTION(FreeSid) freeSid_;
  RYN_FUNCTION(EqualSid) equalSid_;
  RYN_FUNCTION(OpenThreadToken) openThreadToken_;
  RYN_FUNCTION(OpenProcessToken) openProcessToken_;
  RYN_FUNCTION(GetTokenInformation) getTokenInformation_;

  UniqueModule netapi_;
  RYN_FUNCTION(NetUserGetLocalGroups) getLocalGroups_;
  RYN_FUNCTION(NetApiBufferFree) freeBuffer_;

  UniqueModule authz_;
  RYN_FUNCTION(AuthzInitializeResourceManager) createManager_;
  RYN_FUNCTION(AuthzInitializeContextFromSid) createContext_;
  RYN_FUNCTION(AuthzAccessCheck) accessCheck_;
  RYN_FUNCTION(AuthzFreeContext) freeContext_;
  RYN_FUNCTION(AuthzFreeResourceManager) freeManager_;
};

}  // namespace ryn
