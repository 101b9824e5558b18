#include "vmsearch/folder_security.h"

#include <windows.h>

#include <gtest/gtest.h>
#include <sddl.h>

#include "platform/paths.h"
#include "platform/security_api.h"
#include "platform/text.h"
#include "tests/unit/support/process_state.h"
#include "tests/unit/support/temp_folder.h"

extern "C" int fakeLiveObjects();

namespace ryn {
namespace {

using test::ScopedVariable;

TEST(FolderSecurityTest, Rules) {
  constexpr uint32_t kEnabled = SE_GROUP_MANDATORY | SE_GROUP_ENABLED;
  const std::pair<TokenReading, std::optional<bool>> tokens[] = {
      {{true, 0, {}}, false},
      {{true, 0, {{false, kEnabled}, {true, kEnabled}}}, true},
      {{true, 0, {{false, SE_GROUP_USE_FOR_DENY_ONLY}, {true, kEnabled}}}, true},
      // The first Administrators group decides.
      {{true, 0, {{true, kEnabled | SE_GROUP_USE_FOR_DENY_ONLY}, {true, kEnabled}}}, false},
      {{false, ERROR_NO_TOKEN, {}}, std::nullopt},
      {{false, ERROR_CALL_NOT_IMPLEMENTED, {}}, true},
      {{false, ERROR_ACCESS_DENIED, {}}, false}};
  for (const auto& row : tokens) EXPECT_EQ(isAdministrator(row.first), row.second) << &row - tokens;

  const std::pair<std::vector<std::wstring>, bool> members[] = {
      {{}, false},
      {{L"Guests", L"Users", L"Backup Operators"}, true},
      {{L"Users", L"Administrators"}, false},
      {{L"Administrators", L"Users"}, false},
      {{L"Users", L"administrators"}, true},
      {{L"users", L"Remote Desktop Users"}, false}};
  for (const auto& row : members) EXPECT_EQ(isRiskyMember(row.first), row.second) << &row - members;

  // Read and execute; write; write without creating files, without folders; modify; full; the generic bits.
  const std::pair<uint32_t, bool> rights[] = {
      {0x1200A9, false}, {0x120116, true},   {0x120114, false},  {0x120112, false},   {0x1301BF, true},
      {0x1F01FF, true},  {0x10000000, true}, {0x40000000, true}, {0xA0000000, false},
  };
  for (const auto& [mask, writing] : rights) EXPECT_EQ(permitsWriting(mask), writing) << std::hex << mask;
}

// The real functions of the system; local groups and rights come from the stand-in libraries, because the
// system that runs the tests need not have ordinary users.

const wchar_t* missingLibrary = nullptr;

UniqueModule loadFakes(const std::wstring& fileName) {
  if (missingLibrary != nullptr && fileName == missingLibrary) return UniqueModule();
  if (fileName == L"advapi32.dll") return loadSystemLibrary(fileName);
  return loadLibraryFrom(folderPart(modulePath()) + L"\\fixtures", L"fake_" + fileName);
}

UniqueLocalMemory fromSddl(const std::wstring& text) {
  UniqueLocalMemory descriptor;
  ConvertStringSecurityDescriptorToSecurityDescriptorW(text.c_str(), SDDL_REVISION_1, descriptor.receive(),
                                                       nullptr);
  EXPECT_TRUE(descriptor) << toUtf8(text);
  return descriptor;
}

/// The current user's own account as SDDL names it.
std::wstring ownSid() {
  UniqueHandle token;
  EXPECT_TRUE(OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token.receive()));
  alignas(TOKEN_USER) BYTE data[sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE];
  DWORD size = 0;
  EXPECT_TRUE(GetTokenInformation(token.get(), TokenUser, data, sizeof(data), &size));
  wchar_t* text = nullptr;
  EXPECT_TRUE(ConvertSidToStringSidW(reinterpret_cast<TOKEN_USER*>(data)->User.Sid, &text));
  const UniqueLocalMemory owner(text);
  return text;
}

TEST(FolderSecurityTest, JudgesAccessLists) {
  using enum FolderVerdict;
  const struct {
    const wchar_t* entries;
    FolderVerdict verdict;
    const wchar_t* groups = L"";
    const wchar_t* missing = nullptr;
    const wchar_t* owner = L"O:BA";
    const wchar_t* hiddenGroups = L"";
  } rows[] = {
      {L"", kSafe},
      {L"(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICI;0x1200a9;;;BU)", kSafe},
      {L"(A;OICI;FA;;;BA)(A;OICI;FA;;;BU)", kUnsafe},
      {L"(A;OICI;0x1301bf;;;BU)", kUnsafe},
      {L"(A;;FW;;;BU)", kUnsafe},
      {L"(A;;GA;;;BU)", kUnsafe},
      {L"(A;OICIIO;FA;;;BU)", kSafe},
      {L"(D;;FW;;;BU)(A;;FA;;;BU)", kSafe},
      // Names that are let through, and a number by which no account goes.
      {L"(A;;FA;;;WD)(A;;FA;;;AU)(A;;FA;;;PU)", kSafe},
      {L"(A;;FA;;;S-1-5-21-1-2-3-4567)(A;;FA;;;BU)", kUnsafe},
      {L"(A;;FA;;;%)", kUnsafe, L"Users"},
      {L"(A;;FR;;;%)", kSafe, L"Users"},
      {L"(A;;FA;;;%)", kSafe, L"Users;Administrators"},
      {L"(A;;FA;;;%)", kSafe, L"Guests"},
      {L"(A;;FA;;;%)", kSafe},
      // Groups are not asked for their groups.
      {L"(A;;FA;;;BA)(A;;FA;;;SY)", kSafe, L"Users"},
      // What the entries come to together counts; that of a group, or of a person whose groups cannot be had,
      // by itself.
      {L"(A;;0x1200a9;;;%)(A;;FW;;;WD)", kUnsafe, L"Users"},
      {L"(A;;0x1200a9;;;BU)(A;;FW;;;WD)", kSafe},
      {L"(A;;0x1200a9;;;%)(A;;FW;;;WD)", kSafe, L"Users", nullptr, L"O:BA", L"hidden"},
      {L"(A;;FA;;;%)", kUnsafe, L"Users", nullptr, L"O:BA", L"hidden"},
      // Rights that cannot be told: the check refuses a descriptor without owner.
      {L"(A;;FA;;;BU)", kSafe, L"", nullptr, L""},
      // What is missing matters when it is needed.
      {L"(A;;FA;;;%)", kNotChecked, L"Users", L"netapi32.dll"},
      {L"(A;;FA;;;BU)", kUnsafe, L"", L"netapi32.dll"},
      {L"(A;;FA;;;BU)", kNotChecked, L"", L"authz.dll"},
      {L"(A;;FA;;;BA)", kSafe, L"", L"authz.dll"},
  };
  const std::wstring self = ownSid();
  for (const auto& row : rows) {
    const ScopedVariable groups(L"RYN_TEST_GROUPS", row.groups);
    const ScopedVariable hidden(L"RYN_TEST_HIDDEN_GROUPS", row.hiddenGroups);
    missingLibrary = row.missing;
    SecurityApi api(&loadFakes);
    ASSERT_TRUE(api.bind(SecurityLibrary::kAccounts));
    const auto list =
        accessListOf(fromSddl(concat({row.owner, L"G:BAD:", replaceAll(row.entries, L"%", self)})));
    ASSERT_TRUE(list);
    EXPECT_EQ(judgeAccessList(api, *list), row.verdict) << toUtf8(row.entries) << ' ' << &row - rows;
  }
  missingLibrary = nullptr;
  for (const wchar_t* library : {L"authz.dll", L"netapi32.dll"}) {
    const UniqueModule module = loadFakes(library);
    const RYN_FUNCTION(fakeLiveObjects) count(module.get());
    ASSERT_TRUE(count);
    EXPECT_EQ(count(), 0) << toUtf8(library);
  }
  // No list at all names nobody to judge.
  EXPECT_FALSE(accessListOf(fromSddl(L"O:BAG:BA")));
  UniqueLocalMemory open(LocalAlloc(LPTR, sizeof(SECURITY_DESCRIPTOR)));
  ASSERT_TRUE(InitializeSecurityDescriptor(open.get(), SECURITY_DESCRIPTOR_REVISION) &&
              SetSecurityDescriptorDacl(open.get(), TRUE, nullptr, FALSE));
  EXPECT_FALSE(accessListOf(std::move(open)));
}

TEST(FolderSecurityTest, ReadsAFolderAndLetsItGo) {
  using enum FolderVerdict;
  const std::wstring folder = folderPart(modulePath()) + L"\\fixtures";
  // The account that made the folder may write there, and nobody else that is known.
  const ScopedVariable groups(L"RYN_TEST_GROUPS", L"Users");
  SecurityApi api(&loadFakes);
  EXPECT_EQ(checkVmFolder(api, folder), kUnsafe);
  EXPECT_EQ(checkVmFolder(api, folder + L"\\missing"), kNotChecked);
  missingLibrary = L"advapi32.dll";
  SecurityApi cutDown(&loadFakes);
  EXPECT_EQ(checkVmFolder(cutDown, folder), kNotChecked);
  EXPECT_FALSE(isCurrentUserAdministrator(cutDown));
  missingLibrary = nullptr;

  // Only possible when the checks hold the folder no longer.
  const UniqueFile exclusive(CreateFileW(folder.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                         FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  ASSERT_TRUE(exclusive);
  EXPECT_EQ(checkVmFolder(api, folder), kNotChecked);
}

TEST(FolderSecurityTest, RemembersWhatItCouldCheck) {
  const test::TempFolder temp;
  const std::wstring folder = temp.at(L"vm");
  EXPECT_EQ(checkVmFolder(folder), FolderVerdict::kNotChecked);
  temp.makeFolder(L"vm");
  const FolderVerdict verdict = checkVmFolder(folder);
  EXPECT_NE(verdict, FolderVerdict::kNotChecked);
  ASSERT_TRUE(RemoveDirectoryW(folder.c_str()));
  EXPECT_EQ(checkVmFolder(folder), verdict);
}

TEST(FolderSecurityTest, DenyOnlyAdministratorsAreNone) {
  BYTE sid[SECURITY_MAX_SID_SIZE];
  DWORD size = sizeof(sid);
  ASSERT_TRUE(CreateWellKnownSid(WinBuiltinAdministratorsSid, nullptr, sid, &size));
  BOOL member = FALSE;
  ASSERT_TRUE(CheckTokenMembership(nullptr, sid, &member));
  EXPECT_EQ(isCurrentUserAdministrator(), member != FALSE);

  UniqueHandle own;
  UniqueHandle filtered;
  UniqueHandle impersonation;
  ASSERT_TRUE(OpenProcessToken(GetCurrentProcess(), TOKEN_ALL_ACCESS, own.receive()));
  SID_AND_ATTRIBUTES administrators = {sid, 0};
  ASSERT_TRUE(
      CreateRestrictedToken(own.get(), 0, 1, &administrators, 0, nullptr, 0, nullptr, filtered.receive()));
  ASSERT_TRUE(DuplicateTokenEx(filtered.get(), TOKEN_ALL_ACCESS, nullptr, SecurityImpersonation,
                               TokenImpersonation, impersonation.receive()));
  ASSERT_TRUE(SetThreadToken(nullptr, impersonation.get()));
  const bool filteredAnswer = isCurrentUserAdministrator();
  ASSERT_TRUE(RevertToSelf());
  EXPECT_FALSE(filteredAnswer);
}

}  // namespace
}  // namespace ryn
