#include "platform/security_api.h"

#include <aclapi.h>
#include <lmcons.h>
#include <lmerr.h>

#include <memory>
#include <type_traits>

namespace ryn {
namespace {

/// Characters of the buffers for names of accounts and domains; a longer name counts as unknown.
constexpr DWORD kNameSize = 512;

/// Owns what a function bound at run time has to free.
template <typename Handle, typename Free>
using Owned = std::unique_ptr<std::remove_pointer_t<Handle>, Free>;

/// The account that an entry of the list is about. Null for the entries of directory objects, which
/// are laid out differently and do not occur on files.
PSID accountOf(ACL* list, DWORD entry) {
  void* data = nullptr;
  if (!GetAce(list, entry, &data)) return nullptr;
  const BYTE type = static_cast<const ACE_HEADER*>(data)->AceType;
  // These begin alike.
  const bool plain = type == ACCESS_ALLOWED_ACE_TYPE || type == ACCESS_DENIED_ACE_TYPE ||
                     type == ACCESS_ALLOWED_CALLBACK_ACE_TYPE || type == ACCESS_DENIED_CALLBACK_ACE_TYPE;
  return plain ? &static_cast<ACCESS_ALLOWED_ACE*>(data)->SidStart : nullptr;
}

}  // namespace

std::optional<AccessList> accessListOf(UniqueLocalMemory descriptor) {
  BOOL present = FALSE;
  BOOL defaulted = FALSE;
  ACL* entries = nullptr;
  if (!GetSecurityDescriptorDacl(descriptor.get(), &present, &entries, &defaulted) || !present ||
      entries == nullptr) {
    return std::nullopt;
  }
  return AccessList{std::move(descriptor), entries};
}

std::optional<AccessList> readAccessList(const std::wstring& folder) {
  // Whoever cannot read the folder cannot judge it. Folders open only with the backup flag.
  const UniqueFile handle(CreateFileW(folder.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                      FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  if (!handle) return std::nullopt;
  UniqueLocalMemory descriptor;
  const DWORD error = GetNamedSecurityInfoW(
      const_cast<wchar_t*>(folder.c_str()), SE_FILE_OBJECT,
      OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION, nullptr, nullptr,
      nullptr, nullptr, descriptor.receive());
  if (error != ERROR_SUCCESS) return std::nullopt;
  return accessListOf(std::move(descriptor));
}

bool SecurityApi::bind(SecurityLibrary library) {
  switch (library) {
    case SecurityLibrary::kAccounts:
      if (!advapi_) advapi_ = load_(L"advapi32.dll");
      return bindAll(advapi_.get(), lookupAccountName_, lookupAccountSid_, allocateSid_, freeSid_, equalSid_,
                     openThreadToken_, openProcessToken_, getTokenInformation_);
    case SecurityLibrary::kLocalGroups:
      if (!netapi_) netapi_ = load_(L"netapi32.dll");
      return bindAll(netapi_.get(), getLocalGroups_, freeBuffer_);
    case SecurityLibrary::kAccessCheck:
      if (!authz_) authz_ = load_(L"authz.dll");
      return bindAll(authz_.get(), createManager_, createContext_, accessCheck_, freeContext_, freeManager_);
  }
  return false;
}

TokenReading SecurityApi::readToken(TokenOwner owner) const {
  TokenReading reading;
  UniqueHandle token;
  const BOOL opened = owner == TokenOwner::kThread
                          ? openThreadToken_(GetCurrentThread(), TOKEN_QUERY, FALSE, token.receive())
                          : openProcessToken_(GetCurrentProcess(), TOKEN_QUERY, token.receive());
  if (!opened) {
    reading.error = GetLastError();
    return reading;
  }
  reading.opened = true;

  DWORD size = 0;
  if (getTokenInformation_(token.get(), TokenGroups, nullptr, 0, &size) ||
      GetLastError() != ERROR_INSUFFICIENT_BUFFER) {
    return reading;
  }
  std::vector<BYTE> data(size);
  if (!getTokenInformation_(token.get(), TokenGroups, data.data(), size, &size)) return reading;

  SID_IDENTIFIER_AUTHORITY ntAuthority = {SECURITY_NT_AUTHORITY};
  PSID newSid = nullptr;
  if (!allocateSid_(&ntAuthority, 2, SECURITY_BUILTIN_DOMAIN_RID, DOMAIN_ALIAS_RID_ADMINS, 0, 0, 0, 0, 0, 0,
                    &newSid)) {
    return reading;
  }
  const Owned<PSID, decltype(&FreeSid)> administrators(newSid, freeSid_);

  const auto* groups = reinterpret_cast<const TOKEN_GROUPS*>(data.data());
  for (DWORD i = 0; i < groups->GroupCount; ++i) {
    const SID_AND_ATTRIBUTES& group = groups->Groups[i];
    reading.groups.push_back({equalSid_(administrators.get(), group.Sid) != FALSE, group.Attributes});
  }
  return reading;
}

std::optional<Account> SecurityApi::account(const AccessList& list, DWORD entry) const {
  const PSID sid = accountOf(list.entries, entry);
  wchar_t name[kNameSize];
  wchar_t domain[kNameSize];
  DWORD nameSize = kNameSize;
  DWORD domainSize = kNameSize;
  SID_NAME_USE use = SidTypeUnknown;
  if (sid == nullptr || !lookupAccountSid_(nullptr, sid, name, &nameSize, domain, &domainSize, &use)) {
    return std::nullopt;
  }
  return Account{domain, name, use == SidTypeUser};
}

std::vector<std::wstring> SecurityApi::localGroups(const std::wstring& accountName) const {
  BYTE* newBuffer = nullptr;
  DWORD count = 0;
  DWORD total = 0;
  const NET_API_STATUS status = getLocalGroups_(nullptr, accountName.c_str(), 0, LG_INCLUDE_INDIRECT,
                                                &newBuffer, MAX_PREFERRED_LENGTH, &count, &total);
  const Owned<BYTE*, decltype(&NetApiBufferFree)> buffer(newBuffer, freeBuffer_);
  if (status != NERR_Success || !buffer) return {};
  const auto* groups = reinterpret_cast<const LOCALGROUP_USERS_INFO_0*>(buffer.get());
  std::vector<std::wstring> names;
  for (DWORD i = 0; i < count; ++i) names.emplace_back(groups[i].lgrui0_name);
  return names;
}

std::optional<uint32_t> SecurityApi::rightsOf(const std::wstring& accountName, const AccessList& list) const {
  BYTE sid[SECURITY_MAX_SID_SIZE];
  DWORD sidSize = sizeof(sid);
  wchar_t domain[kNameSize];
  DWORD domainSize = kNameSize;
  SID_NAME_USE use = SidTypeUnknown;
  if (!lookupAccountName_(nullptr, accountName.c_str(), sid, &sidSize, domain, &domainSize, &use)) {
    return std::nullopt;
  }

  AUTHZ_RESOURCE_MANAGER_HANDLE newManager = nullptr;
  if (!createManager_(AUTHZ_RM_FLAG_NO_AUDIT, nullptr, nullptr, nullptr, nullptr, &newManager)) {
    return std::nullopt;
  }
  const Owned<AUTHZ_RESOURCE_MANAGER_HANDLE, decltype(&AuthzFreeResourceManager)> manager(newManager,
                                                                                          freeManager_);

  AUTHZ_CLIENT_CONTEXT_HANDLE newContext = nullptr;
  const auto createContext = [&](DWORD flags) {
    return createContext_(flags, sid, manager.get(), nullptr, LUID{}, nullptr, &newContext) != FALSE;
  };
  // Windows works the groups of users and computers out and refuses any other account. Who may not read a
  // user's groups, say in a domain, is refused, too; then what the account holds by itself has to do.
  if (!(use == SidTypeUser && createContext(0)) && !createContext(AUTHZ_SKIP_TOKEN_GROUPS)) {
    return std::nullopt;
  }
  // Freed before the manager it was made from.
  const Owned<AUTHZ_CLIENT_CONTEXT_HANDLE, decltype(&AuthzFreeContext)> context(newContext, freeContext_);

  AUTHZ_ACCESS_REQUEST request = {};
  request.DesiredAccess = MAXIMUM_ALLOWED;
  ACCESS_MASK granted = 0;
  DWORD error = ERROR_SUCCESS;
  AUTHZ_ACCESS_REPLY reply = {};
  reply.ResultListLength = 1;
  reply.GrantedAccessMask = &granted;
  reply.Error = &error;
  if (!accessCheck_(0, context.get(), &request, nullptr, list.descriptor.get(), nullptr, 0, &reply,
                    nullptr)) {
    return std::nullopt;
  }
  return granted;
}

}  // namespace ryn
