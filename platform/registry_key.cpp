#include "platform/registry_key.h"

#include <string_view>

namespace ryn {
namespace {

std::wstring systemErrorText(DWORD error) {
  wchar_t text[128];
  const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                      error, MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT), text,
                                      static_cast<DWORD>(std::size(text)), nullptr);
  return std::wstring(text, length);
}

constexpr wchar_t kNotOpen[] = L"key not open";

/// Null when `text` was read, else what is wrong.
const wchar_t* readText(HKEY key, const std::wstring& name, std::wstring& text) {
  if (key == nullptr) return kNotOpen;
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

/// Windows error.
LSTATUS openKey(HKEY root, const std::wstring& subkey, REGSAM access, UniqueHkey& key) {
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

void openOrThrow(HKEY root, const std::wstring& subkey, REGSAM access, UniqueHkey& key) {
  const LSTATUS status = openKey(root, subkey, access, key);
  if (status != ERROR_SUCCESS) throw KeyException(systemErrorText(static_cast<DWORD>(status)), subkey);
}

}  // namespace

RegistryKey::RegistryKey(const std::wstring& subkey, REGSAM access)
    : RegistryKey(HKEY_LOCAL_MACHINE, subkey, access) {}

RegistryKey::RegistryKey(HKEY root, const std::wstring& subkey, REGSAM access) : path_(subkey) {
  openOrThrow(root, subkey, access, handle_);
}

RegistryKey::RegistryKey(const RegistryKey& parent, const std::wstring& subkey)
    : path_(parent.path() + L"\\" + subkey) {
  // A closed parent's null handle would make the system open something else.
  if (!parent.handle_) throw KeyException(kNotOpen, L"");
  openOrThrow(parent.handle(), subkey, KEY_READ, handle_);
}

std::optional<RegistryKey> RegistryKey::tryOpen(const std::wstring& subkey, REGSAM access) {
  return tryOpen(HKEY_LOCAL_MACHINE, subkey, access);
}

std::optional<RegistryKey> RegistryKey::tryOpen(HKEY root, const std::wstring& subkey, REGSAM access) {
  UniqueHkey key;
  if (openKey(root, subkey, access, key) != ERROR_SUCCESS) return std::nullopt;
  return RegistryKey(subkey, std::move(key));
}

std::optional<RegistryKey> RegistryKey::tryOpen(const RegistryKey& parent, const std::wstring& subkey) {
  UniqueHkey key;
  if (!parent.handle_ || openKey(parent.handle(), subkey, KEY_READ, key) != ERROR_SUCCESS)
    return std::nullopt;
  return RegistryKey(parent.path() + L"\\" + subkey, std::move(key));
}

std::wstring RegistryKey::queryString(const std::wstring& name) const {
  std::wstring text;
  const wchar_t* const failure = readText(handle_.get(), name, text);
  if (failure != nullptr) throw KeyException(failure, handle_ ? path_ : std::wstring());
  return text;
}

std::optional<std::wstring> RegistryKey::tryQueryString(const std::wstring& name) const {
  std::wstring text;
  if (readText(handle_.get(), name, text) != nullptr) return std::nullopt;
  return text;
}

std::vector<std::wstring> RegistryKey::subkeyNames() const {
  if (!handle_) throw KeyException(kNotOpen, L"");
  return listSubkeys(handle_.get(), &RegEnumKeyExW);
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
    HKEY key;
  };
  // HKEY_PERFORMANCE_TEXT and _NLSTEXT are never reached by HKEY_PERFORMANCE_DATA's prefix, so the
  // order matters only for reading.
  const Root roots[] = {
      {L"\\HKEY_CLASSES_ROOT", HKEY_CLASSES_ROOT},
      {L"\\HKEY_CURRENT_USER", HKEY_CURRENT_USER},
      {L"\\HKEY_LOCAL_MACHINE", HKEY_LOCAL_MACHINE},
      {L"\\HKEY_USERS", HKEY_USERS},
      {L"\\HKEY_PERFORMANCE_DATA", HKEY_PERFORMANCE_DATA},
      {L"\\HKEY_PERFORMANCE_TEXT", HKEY_PERFORMANCE_TEXT},
      {L"\\HKEY_PERFORMANCE_NLSTEXT", HKEY_PERFORMANCE_NLSTEXT},
      {L"\\HKEY_CURRENT_CONFIG", HKEY_CURRENT_CONFIG},
      {L"\\HKEY_DYN_DATA", HKEY_DYN_DATA},
  };
  for (const Root& root : roots) {
    if (path.starts_with(root.prefix)) return root.key;
  }
  return nullptr;
}

}  // namespace ryn
