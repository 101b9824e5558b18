#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

// An installer that runs with administrator rights must not start a VM that an ordinary user could
// have replaced: is the folder that holds the VM's executable open to people who are no administrators?

namespace ryn {

enum class FolderVerdict {
  kSafe = 0,
  /// Something needed for the check was missing or refused; callers go on as if the folder were safe.
  kNotChecked = 200,
  /// An account of ordinary users holds write or full rights.
  kUnsafe = 201,
};

/// True when the calling thread, or else the process, acts with the rights of the built-in
/// Administrators group. False also when that cannot be told.
bool isCurrentUserAdministrator();

FolderVerdict checkVmFolder(const std::wstring& folder);

/// True when the current user is an administrator and must not start a VM from `folder`.
bool refusesVmFolder(const std::wstring& folder);

// What follows is the decision behind these functions and what it asks the system.

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
class AccessList {
 public:
  virtual ~AccessList() = default;

  virtual size_t entryCount() const = 0;

  /// Nothing when the system knows no account for the entry. Needs SecurityLibrary::kAccounts.
  virtual std::optional<Account> account(size_t entry) const = 0;

  /// All rights (an access mask) that the account of that name ends up with under this list; nothing
  /// when they cannot be told. Needs SecurityLibrary::kAccessCheck.
  virtual std::optional<uint32_t> rightsOf(const std::wstring& accountName) const = 0;
};

/// Libraries that an old or cut-down Windows can lack.
enum class SecurityLibrary { kAccounts, kLocalGroups, kAccessCheck };

enum class TokenOwner { kThread, kProcess };

/// What the check asks of the system; nothing here throws.
class SecuritySystem {
 public:
  virtual ~SecuritySystem() = default;

  /// False when the library or one of its functions is missing. Cheap after the first success.
  virtual bool bind(SecurityLibrary library) = 0;

  /// Needs SecurityLibrary::kAccounts.
  virtual TokenReading readToken(TokenOwner owner) const = 0;

  /// Null when the folder cannot be opened or has no access list that can be read.
  virtual std::unique_ptr<AccessList> readAccessList(const std::wstring& folder) const = 0;

  /// The local groups of an account, also those it is in through other groups; empty when they
  /// cannot be had. Needs SecurityLibrary::kLocalGroups.
  virtual std::vector<std::wstring> localGroups(const std::wstring& accountName) const = 0;
};

/// The first Administrators group decides: present but deny-only (a filtered token) is no administrator.
bool holdsAdministrators(const std::vector<TokenGroup>& groups);

/// True for a member of "Users" that is not also one of "Administrators", in whichever order.
bool isRiskyMember(const std::vector<std::wstring>& localGroups);

/// True when the access mask holds all rights of "full control" or of "write" on files, or the generic bit
/// of either.
bool permitsWriting(uint32_t rights);

bool isCurrentUserAdministrator(SecuritySystem& system);
FolderVerdict checkVmFolder(SecuritySystem& system, const std::wstring& folder);
/// Needs SecurityLibrary::kAccounts bound.
FolderVerdict judgeAccessList(SecuritySystem& system, const AccessList& list);

}  // namespace ryn
