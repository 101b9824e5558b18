#include "platform/registry_key.h"

#include <gtest/gtest.h>
#include <sddl.h>

#include <functional>
#include <tuple>

namespace ryn {
namespace {

static_assert(std::is_base_of_v<std::exception, RegistryException>);
static_assert(std::is_base_of_v<RegistryException, KeyException>);

/// A key of its own below the local machine's software, removed whatever the test did.
class RegistryKeyTest : public testing::Test {
 protected:
  RegistryKeyTest() {
    remove();
    make(L"");
  }
  ~RegistryKeyTest() override { remove(); }

  void remove() const {
    RegDeleteKeyW(HKEY_LOCAL_MACHINE, (path_ + L"\\Guarded").c_str());
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, path_.c_str());
  }

  RegistryKey open() const { return RegistryKey(path_, KEY_READ); }

  UniqueHkey make(const std::wstring& child) const {
    UniqueHkey key;
    const LSTATUS status = RegCreateKeyW(HKEY_LOCAL_MACHINE, (path_ + child).c_str(), key.receive());
    if (status != ERROR_SUCCESS) throw std::runtime_error("no key to test with: " + std::to_string(status));
    return key;
  }
  void set(const wchar_t* name, DWORD type, const void* data, size_t sizeBytes) const {
    ASSERT_EQ(RegSetValueExW(make(L"").get(), name, 0, type, static_cast<const BYTE*>(data),
                             static_cast<DWORD>(sizeBytes)),
              ERROR_SUCCESS);
  }

  const std::wstring path_ = L"SOFTWARE\\RynTest" + std::to_wstring(GetCurrentProcessId());
};

/// What the KeyException says that `action` throws.
std::wstring failure(const std::function<void()>& action) {
  try {
    action();
  } catch (const KeyException& error) {
    return error.message() + L" @ " + error.keyPath();
  }
  return L"nothing thrown";
}

TEST_F(RegistryKeyTest, ReadsTextByteByByte) {
  const std::tuple<DWORD, std::wstring, std::wstring> rows[] = {
      {REG_SZ, L"C:\\caf\u00e9", L"C:\\caf\u00e9"},
      {REG_SZ, L"a\u4e2d\u0100", L"a\u002d\u004e\u0001"},
      {REG_SZ, L"", L""},
      {REG_EXPAND_SZ, L"%SystemRoot%\\x", L"%SystemRoot%\\x"},
      {REG_MULTI_SZ, std::wstring(L"a\0b\0", 4), L"ab"}};
  const RegistryKey key = open();
  for (const auto& [type, stored, read] : rows) {
    set(L"", type, stored.c_str(), (stored.size() + 1) * sizeof(wchar_t));
    EXPECT_EQ(key.queryString(L""), read);
  }
}

TEST_F(RegistryKeyTest, RefusesWhatIsMissingTooLongOrNotText) {
  const RegistryKey key = open();
  // Longer than what is set of it: the system counts a terminator in that it sees behind the text.
  const std::wstring text(300, L'x');
  set(L"Value", REG_SZ, text.data(), 512);
  EXPECT_EQ(key.queryString(L"Value"), text.substr(0, 256));
  set(L"Value", REG_SZ, text.data(), 514);
  EXPECT_EQ(failure([&] { key.queryString(L"Value"); }), L"key query failed @ " + path_);
  EXPECT_EQ(failure([&] { key.queryString(L"Absent"); }), L"key query failed @ " + path_);
  for (const DWORD type : {DWORD{REG_DWORD}, DWORD{REG_BINARY}, DWORD{REG_NONE}}) {
    set(L"Value", type, text.data(), 4);
    EXPECT_EQ(failure([&] { key.queryString(L"Value"); }), L"value not a string @ " + path_);
  }
}

TEST_F(RegistryKeyTest, FailsToOpenWithTheSystemsText) {
  wchar_t text[256];
  const std::wstring notFound(
      text, FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM, nullptr, ERROR_FILE_NOT_FOUND, 0, text, 256, nullptr));
  ASSERT_NE(notFound, L"");
  const std::wstring absent = path_ + L"\\Absent";
  EXPECT_EQ(failure([&] { RegistryKey(absent, KEY_READ); }), notFound + L" @ " + absent);

  // The last attempt may be handed the parent's own handle, which must survive it.
  make(L"\\Child");
  const RegistryKey parent = open();
  EXPECT_EQ(failure([&] { RegistryKey(parent, L"Absent"); }), notFound + L" @ " + L"Absent");
  EXPECT_EQ(parent.subkeyNames(), std::vector<std::wstring>{L"Child"});
}

TEST_F(RegistryKeyTest, ListsAndOpensChildren) {
  EXPECT_TRUE(open().subkeyNames().empty());
  const std::vector<std::wstring> names = {L"1.8", L"11\u4e2d", std::wstring(255, L'k')};
  for (const std::wstring& name : names) make(L"\\" + name);
  const RegistryKey key = open();
  EXPECT_EQ(key.subkeyNames(), names);
  EXPECT_EQ(RegistryKey(key, L"1.8").path(), path_ + L"\\1.8");
}

TEST_F(RegistryKeyTest, MakesDoWithTheRightToQueryAndEnumerate) {
  const UniqueHkey guarded = make(L"\\Guarded");
  UniqueLocalMemory descriptor;
  // Everyone may delete the key, query its values and enumerate its subkeys, and nothing else.
  ASSERT_TRUE(ConvertStringSecurityDescriptorToSecurityDescriptorW(L"D:P(A;;0x10009;;;WD)", SDDL_REVISION_1,
                                                                   descriptor.receive(), nullptr));
  ASSERT_EQ(RegSetKeySecurity(guarded.get(), DACL_SECURITY_INFORMATION, descriptor.get()), ERROR_SUCCESS);
  HKEY refused = nullptr;
  ASSERT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, (path_ + L"\\Guarded").c_str(), 0, KEY_READ, &refused),
            ERROR_ACCESS_DENIED);
  EXPECT_TRUE(RegistryKey(path_ + L"\\Guarded", KEY_READ | KEY_WOW64_64KEY).subkeyNames().empty());
  EXPECT_TRUE(RegistryKey(open(), L"Guarded").subkeyNames().empty());
}

TEST_F(RegistryKeyTest, AnswersNothingOnceClosed) {
  RegistryKey key = open();
  key.close();
  EXPECT_EQ(failure([&] { key.queryString(L""); }), L"key not open @ ");
  EXPECT_EQ(failure([&] { key.subkeyNames(); }), L"key not open @ ");
  EXPECT_EQ(failure([&] { RegistryKey(key, L"SOFTWARE"); }), L"key not open @ ");
}

TEST(RootKeyFromPathTest, KnowsThePredefinedKeys) {
  const std::pair<const wchar_t*, uint32_t> rows[] = {{L"\\HKEY_CLASSES_ROOT", 0x80000000},
                                                      {L"\\HKEY_CURRENT_USER\\Software", 0x80000001},
                                                      {L"\\HKEY_LOCAL_MACHINE\\SOFTWARE\\J", 0x80000002},
                                                      {L"\\HKEY_USERS\\S-1-5-18", 0x80000003},
                                                      {L"\\HKEY_PERFORMANCE_DATA", 0x80000004},
                                                      {L"\\HKEY_PERFORMANCE_TEXT", 0x80000050},
                                                      {L"\\HKEY_PERFORMANCE_NLSTEXT", 0x80000060},
                                                      {L"\\HKEY_CURRENT_CONFIG", 0x80000005},
                                                      {L"\\HKEY_DYN_DATA", 0x80000006},
                                                      {L"HKEY_USERS\\S-1-5-18", 0},
                                                      {L"\\hkey_users\\s-1-5-18", 0},
                                                      {L"\\HKEY_USER", 0}};
  for (const auto& [path, key] : rows) {
    // The predefined handles are 32-bit values, sign-extended.
    EXPECT_EQ(static_cast<uint32_t>(reinterpret_cast<uintptr_t>(rootKeyFromPath(path))), key)
        << std::wstring(path);
  }
}

}  // namespace
}  // namespace ryn
