#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// An installer that runs with administrator rights must not start a VM that an ordinary user could
// have replaced: is the folder that holds the VM's executable open to people who are no administrators?

namespace ryn {

class SecurityApi;
struct AccessList;
struct TokenGroup;
struct TokenReading;

enum class FolderVerdict {
  kSafe = 0,
  /// Something needed for the check was missing or refused; callers go on as if the folder were safe.
  kNotChecked = 200,
  /// An account of ordinary users holds write or full rights.
  kUnsafe = 201,
};

/// True when the calling thread, or else the process, acts with the rights of the built-in
/// Administrators group. False also when that cannot be told.
[[nodiscard]] bool isCurrentUserAdministrator();

/// "Safe" and "unsafe" are remembered for the life of the process: one VM is looked at several times on its
/// way to the start, and an account of a domain is asked about over the network.
[[nodiscard]] FolderVerdict checkVmFolder(const std::wstring& folder);

/// True when the current user is an administrator and must not start a VM from `folder`.
[[nodiscard]] bool refusesVmFolder(const std::wstring& folder);

// What follows is the decision behind these functions.

/// What an attempt to read a token says of its user; nothing when there is no such token and another one
/// counts.
std::optional<bool> isAdministrator(const TokenReading& token);

/// The first Administrators group decides: present but deny-only (a filtered token) is no administrator.
bool holdsAdministrators(const std::vector<TokenGroup>& groups);

/// True for a member of "Users" that is not also one of "Administrators", in whichever order.
bool isRiskyMember(const std::vector<std::wstring>& localGroups);

/// True when the access mask holds all rights of "full control" or of "write" on files, or the generic bit
/// of either.
bool permitsWriting(uint32_t rights);

[[nodiscard]] bool isCurrentUserAdministrator(SecurityApi& api);
[[nodiscard]] FolderVerdict checkVmFolder(SecurityApi& api, const std::wstring& folder);
/// Needs SecurityLibrary::kAccounts bound.
[[nodiscard]] FolderVerdict judgeAccessList(SecurityApi& api, const AccessList& list);

}  // namespace ryn
