#include "vmsearch/folder_security.h"

#include <map>

#include "platform/security_api.h"

namespace ryn {
namespace {

// Exact names: the check knows the built-in groups by what an English Windows calls them.
constexpr wchar_t kUsers[] = L"Users";
constexpr wchar_t kAdministrators[] = L"Administrators";

/// Kept for the life of the process, so that the libraries are bound once.
SecurityApi& systemApi() {
  static SecurityApi api;
  return api;
}

}  // namespace

bool holdsAdministrators(const std::vector<TokenGroup>& groups) {
  for (const TokenGroup& group : groups) {
    if (group.isAdministrators) return (group.attributes & SE_GROUP_USE_FOR_DENY_ONLY) == 0;
  }
  return false;
}

std::optional<bool> isAdministrator(const TokenReading& token) {
  if (token.opened) return holdsAdministrators(token.groups);
  if (token.error == ERROR_NO_TOKEN) return std::nullopt;
  // A Windows without tokens has no accounts to tell apart: everyone may do everything.
  return token.error == ERROR_CALL_NOT_IMPLEMENTED;
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

bool isCurrentUserAdministrator(SecurityApi& api) {
  if (!api.bind(SecurityLibrary::kAccounts)) return false;
  const std::optional<bool> answer = isAdministrator(api.readToken(TokenOwner::kThread));
  return answer ? *answer : isAdministrator(api.readToken(TokenOwner::kProcess)).value_or(false);
}

FolderVerdict judgeAccessList(SecurityApi& api, const AccessList& list) {
  for (DWORD entry = 0; entry < list.entries->AceCount; ++entry) {
    const std::optional<Account> account = api.account(list, entry);
    if (!account) continue;
    bool risky = account->name == kUsers;
    if (account->isUser) {
      if (!api.bind(SecurityLibrary::kLocalGroups)) return FolderVerdict::kNotChecked;
      risky = isRiskyMember(api.localGroups(account->fullName())) || risky;
    }
    if (!risky) continue;
    if (!api.bind(SecurityLibrary::kAccessCheck)) return FolderVerdict::kNotChecked;
    // The entry alone does not tell: others of the list may take away or add to what it grants.
    const std::optional<uint32_t> rights = api.rightsOf(account->fullName(), list);
    if (rights && permitsWriting(*rights)) return FolderVerdict::kUnsafe;
  }
  return FolderVerdict::kSafe;
}

FolderVerdict checkVmFolder(SecurityApi& api, const std::wstring& folder) {
  if (!api.bind(SecurityLibrary::kAccounts)) return FolderVerdict::kNotChecked;
  const std::optional<AccessList> list = readAccessList(folder);
  return list ? judgeAccessList(api, *list) : FolderVerdict::kNotChecked;
}

bool isCurrentUserAdministrator() {
  return isCurrentUserAdministrator(systemApi());
}

FolderVerdict checkVmFolder(const std::wstring& folder) {
  // Whether unsafe. By the text as it comes: there are folders whose names differ in letter case only.
  static std::map<std::wstring, bool> known;
  if (const auto found = known.find(folder); found != known.end()) {
    return found->second ? FolderVerdict::kUnsafe : FolderVerdict::kSafe;
  }
  const FolderVerdict verdict = checkVmFolder(systemApi(), folder);
  // A folder that could not be opened may be one that is still to be made, or that somebody holds open.
  if (verdict != FolderVerdict::kNotChecked) known.emplace(folder, verdict == FolderVerdict::kUnsafe);
  return verdict;
}

bool refusesVmFolder(const std::wstring& folder) {
  return isCurrentUserAdministrator() && checkVmFolder(folder) == FolderVerdict::kUnsafe;
}

}  // namespace ryn
