#include <iterator>

#include "platform/registry_calls.h"
#include "platform/registry_key.h"

namespace ryn {
namespace {

std::wstring systemErrorText(DWORD error) {
  wchar_t text[128];
  const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                      error, MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT), text,
                                      static_cast<DWORD>(std::size(text)), nullptr);
  return std::wstring(text, length);
}

void openOrThrow(HKEY root, const std::wstring& subkey, REGSAM access, UniqueHkey& key) {
  const LSTATUS status = openRegistryKey(root, subkey, access, key);
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
  if (!parent.handle_) throw KeyException(kKeyNotOpen, L"");
  openOrThrow(parent.handle(), subkey, KEY_READ, handle_);
}

std::wstring RegistryKey::queryString(const std::wstring& name) const {
  std::wstring text;
  const wchar_t* const failure = readRegistryText(handle_.get(), name, text);
  if (failure != nullptr) throw KeyException(failure, handle_ ? path_ : std::wstring());
  return text;
}

std::vector<std::wstring> RegistryKey::subkeyNames() const {
  if (!handle_) throw KeyException(kKeyNotOpen, L"");
  return listSubkeys(handle_.get(), &RegEnumKeyExW);
}

}  // namespace ryn
