#pragma once

#include <windows.h>

#include <string>

#include "platform/unique_handle.h"

// The calls behind RegistryKey, for its two faces: the one that throws lies in a file of its own, which a
// program that never throws does not link.

namespace ryn {

inline constexpr wchar_t kKeyNotOpen[] = L"key not open";

/// Opens `subkey` by each of the ways that RegistryKey knows. Windows error.
LSTATUS openRegistryKey(HKEY root, const std::wstring& subkey, REGSAM access, UniqueHkey& key);

/// Reads a value's text as RegistryKey::queryString does. Null when it was read, else what is wrong.
const wchar_t* readRegistryText(HKEY key, const std::wstring& name, std::wstring& text);

}  // namespace ryn
