#pragma once

#include "vmsearch/vm_candidate.h"

namespace ryn {

inline constexpr wchar_t kJavaRuntimeEnvironmentKey[] =
    L"\\HKEY_LOCAL_MACHINE\\SOFTWARE\\JavaSoft\\Java Runtime Environment";

inline constexpr wchar_t kCurrentVersionValue[] = L"CurrentVersion";
inline constexpr wchar_t kJavaHomeValue[] = L"JavaHome";
inline constexpr wchar_t kMicroVersionValue[] = L"MicroVersion";

/// A key whose subkeys are installed VMs, named by their versions.
struct RegistryLocation {
  const wchar_t* key;
  VmKind kind;
  const wchar_t* vendor;
};

/// In the order of the search. IBM's two kinds are crossed: docs/quirks.md.
inline constexpr RegistryLocation kRegistryLocations[] = {
    {L"\\HKEY_LOCAL_MACHINE\\SOFTWARE\\JavaSoft\\JDK", VmKind::kJdk, L"Sun"},
    {L"\\HKEY_LOCAL_MACHINE\\SOFTWARE\\JavaSoft\\JRE", VmKind::kJre, L"Sun"},
    {L"\\HKEY_LOCAL_MACHINE\\SOFTWARE\\JavaSoft\\Java Development Kit", VmKind::kJdk, L"Sun"},
    {kJavaRuntimeEnvironmentKey, VmKind::kJre, L"Sun"},
    {L"\\HKEY_LOCAL_MACHINE\\SOFTWARE\\IBM\\Java2 Runtime Environment", VmKind::kJdk, L"IBM"},
    {L"\\HKEY_LOCAL_MACHINE\\SOFTWARE\\IBM\\Java Development Kit", VmKind::kJre, L"IBM"},
};

}  // namespace ryn
