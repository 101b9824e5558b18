#include "platform/registry_key.h"

#include <gtest/gtest.h>
#include <sddl.h>

#include "tests/unit/support/local_machine.h"

namespace ryn {
namespace {

/// What the KeyException says that `action` throws.
std::wstring failure(const auto& action) {
  try {
    action();
  } catch (const KeyException& error) {
    return error.message() + L" @ " + error.keyPath();
  }
  return L"nothing thrown";
}

TEST(RegistryKeyTest, ReadsText) {
  const std::wstring text(300, L'x');
  const wchar_t* const noQuery = L"key query failed @ K";
  const wchar_t* const noText = L"value not a string @ K";
  const struct {
    DWORD type;
    std::wstring stored;
    size_t sizeBytes;
    std::optional<std::wstring> read;
    const wchar_t* failure = nullptr;
  } rows[] = {
      {REG_SZ, L"C:\\caf\u00e9", 16, L"C:\\caf\u00e9"},
      {REG_SZ, L"a\u4e2d\u0100", 8, L"a\u002d\u004e\u0001"},
      {REG_EXPAND_SZ, L"%SystemRoot%", 26, L"%SystemRoot%"},
      {REG_MULTI_SZ, std::wstring(L"a\0b\0", 4), 10, L"ab"},
      // Longer than what is set of it: the system counts a terminator in that it sees behind the text.
      {REG_SZ, text, 512, text.substr(0, 256)},
      {REG_SZ, text, 514, std::nullopt, noQuery},
      {REG_DWORD, L"ab", 4, std::nullopt, noText},
      {REG_BINARY, L"ab", 4, std::nullopt, noText},
  };
  const test::ScopedLocalMachine machine;
  machine.make(L"K");
  RegistryKey key(L"K", KEY_READ);
  for (const auto& row : rows) {
    ASSERT_EQ(
        RegSetValueExW(machine.make(L"K").get(), L"V", 0, row.type,
                       reinterpret_cast<const BYTE*>(row.stored.c_str()), static_cast<DWORD>(row.sizeBytes)),
        ERROR_SUCCESS);
    EXPECT_EQ(key.tryQueryString(L"V"), row.read) << &row - rows;
    const std::wstring failed = failure([&] { EXPECT_EQ(key.queryString(L"V"), row.read); });
    EXPECT_EQ(failed, row.failure == nullptr ? L"nothing thrown" : row.failure) << &row - rows;
  }
  EXPECT_EQ(failure([&] { (void)key.queryString(L"Absent"); }), noQuery);

  const RegistryKey moved = std::move(key);
  EXPECT_EQ(moved.tryQueryString(L"V"), std::nullopt);
  // NOLINTBEGIN(bugprone-use-after-move): a key that was moved away is a closed one.
  EXPECT_EQ(failure([&] { (void)key.queryString(L"V"); }), L"key not open @ ");
  EXPECT_EQ(failure([&] { (void)key.subkeyNames(); }), L"key not open @ ");
  EXPECT_FALSE(RegistryKey::tryOpen(key, L"SOFTWARE"));
  // NOLINTEND(bugprone-use-after-move)
}

TEST(RegistryKeyTest, OpensAndLists) {
  const test::ScopedLocalMachine machine;
  machine.make(L"K");
  EXPECT_TRUE(RegistryKey(L"K", KEY_READ).subkeyNames().empty());
  const std::vector<std::wstring> names = {L"1.8", L"11\u4e2d", std::wstring(255, L'k')};
  for (const std::wstring& name : names) machine.make(L"K\\" + name);

  const auto key = RegistryKey::tryOpen(L"K", KEY_READ);
  EXPECT_EQ(RegistryKey(*key, L"1.8").path(), L"K\\1.8");
  EXPECT_EQ(RegistryKey::tryOpen(*key, L"1.8")->path(), L"K\\1.8");
  EXPECT_THROW(RegistryKey(L"L", KEY_READ), KeyException);
  EXPECT_THROW(RegistryKey(*key, L"L"), KeyException);
  EXPECT_FALSE(RegistryKey::tryOpen(L"L", KEY_READ) || RegistryKey::tryOpen(*key, L"L"));
  // The last attempt may be handed the parent's own handle, which must survive it.
  EXPECT_EQ(key->subkeyNames(), names);
}

TEST(RegistryKeyTest, MakesDoWithTheRightToQueryAndEnumerate) {
  const test::ScopedLocalMachine machine;
  UniqueLocalMemory descriptor;
  // Everyone may delete the key, query its values and enumerate its subkeys, and nothing else.
  ASSERT_TRUE(ConvertStringSecurityDescriptorToSecurityDescriptorW(L"D:P(A;;0x10009;;;WD)", SDDL_REVISION_1,
                                                                   descriptor.receive(), nullptr));
  ASSERT_EQ(RegSetKeySecurity(machine.make(L"K").get(), DACL_SECURITY_INFORMATION, descriptor.get()),
            ERROR_SUCCESS);
  HKEY refused = nullptr;
  ASSERT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"K", 0, KEY_READ, &refused), ERROR_ACCESS_DENIED);
  EXPECT_TRUE(RegistryKey::tryOpen(L"K", KEY_READ | KEY_WOW64_64KEY));
  EXPECT_EQ(RegDeleteKeyW(HKEY_LOCAL_MACHINE, L"K"), ERROR_SUCCESS);
}

TEST(RegistryKeyTest, AListThatFailsEnds) {
  static constexpr LSTATUS kStatus[] = {ERROR_SUCCESS, ERROR_MORE_DATA, RPC_S_SERVER_UNAVAILABLE};
  const auto enumerate = [](HKEY, DWORD index, wchar_t* name, DWORD*, DWORD*, wchar_t*, DWORD*, FILETIME*)
                             WINAPI -> LSTATUS {
    name[0] = static_cast<wchar_t>(L'a' + index);
    return index < 3 ? kStatus[index] : index < 9 ? kStatus[2] : ERROR_NO_MORE_ITEMS;
  };
  EXPECT_EQ(listSubkeys(nullptr, enumerate), (std::vector<std::wstring>{L"a", L"b"}));
}

TEST(RootKeyFromPathTest, KnowsThePredefinedKeys) {
  EXPECT_EQ(rootKeyFromPath(L"\\HKEY_CURRENT_USER\\Software"), HKEY_CURRENT_USER);
  EXPECT_EQ(rootKeyFromPath(L"\\HKEY_PERFORMANCE_NLSTEXT"), HKEY_PERFORMANCE_NLSTEXT);
  EXPECT_EQ(rootKeyFromPath(L"HKEY_USERS\\S-1-5-18"), nullptr);
  EXPECT_EQ(rootKeyFromPath(L"\\hkey_users\\s-1-5-18"), nullptr);
}

}  // namespace
}  // namespace ryn
