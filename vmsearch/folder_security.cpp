#include "vmsearch/folder_security.h"

#include <windows.h>

#include "platform/security_api.h"

namespace ryn {
namespace {

// Exact names: the check knows the built-in groups by what an English Windows calls them.
constexpr wchar_t kUsers[] = L"Users";
constexpr wchar_t kAdministrators[] = L"Administrators";

/// Kept for the life of the process, so that the libraries are bound once.
WindowsSecurity& windowsSecurity() {
  static WindowsSecurity security;
  return security;
}

}  // namespace

bool holdsAdministrators(const std::vector<TokenGroup>& groups) {
  for (const TokenGroup& group : groups) {
    if (group.isAdministrators) return (group.attributes & SE_GROUP_USE_FOR_DENY_ONLY) == 0;
  }
  return false;
}

bool isRiskyMember(const std::vector<std::wstring>& localGroups) {
  bool risky = false;
  for (const std::wstring& group : localGroups) {
    if (group == kAdministrators) return false;
    if (group == kUsers) risky = true;
  }
  return risky;
}

bool permitsWriting(uint32_t rights) {
  // Full control of a file includes all of its write rights.
  return (rights & FILE_GENERIC_WRITE) == FILE_GENERIC_WRITE || (rights & (GENERIC_ALL | GENERIC_WRITE)) != 0;
}

bool isCurrentUserAdministrator(SecuritySystem& system) {
  if (!system.bind(SecurityLibrary::kAccounts)) return false;
  TokenReading token = system.readToken(TokenOwner::kThread);
  if (!token.opened && token.error == ERROR_NO_TOKEN) token = system.readToken(TokenOwner::kProcess);
  // A Windows without tokens has no accounts to tell apart: everyone may do everything.
  if (!token.opened) return token.error == ERROR_CALL_NOT_IMPLEMENTED;
  return holdsAdministrators(token.groups);
}

FolderVerdict judgeAccessList(SecuritySystem& system, const AccessList& list) {
  for (size_t entry = 0; entry < list.entryCount(); ++entry) {
    const std::optional<Account> account = list.account(entry);
    if (!account) continue;
    bool risky = account->name == kUsers;
    if (account->isUser) {
      if (!system.bind(SecurityLibrary::kLocalGroups)) return FolderVerdict::kNotChecked;
      risky = isRiskyMember(system.localGroups(account->fullName())) || risky;
    }
    if (!risky) continue;
    if (!system.bind(SecurityLibrary::kAccessCheck)) return FolderVerdict::kNotChecked;
    // The entry alone does not tell: others of the list may take away or add to what it grants.
    const std::optional<uint32_t> rights = list.rightsOf(account->fullName());
    if (rights && permitsWriting(*rights)) return FolderVerdict::kUnsafe;
  }
  return FolderVerdict::kSafe;
}

FolderVerdict checkVmFolder(SecuritySystem& system, const std::wstring& folder) {
  if (!system.bind(SecurityLibrary::kAccounts)) return FolderVerdict::kNotChecked;
  const std::unique_ptr<AccessList> list = system.readAccessList(folder);
  return list ? judgeAccessList(system, *list) : FolderVerdict::kNotChecked;
}

bool isCurrentUserAdministrator() {
  return isCurrentUserAdministrator(windowsSecurity());
}

FolderVerdict checkVmFolder(const std::wstring& folder) {
  return checkVmFolder(windowsSecurity(), folder);
}

bool refusesVmFolder(const std::wstring& folder) {
  return isCurrentUserAdministrator() && checkVmFolder(folder) == FolderVerdict::kUnsafe;
}

}  // namespace ryn
