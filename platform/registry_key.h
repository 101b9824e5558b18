#pragma once

#include <windows.h>

#include <optional>
#include <string>
#include <vector>

#include "platform/errors.h"
#include "platform/unique_handle.h"

namespace ryn {

/// A registry operation that failed.
class RegistryException : public WideException {
 public:
  using WideException::WideException;
};

/// The same with the key concerned; `keyPath` is empty when the key was never opened.
class KeyException : public RegistryException {
 public:
  KeyException(std::wstring message, std::wstring keyPath)
      : RegistryException(std::move(message)), keyPath_(std::move(keyPath)) {}

  const std::wstring& keyPath() const noexcept { return keyPath_; }

 private:
  std::wstring keyPath_;
};

/// A registry key open for reading, closed on destruction; moved, not copied. Every failure is a
/// KeyException; the functions that begin with "try" give nothing instead, for callers that search and go on.
class RegistryKey {
 public:
  /// Opens `subkey` of HKEY_LOCAL_MACHINE with `access`: KEY_READ, optionally with a WOW64 view bit,
  /// which reaches the system unchanged.
  RegistryKey(const std::wstring& subkey, REGSAM access);

  /// Opens `subkey` of a predefined root key; `path()` is the subkey.
  RegistryKey(HKEY root, const std::wstring& subkey, REGSAM access);

  /// Opens a direct or deeper child of `parent` with KEY_READ; `path()` is the parent's path + "\" +
  /// `subkey`.
  RegistryKey(const RegistryKey& parent, const std::wstring& subkey);

  /// The same, each for one of the constructors.
  [[nodiscard]] static std::optional<RegistryKey> tryOpen(const std::wstring& subkey, REGSAM access);
  [[nodiscard]] static std::optional<RegistryKey> tryOpen(HKEY root, const std::wstring& subkey,
                                                          REGSAM access);
  [[nodiscard]] static std::optional<RegistryKey> tryOpen(const RegistryKey& parent,
                                                          const std::wstring& subkey);

  /// Closes the key early; what is asked of it afterwards throws "key not open". A key that was moved away is
  /// closed, too.
  void close() { handle_.reset(); }

  HKEY handle() const { return handle_.get(); }
  const std::wstring& path() const { return path_; }

  /// Text of the value `name` (the key's default value when empty), at most 512 bytes as stored.
  /// Missing or longer: "key query failed"; not text: "value not a string". Zero bytes are dropped
  /// and each other byte is one character: text below U+0100 comes out whole, the strings of a
  /// REG_MULTI_SZ run together, REG_EXPAND_SZ is not expanded.
  [[nodiscard]] std::wstring queryString(const std::wstring& name) const;

  /// The same text.
  [[nodiscard]] std::optional<std::wstring> tryQueryString(const std::wstring& name) const;

  /// Names of the direct subkeys in the system's order; those before the first error when the list cannot be
  /// read to its end. Throws for a closed key only.
  [[nodiscard]] std::vector<std::wstring> subkeyNames() const;

 private:
  RegistryKey(std::wstring path, UniqueHkey handle) : path_(std::move(path)), handle_(std::move(handle)) {}

  std::wstring path_;
  UniqueHkey handle_;
};

/// What subkeyNames() reads with RegEnumKeyExW. A name that does not fit the buffer of 256 characters comes
/// out as it stands there.
[[nodiscard]] std::vector<std::wstring> listSubkeys(HKEY key, decltype(&RegEnumKeyExW) enumerate);

/// The predefined key that `path` names with its first component, such as
/// "\HKEY_LOCAL_MACHINE\SOFTWARE"; null without the leading "\" or in other letter case.
[[nodiscard]] HKEY rootKeyFromPath(const std::wstring& path);

}  // namespace ryn
