#include "vmsearch/folder_security.h"

#include <windows.h>

#include <gtest/gtest.h>
#include <sddl.h>

#include <map>
#include <set>

#include "platform/paths.h"
#include "platform/security_api.h"
#include "platform/text.h"

extern "C" int fakeLiveObjects();

namespace ryn {

void PrintTo(FolderVerdict verdict, std::ostream* out) {
  *out << static_cast<int>(verdict);
}

namespace {

TEST(FolderSecurityRulesTest, FirstAdministratorsGroupDecides) {
  constexpr uint32_t kEnabled = SE_GROUP_MANDATORY | SE_GROUP_ENABLED;
  const struct {
    std::vector<TokenGroup> groups;
    bool administrator;
  } rows[] = {
      {{}, false},
      {{{false, kEnabled}}, false},
      {{{false, kEnabled}, {true, kEnabled}}, true},
      {{{true, 0}}, true},
      {{{true, SE_GROUP_USE_FOR_DENY_ONLY}}, false},
      {{{true, kEnabled | SE_GROUP_USE_FOR_DENY_ONLY}, {true, kEnabled}}, false},
      {{{false, SE_GROUP_USE_FOR_DENY_ONLY}, {true, kEnabled}}, true},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(holdsAdministrators(row.groups), row.administrator) << &row - rows;
  }
}

TEST(FolderSecurityRulesTest, OnlyUsersThatAreNoAdministratorsAreRisky) {
  const struct {
    std::vector<std::wstring> groups;
    bool risky;
  } rows[] = {
      {{}, false},
      {{L"Users"}, true},
      {{L"Guests", L"Users", L"Backup Operators"}, true},
      {{L"Users", L"Administrators"}, false},
      {{L"Administrators", L"Users"}, false},
      {{L"users"}, false},
      {{L"Users", L"administrators"}, true},
      {{L"Benutzer", L"Remote Desktop Users"}, false},
  };
  for (const auto& row : rows) EXPECT_EQ(isRiskyMember(row.groups), row.risky) << &row - rows;
}

TEST(FolderSecurityRulesTest, WritingTakesAllWriteRights) {
  const struct {
    uint32_t rights;
    bool writing;
  } rows[] = {
      {0, false},          {0x1200A9, false},  // read and execute
      {0x120116, true},                        // write
      {0x120114, false},                       // write without creating files
      {0x1301BF, true},                        // modify
      {0x1F01FF, true},                        // full
      {0x10000000, true},                      // generic all
      {0x40000000, true},                      // generic write
      {0xA0000000, false},                     // generic read and execute
  };
  for (const auto& row : rows) EXPECT_EQ(permitsWriting(row.rights), row.writing) << std::hex << row.rights;
}

/// A system of a few accounts and folders. Like the real one it answers nothing that needs a library
/// which was not bound.
class FakeSecurity final : public SecuritySystem {
 public:
  struct Entry {
    /// Absent: the system knows no account for it.
    std::optional<Account> account;
    std::optional<uint32_t> rights;
  };
  using Folder = std::vector<Entry>;

  bool bind(SecurityLibrary library) override {
    if (missing.contains(library)) return false;
    bound.insert(library);
    return true;
  }
  TokenReading readToken(TokenOwner owner) const override {
    expectBound(SecurityLibrary::kAccounts);
    return owner == TokenOwner::kThread ? threadToken : processToken;
  }
  std::unique_ptr<AccessList> readAccessList(const std::wstring& folder) const override {
    const auto found = folders.find(folder);
    return found == folders.end() ? nullptr : std::make_unique<List>(*this, found->second);
  }
  std::vector<std::wstring> localGroups(const std::wstring& accountName) const override {
    expectBound(SecurityLibrary::kLocalGroups);
    const auto found = members.find(accountName);
    return found == members.end() ? std::vector<std::wstring>() : found->second;
  }

  std::set<SecurityLibrary> missing;
  std::set<SecurityLibrary> bound;
  TokenReading threadToken;
  TokenReading processToken;
  std::map<std::wstring, Folder> folders;
  std::map<std::wstring, std::vector<std::wstring>> members;
  /// The accounts whose rights were asked for, in order.
  mutable std::vector<std::wstring> examined;

 private:
  class List final : public AccessList {
   public:
    List(const FakeSecurity& system, const Folder& folder) : system_(system), folder_(folder) {}
    size_t entryCount() const override { return folder_.size(); }
    std::optional<Account> account(size_t entry) const override {
      system_.expectBound(SecurityLibrary::kAccounts);
      return folder_.at(entry).account;
    }
    std::optional<uint32_t> rightsOf(const std::wstring& accountName) const override {
      system_.expectBound(SecurityLibrary::kAccessCheck);
      system_.examined.push_back(accountName);
      for (const Entry& entry : folder_) {
        if (entry.account && entry.account->fullName() == accountName) return entry.rights;
      }
      return std::nullopt;
    }

   private:
    const FakeSecurity& system_;
    const Folder& folder_;
  };

  void expectBound(SecurityLibrary library) const {
    EXPECT_TRUE(bound.contains(library)) << static_cast<int>(library);
  }
};

TEST(AdministratorTest, AsksTheThreadThenTheProcess) {
  const TokenReading administrator = {true, 0, {{true, SE_GROUP_ENABLED}}};
  const TokenReading user = {true, 0, {{false, SE_GROUP_ENABLED}}};
  const TokenReading none = {false, ERROR_NO_TOKEN, {}};
  const TokenReading unheardOf = {false, ERROR_CALL_NOT_IMPLEMENTED, {}};
  const TokenReading refused = {false, ERROR_ACCESS_DENIED, {}};
  const TokenReading noError = {false, ERROR_SUCCESS, {}};
  const struct {
    TokenReading thread;
    TokenReading process;
    bool administrator;
  } rows[] = {
      {none, administrator, true},     {none, user, false},
      {user, administrator, false},    {administrator, user, true},
      {unheardOf, user, true},         {none, unheardOf, true},
      {refused, administrator, false}, {noError, administrator, false},
      {none, noError, false},          {none, none, false},
  };
  for (const auto& row : rows) {
    FakeSecurity system;
    system.threadToken = row.thread;
    system.processToken = row.process;
    EXPECT_EQ(isCurrentUserAdministrator(system), row.administrator) << &row - rows;
    system.missing = {SecurityLibrary::kAccounts};
    EXPECT_FALSE(isCurrentUserAdministrator(system)) << &row - rows;
  }
}

constexpr uint32_t kRead = 0x1200A9;
constexpr uint32_t kFull = FILE_ALL_ACCESS;

FakeSecurity::Entry group(const wchar_t* domain, const wchar_t* name, std::optional<uint32_t> rights) {
  return {Account{domain, name, false}, rights};
}

FakeSecurity::Entry user(const wchar_t* name, std::optional<uint32_t> rights) {
  return {Account{L"PC", name, true}, rights};
}

TEST(CheckVmFolderTest, JudgesTheEntriesInOrder) {
  const FakeSecurity::Entry unknown = {std::nullopt, kFull};
  const FakeSecurity::Entry administrators = group(L"BUILTIN", L"Administrators", kFull);
  using Names = std::vector<std::wstring>;
  const struct {
    const char* name;
    FakeSecurity::Folder folder;
    FolderVerdict verdict;
    Names examined;
  } rows[] = {
      {"empty", {}, FolderVerdict::kSafe, {}},
      {"programs",
       {administrators, group(L"BUILTIN", L"Users", kRead)},
       FolderVerdict::kSafe,
       {L"BUILTIN\\Users"}},
      {"users",
       {administrators, group(L"BUILTIN", L"Users", kFull)},
       FolderVerdict::kUnsafe,
       {L"BUILTIN\\Users"}},
      {"unknown account first",
       {unknown, group(L"BUILTIN", L"Users", kFull)},
       FolderVerdict::kUnsafe,
       {L"BUILTIN\\Users"}},
      {"only unknown accounts", {unknown}, FolderVerdict::kSafe, {}},
      {"other groups",
       {group(L"", L"Everyone", kFull), group(L"PC", L"users", kFull), group(L"PC", L"Power Users", kFull)},
       FolderVerdict::kSafe,
       {}},
      {"ordinary person", {user(L"ann", kFull)}, FolderVerdict::kUnsafe, {L"PC\\ann"}},
      {"ordinary reader", {user(L"ann", kRead)}, FolderVerdict::kSafe, {L"PC\\ann"}},
      {"administrator", {user(L"root", kFull), user(L"boss", kFull)}, FolderVerdict::kSafe, {}},
      {"person without known groups", {user(L"stranger", kFull)}, FolderVerdict::kSafe, {}},
      {"person called Users", {user(L"Users", kFull)}, FolderVerdict::kUnsafe, {L"PC\\Users"}},
      {"group called like a person", {group(L"PC", L"ann", kFull)}, FolderVerdict::kSafe, {}},
      {"rights not told",
       {user(L"ann", std::nullopt), group(L"BUILTIN", L"Users", kFull)},
       FolderVerdict::kUnsafe,
       {L"PC\\ann", L"BUILTIN\\Users"}},
      {"stops at the first",
       {user(L"ann", kFull), group(L"BUILTIN", L"Users", kFull)},
       FolderVerdict::kUnsafe,
       {L"PC\\ann"}},
  };
  for (const auto& row : rows) {
    FakeSecurity system;
    system.members = {{L"PC\\ann", {L"Users"}},
                      {L"PC\\root", {L"Users", L"Administrators"}},
                      {L"PC\\boss", {L"Administrators", L"Users"}}};
    system.folders[L"C:\\vm\\bin"] = row.folder;
    EXPECT_EQ(checkVmFolder(system, L"C:\\vm\\bin"), row.verdict) << row.name;
    EXPECT_EQ(system.examined, row.examined) << row.name;
  }
}

TEST(CheckVmFolderTest, WhatIsMissingMattersWhenItIsNeeded) {
  using enum SecurityLibrary;
  const struct {
    const char* name;
    std::set<SecurityLibrary> missing;
    const wchar_t* folder;
    FolderVerdict verdict;
  } rows[] = {
      {"nothing", {}, L"groups", FolderVerdict::kUnsafe},
      {"folder", {}, L"elsewhere", FolderVerdict::kNotChecked},
      {"accounts", {kAccounts}, L"groups", FolderVerdict::kNotChecked},
      {"local groups", {kLocalGroups}, L"people", FolderVerdict::kNotChecked},
      {"local groups, no people", {kLocalGroups}, L"groups", FolderVerdict::kUnsafe},
      {"access check", {kAccessCheck}, L"people", FolderVerdict::kNotChecked},
      {"access check, nobody risky", {kAccessCheck, kLocalGroups}, L"closed", FolderVerdict::kSafe},
  };
  for (const auto& row : rows) {
    FakeSecurity system;
    system.missing = row.missing;
    system.members = {{L"PC\\ann", {L"Users"}}};
    system.folders = {{L"groups", {group(L"BUILTIN", L"Users", kFull)}},
                      {L"people", {user(L"ann", kFull)}},
                      {L"closed", {group(L"BUILTIN", L"Administrators", kFull)}}};
    EXPECT_EQ(checkVmFolder(system, row.folder), row.verdict) << row.name;
  }
}

// The real functions of the system; local groups and rights come from the stand-in libraries, because
// the system that runs the tests need not have ordinary users.

std::wstring fixturesFolder() {
  return folderPart(modulePath()) + L"\\fixtures";
}

UniqueModule loadFakes(const std::wstring& fileName) {
  if (fileName == L"advapi32.dll") return loadSystemLibrary(fileName);
  return loadLibraryFrom(fixturesFolder(), L"fake_" + fileName);
}

UniqueModule loadNothing(const std::wstring&) {
  return UniqueModule();
}

std::string missingFunction;

/// The stand-in libraries without the function that `missingFunction` names: its last letter is changed in
/// the loaded image, which leaves the sorted list of names in order.
UniqueModule loadIncomplete(const std::wstring& fileName) {
  UniqueModule module = loadFakes(fileName);
  auto* base = reinterpret_cast<BYTE*>(module.get());
  const auto* headers =
      reinterpret_cast<IMAGE_NT_HEADERS*>(base + reinterpret_cast<IMAGE_DOS_HEADER*>(base)->e_lfanew);
  const auto* exports = reinterpret_cast<IMAGE_EXPORT_DIRECTORY*>(
      base + headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT].VirtualAddress);
  const auto* names = reinterpret_cast<DWORD*>(base + exports->AddressOfNames);
  for (DWORD i = 0; i < exports->NumberOfNames; ++i) {
    char* name = reinterpret_cast<char*>(base + names[i]);
    DWORD protection = 0;
    if (missingFunction != name || !VirtualProtect(name, missingFunction.size(), PAGE_READWRITE, &protection))
      continue;
    ++name[missingFunction.size() - 1];
  }
  return module;
}

int liveObjects(const wchar_t* fileName) {
  const UniqueModule library = loadFakes(fileName);
  const RYN_FUNCTION(fakeLiveObjects) count(library.get());
  return count ? count() : -1;
}

UniqueLocalMemory fromSddl(const std::wstring& text) {
  UniqueLocalMemory descriptor;
  EXPECT_TRUE(ConvertStringSecurityDescriptorToSecurityDescriptorW(text.c_str(), SDDL_REVISION_1,
                                                                   descriptor.receive(), nullptr))
      << toUtf8(text);
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

class WindowsSecurityTest : public testing::Test {
 protected:
  void TearDown() override { SetEnvironmentVariableW(L"RYN_TEST_GROUPS", nullptr); }

  WindowsSecurity system_{&loadFakes};
};

TEST_F(WindowsSecurityTest, JudgesAccessLists) {
  const struct {
    const wchar_t* groups;
    const wchar_t* entries;
    FolderVerdict verdict;
  } rows[] = {
      {nullptr, L"D:", FolderVerdict::kSafe},
      {nullptr, L"D:(A;OICI;FA;;;SY)(A;OICI;FA;;;BA)(A;OICI;0x1200a9;;;BU)", FolderVerdict::kSafe},
      {nullptr, L"D:(A;OICI;FA;;;BA)(A;OICI;FA;;;BU)", FolderVerdict::kUnsafe},
      {nullptr, L"D:(A;OICI;0x1301bf;;;BU)", FolderVerdict::kUnsafe},
      {nullptr, L"D:(A;OICI;FW;;;BU)", FolderVerdict::kUnsafe},
      {nullptr, L"D:(A;;GA;;;BU)", FolderVerdict::kUnsafe},
      // What the entries come to together counts.
      {nullptr, L"D:(A;;0x1200a9;;;BU)(A;;FW;;;WD)", FolderVerdict::kUnsafe},
      {nullptr, L"D:(D;;FW;;;BU)(A;;FA;;;BU)", FolderVerdict::kSafe},
      {nullptr, L"D:(D;;0x20;;;BU)(A;;FA;;;WD)", FolderVerdict::kUnsafe},
      {nullptr, L"D:(A;OICIIO;FA;;;BU)", FolderVerdict::kSafe},
      // Names that are let through.
      {nullptr, L"D:(A;;FA;;;WD)(A;;FA;;;AU)(A;;FA;;;PU)", FolderVerdict::kSafe},
      // No account goes by this number.
      {nullptr, L"D:(A;;FA;;;S-1-5-21-1-2-3-4567)(A;;FA;;;BU)", FolderVerdict::kUnsafe},
      {L"Users", L"D:(A;;FA;;;%)", FolderVerdict::kUnsafe},
      {L"Users", L"D:(A;;FR;;;%)", FolderVerdict::kSafe},
      {L"Users;Administrators", L"D:(A;;FA;;;%)", FolderVerdict::kSafe},
      {L"Guests", L"D:(A;;FA;;;%)", FolderVerdict::kSafe},
      {nullptr, L"D:(A;;FA;;;%)", FolderVerdict::kSafe},
      // Groups are not asked for their groups.
      {L"Users", L"D:(A;;FA;;;BA)(A;;FA;;;SY)", FolderVerdict::kSafe},
  };
  ASSERT_TRUE(system_.bind(SecurityLibrary::kAccounts));
  const std::wstring self = ownSid();
  for (const auto& row : rows) {
    SetEnvironmentVariableW(L"RYN_TEST_GROUPS", row.groups);
    const auto list = system_.accessListOf(fromSddl(L"O:BAG:BA" + replaceAll(row.entries, L"%", self)));
    ASSERT_TRUE(list);
    EXPECT_EQ(judgeAccessList(system_, *list), row.verdict) << toUtf8(row.entries) << ' ' << &row - rows;
  }
  EXPECT_EQ(liveObjects(L"authz.dll"), 0);
  EXPECT_EQ(liveObjects(L"netapi32.dll"), 0);
}

TEST_F(WindowsSecurityTest, NoListAtAllCannotBeJudged) {
  EXPECT_FALSE(system_.accessListOf(fromSddl(L"O:BAG:BA")));
  UniqueLocalMemory open(LocalAlloc(LPTR, sizeof(SECURITY_DESCRIPTOR)));
  ASSERT_TRUE(InitializeSecurityDescriptor(open.get(), SECURITY_DESCRIPTOR_REVISION));
  ASSERT_TRUE(SetSecurityDescriptorDacl(open.get(), TRUE, nullptr, FALSE));
  EXPECT_FALSE(system_.accessListOf(std::move(open)));
}

TEST_F(WindowsSecurityTest, ReadsAFolderAndLetsItGo) {
  const std::wstring folder = fixturesFolder();
  // The account that made the folder, and nobody else that is known, may write there.
  SetEnvironmentVariableW(L"RYN_TEST_GROUPS", L"Users;Administrators");
  EXPECT_EQ(checkVmFolder(system_, folder), FolderVerdict::kSafe);
  SetEnvironmentVariableW(L"RYN_TEST_GROUPS", L"Users");
  EXPECT_EQ(checkVmFolder(system_, folder), FolderVerdict::kUnsafe);
  EXPECT_EQ(checkVmFolder(system_, folder + L"\\missing"), FolderVerdict::kNotChecked);
  EXPECT_EQ(checkVmFolder(system_, L""), FolderVerdict::kNotChecked);

  // Only possible when the checks hold the folder no longer.
  const UniqueFile exclusive(CreateFileW(folder.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                         FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  ASSERT_TRUE(exclusive);
  EXPECT_EQ(checkVmFolder(system_, folder), FolderVerdict::kNotChecked);
}

TEST(SecurityLibraryTest, AllEntryPointsMustBeThere) {
  using enum SecurityLibrary;
  for (const auto library : {kAccounts, kLocalGroups, kAccessCheck}) {
    EXPECT_TRUE(WindowsSecurity().bind(library)) << static_cast<int>(library);
    EXPECT_FALSE(WindowsSecurity(&loadNothing).bind(library)) << static_cast<int>(library);
  }
  const struct {
    const char* missing;
    SecurityLibrary library;
    bool bound;
  } rows[] = {
      {"NetUserGetGroups", kLocalGroups, true},
      {"NetUserGetLocalGroups", kLocalGroups, false},
      {"NetApiBufferFree", kLocalGroups, false},
      {"AuthzCachedAccessCheck", kAccessCheck, true},
      {"AuthzInitializeResourceManager", kAccessCheck, false},
      {"AuthzInitializeContextFromSid", kAccessCheck, false},
      {"AuthzAccessCheck", kAccessCheck, false},
      {"AuthzFreeContext", kAccessCheck, false},
      {"AuthzFreeResourceManager", kAccessCheck, false},
  };
  for (const auto& row : rows) {
    missingFunction = row.missing;
    EXPECT_EQ(WindowsSecurity(&loadIncomplete).bind(row.library), row.bound) << row.missing;
  }
}

TEST_F(WindowsSecurityTest, DenyOnlyAdministratorsAreNone) {
  SID_IDENTIFIER_AUTHORITY authority = {SECURITY_NT_AUTHORITY};
  BYTE sid[SECURITY_MAX_SID_SIZE];
  InitializeSid(sid, &authority, 2);
  *GetSidSubAuthority(sid, 0) = SECURITY_BUILTIN_DOMAIN_RID;
  *GetSidSubAuthority(sid, 1) = DOMAIN_ALIAS_RID_ADMINS;
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
