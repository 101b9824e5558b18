#include "platform/registry_key.h"

#include <cstdint>

#include "platform/registry_calls.h"

namespace ryn {

const wchar_t* readRegistryText(HKEY key, const std::wstring& name, std::wstring& text) {
  if (key == nullptr) return kKeyNotOpen;
  BYTE data[512];
  DWORD sizeBytes = sizeof(data);
  DWORD type = REG_NONE;
  if (RegQueryValueExW(key, name.c_str(), nullptr, &type, data, &sizeBytes) != ERROR_SUCCESS) {
    return L"key query failed";
  }
  if (type != REG_SZ && type != REG_EXPAND_SZ && type != REG_MULTI_SZ) return L"value not a string";
  for (DWORD i = 0; i < sizeBytes; ++i) {
    if (data[i] != 0) text.push_back(data[i]);
  }
  return nullptr;
}

LSTATUS openRegistryKey(HKEY root, const std::wstring& subkey, REGSAM access, UniqueHkey& key) {
  if (RegOpenKeyExW(root, subkey.c_str(), 0, access, key.receive()) == ERROR_SUCCESS) return ERROR_SUCCESS;

  // Some keys grant no more than looking at values and subkeys; the view bits are dropped with the
  // rest, because a key that exists in one view only is better than none.
  static constexpr REGSAM kLeastAccess = KEY_QUERY_VALUE | KEY_ENUMERATE_SUB_KEYS;
  LSTATUS status = RegOpenKeyExW(root, subkey.c_str(), 0, kLeastAccess, key.receive());
  if (status == ERROR_SUCCESS) return status;

  // Last, the remote registry interface of this machine itself, which takes predefined roots only.
  UniqueHkey connected;
  if (RegConnectRegistryW(nullptr, root, connected.receive()) == ERROR_SUCCESS) {
    status = RegOpenKeyExW(connected.get(), subkey.c_str(), 0, access, key.receive());
    // On one's own machine Windows connects a predefined root to itself; such a handle stays open.
    if (connected.get() == root) connected.release();
  }
  return status;
}

std::optional<RegistryKey> RegistryKey::tryOpen(const std::wstring& subkey, REGSAM access) {
  return tryOpen(HKEY_LOCAL_MACHINE, subkey, access);
}

std::optional<RegistryKey> RegistryKey::tryOpen(HKEY root, const std::wstring& subkey, REGSAM access) {
  UniqueHkey key;
  if (openRegistryKey(root, subkey, access, key) != ERROR_SUCCESS) return std::nullopt;
  return RegistryKey(subkey, std::move(key));
}

std::optional<RegistryKey> RegistryKey::tryOpen(const RegistryKey& parent, const std::wstring& subkey) {
  UniqueHkey key;
  if (!parent.handle_ || openRegistryKey(parent.handle(), subkey, KEY_READ, key) != ERROR_SUCCESS)
    return std::nullopt;
  return RegistryKey(parent.path() + L"\\" + subkey, std::move(key));
}

std::optional<std::wstring> RegistryKey::tryQueryString(const std::wstring& name) const {
  std::wstring text;
  if (readRegistryText(handle_.get(), name, text) != nullptr) return std::nullopt;
  return text;
}

std::vector<std::wstring> listSubkeys(HKEY key, decltype(&RegEnumKeyExW) enumerate) {
  std::vector<std::wstring> names;
  wchar_t name[256] = L"";
  for (DWORD index = 0;; ++index) {
    DWORD size = static_cast<DWORD>(std::size(name));
    const LSTATUS status = enumerate(key, index, name, &size, nullptr, nullptr, nullptr, nullptr);
    // Any other error than that of a name which does not fit is one of the whole list and would repeat for
    // ever.
    if (status != ERROR_SUCCESS && status != ERROR_MORE_DATA) return names;
    names.emplace_back(name);
  }
}

HKEY rootKeyFromPath(const std::wstring& path) {
  struct Root {
    std::wstring_view prefix;
    uint32_t number;
  };
  // The numbers of winreg.h. HKEY_PERFORMANCE_TEXT and _NLSTEXT are never reached by HKEY_PERFORMANCE_DATA's
  // prefix, so the order matters only for reading.
  static constexpr Root kRoots[] = {
      {L"\\HKEY_CLASSES_ROOT", 0x80000000},
      {L"\\HKEY_CURRENT_USER", 0x80000001},
      {L"\\HKEY_LOCAL_MACHINE", 0x80000002},
      {L"\\HKEY_USERS", 0x80000003},
      {L"\\HKEY_PERFORMANCE_DATA", 0x80000004},
      {L"\\HKEY_PERFORMANCE_TEXT", 0x80000050},
      {L"\\HKEY_PERFORMANCE_NLSTEXT", 0x80000060},
      {L"\\HKEY_CURRENT_CONFIG", 0x80000005},
      {L"\\HKEY_DYN_DATA", 0x80000006},
  };
  for (const Root& root : kRoots) {
    // Sign-extended, as the header does it.
    if (path.starts_with(root.prefix)) {
      return reinterpret_cast<HKEY>(static_cast<intptr_t>(static_cast<int32_t>(root.number)));
    }
  }
  return nullptr;
}

}  // namespace ryn
