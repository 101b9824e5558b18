#include "platform/security_api.h"

#include <aclapi.h>
#include <lmcons.h>
#include <lmerr.h>

#include <type_traits>

namespace ryn {
namespace {

/// Characters of the buffers for names of accounts and domains; a longer name counts as unknown.
constexpr DWORD kNameSize = 512;

/// Owns what a function bound at run time has to free.
template <typename Handle, typename Free>
using Owned = std::unique_ptr<std::remove_pointer_t<Handle>, Free>;

class DescriptorAccessList final : public AccessList {
 public:
  DescriptorAccessList(UniqueLocalMemory descriptor, ACL* list, const AccountFunctions& accounts,
                       const AccessCheckFunctions& accessCheck)
      : descriptor_(std::move(descriptor)), list_(list), accounts_(accounts), accessCheck_(accessCheck) {}

  size_t entryCount() const override { return list_->AceCount; }
  std::optional<Account> account(size_t entry) const override;
  std::optional<uint32_t> rightsOf(const std::wstring& accountName) const override;

 private:
  UniqueLocalMemory descriptor_;
  /// Inside `descriptor_`.
  ACL* list_;
  const AccountFunctions& accounts_;
  const AccessCheckFunctions& accessCheck_;
};

/// The account that an entry of the list is about. Null for the entries of directory objects, which
/// are laid out differently and do not occur on files.
PSID accountOf(ACL* list, size_t entry) {
  void* data = nullptr;
  if (!GetAce(list, static_cast<DWORD>(entry), &data)) return nullptr;
  const BYTE type = static_cast<const ACE_HEADER*>(data)->AceType;
  // These begin alike.
  const bool plain = type == ACCESS_ALLOWED_ACE_TYPE || type == ACCESS_DENIED_ACE_TYPE ||
                     type == ACCESS_ALLOWED_CALLBACK_ACE_TYPE || type == ACCESS_DENIED_CALLBACK_ACE_TYPE;
  return plain ? &static_cast<ACCESS_ALLOWED_ACE*>(data)->SidStart : nullptr;
}

std::optional<Account> DescriptorAccessList::account(size_t entry) const {
  const PSID sid = accountOf(list_, entry);
  wchar_t name[kNameSize];
  wchar_t domain[kNameSize];
  DWORD nameSize = kNameSize;
  DWORD domainSize = kNameSize;
  SID_NAME_USE use = SidTypeUnknown;
  if (sid == nullptr ||
      !accounts_.lookupAccountSid(nullptr, sid, name, &nameSize, domain, &domainSize, &use)) {
    return std::nullopt;
  }
  return Account{domain, name, use == SidTypeUser};
}

std::optional<uint32_t> DescriptorAccessList::rightsOf(const std::wstring& accountName) const {
  BYTE sid[SECURITY_MAX_SID_SIZE];
  DWORD sidSize = sizeof(sid);
  wchar_t domain[kNameSize];
  DWORD domainSize = kNameSize;
  SID_NAME_USE use = SidTypeUnknown;
  if (!accounts_.lookupAccountName(nullptr, accountName.c_str(), sid, &sidSize, domain, &domainSize, &use)) {
    return std::nullopt;
  }

  AUTHZ_RESOURCE_MANAGER_HANDLE newManager = nullptr;
  if (!accessCheck_.createManager(AUTHZ_RM_FLAG_NO_AUDIT, nullptr, nullptr, nullptr, nullptr, &newManager)) {
    return std::nullopt;
  }
  const Owned<AUTHZ_RESOURCE_MANAGER_HANDLE, decltype(&AuthzFreeResourceManager)> manager(
      newManager, accessCheck_.freeManager);

  AUTHZ_CLIENT_CONTEXT_HANDLE newContext = nullptr;
  if (!accessCheck_.createContext(0, sid, manager.get(), nullptr, LUID{}, nullptr, &newContext)) {
    return std::nullopt;
  }
  // Freed before the manager it was made from.
  const Owned<AUTHZ_CLIENT_CONTEXT_HANDLE, decltype(&AuthzFreeContext)> context(newContext,
                                                                                accessCheck_.freeContext);

  AUTHZ_ACCESS_REQUEST request = {};
  request.DesiredAccess = MAXIMUM_ALLOWED;
  ACCESS_MASK granted = 0;
  DWORD error = ERROR_SUCCESS;
  AUTHZ_ACCESS_REPLY reply = {};
  reply.ResultListLength = 1;
  reply.GrantedAccessMask = &granted;
  reply.Error = &error;
  if (!accessCheck_.accessCheck(0, context.get(), &request, nullptr, descriptor_.get(), nullptr, 0, &reply,
                                nullptr)) {
    return std::nullopt;
  }
  return granted;
}

}  // namespace

bool AccountFunctions::bind(LibraryLoader load) {
  if (!library) library = load(L"advapi32.dll");
  return bindAll(library.get(), lookupAccountName, lookupAccountSid, allocateSid, freeSid, equalSid,
                 openThreadToken, openProcessToken, getTokenInformation);
}

bool LocalGroupFunctions::bind(LibraryLoader load) {
  if (!library) library = load(L"netapi32.dll");
  return bindAll(library.get(), getLocalGroups, freeBuffer);
}

bool AccessCheckFunctions::bind(LibraryLoader load) {
  if (!library) library = load(L"authz.dll");
  return bindAll(library.get(), createManager, createContext, accessCheck, freeContext, freeManager);
}

bool WindowsSecurity::bind(SecurityLibrary library) {
  switch (library) {
    case SecurityLibrary::kAccounts:
      return accounts_.bind(load_);
    case SecurityLibrary::kLocalGroups:
      return localGroups_.bind(load_);
    case SecurityLibrary::kAccessCheck:
      return accessCheck_.bind(load_);
  }
  return false;
}

TokenReading WindowsSecurity::readToken(TokenOwner owner) const {
  TokenReading reading;
  UniqueHandle token;
  const BOOL opened = owner == TokenOwner::kThread
                          ? accounts_.openThreadToken(GetCurrentThread(), TOKEN_QUERY, FALSE, token.receive())
                          : accounts_.openProcessToken(GetCurrentProcess(), TOKEN_QUERY, token.receive());
  if (!opened) {
    reading.error = GetLastError();
    return reading;
  }
  reading.opened = true;

  DWORD size = 0;
  if (accounts_.getTokenInformation(token.get(), TokenGroups, nullptr, 0, &size) ||
      GetLastError() != ERROR_INSUFFICIENT_BUFFER) {
    return reading;
  }
  std::vector<BYTE> data(size);
  if (!accounts_.getTokenInformation(token.get(), TokenGroups, data.data(), size, &size)) return reading;

  SID_IDENTIFIER_AUTHORITY ntAuthority = {SECURITY_NT_AUTHORITY};
  PSID newSid = nullptr;
  if (!accounts_.allocateSid(&ntAuthority, 2, SECURITY_BUILTIN_DOMAIN_RID, DOMAIN_ALIAS_RID_ADMINS, 0, 0, 0,
                             0, 0, 0, &newSid)) {
    return reading;
  }
  const Owned<PSID, decltype(&FreeSid)> administrators(newSid, accounts_.freeSid);

  const auto* groups = reinterpret_cast<const TOKEN_GROUPS*>(data.data());
  for (DWORD i = 0; i < groups->GroupCount; ++i) {
    const SID_AND_ATTRIBUTES& group = groups->Groups[i];
    reading.groups.push_back(
        {accounts_.equalSid(administrators.get(), group.Sid) != FALSE, group.Attributes});
  }
  return reading;
}

std::unique_ptr<AccessList> WindowsSecurity::readAccessList(const std::wstring& folder) const {
  // Whoever cannot read the folder cannot judge it. Folders open only with the backup flag.
  const UniqueFile handle(CreateFileW(folder.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                      FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  if (!handle) return nullptr;
  UniqueLocalMemory descriptor;
  const DWORD error = GetNamedSecurityInfoW(
      const_cast<wchar_t*>(folder.c_str()), SE_FILE_OBJECT,
      OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION, nullptr, nullptr,
      nullptr, nullptr, descriptor.receive());
  return error == ERROR_SUCCESS ? accessListOf(std::move(descriptor)) : nullptr;
}

std::unique_ptr<AccessList> WindowsSecurity::accessListOf(UniqueLocalMemory descriptor) const {
  BOOL present = FALSE;
  BOOL defaulted = FALSE;
  ACL* list = nullptr;
  if (!GetSecurityDescriptorDacl(descriptor.get(), &present, &list, &defaulted) || !present ||
      list == nullptr) {
    return nullptr;
  }
  return std::make_unique<DescriptorAccessList>(std::move(descriptor), list, accounts_, accessCheck_);
}

std::vector<std::wstring> WindowsSecurity::localGroups(const std::wstring& accountName) const {
  BYTE* newBuffer = nullptr;
  DWORD count = 0;
  DWORD total = 0;
  const NET_API_STATUS status = localGroups_.getLocalGroups(
      nullptr, accountName.c_str(), 0, LG_INCLUDE_INDIRECT, &newBuffer, MAX_PREFERRED_LENGTH, &count, &total);
  const Owned<BYTE*, decltype(&NetApiBufferFree)> buffer(newBuffer, localGroups_.freeBuffer);
  if (status != NERR_Success || !buffer) return {};
  const auto* groups = reinterpret_cast<const LOCALGROUP_USERS_INFO_0*>(buffer.get());
  std::vector<std::wstring> names;
  for (DWORD i = 0; i < count; ++i) names.emplace_back(groups[i].lgrui0_name);
  return names;
}

}  // namespace ryn
