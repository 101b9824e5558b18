// Times the search for installed VMs: bench_search ROUNDS SMALL_PATH_FILE SMALL_KEYS LARGE_PATH_FILE
// LARGE_KEYS. The path files hold a PATH text each; that many registered VMs are written below a throw-away
// key that stands in for HKEY_LOCAL_MACHINE. Prints each round's milliseconds for small and large, and the
// number of VMs found.
#include <windows.h>

#include <cstdio>
#include <string>

#include "platform/text.h"
#include "vmsearch/installed_search.h"
#include "vmsearch/system_vm_probe.h"

namespace {

constexpr wchar_t kRoot[] = L"Software\\RynBench";

std::wstring readText(const wchar_t* path) {
  std::string bytes;
  if (std::FILE* file = _wfopen(path, L"rb")) {
    char buffer[4096];
    while (const size_t size = std::fread(buffer, 1, sizeof(buffer), file)) bytes.append(buffer, size);
    std::fclose(file);
  }
  return ryn::fromUtf8(bytes);
}

void registerVms(int count, const std::wstring& home) {
  RegDeleteTreeW(HKEY_CURRENT_USER, kRoot);
  HKEY root = nullptr;
  RegCreateKeyExW(HKEY_CURRENT_USER, kRoot, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &root, nullptr);
  RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
  for (int i = 0; i < count; ++i) {
    HKEY key = nullptr;
    const std::wstring name = L"SOFTWARE\\JavaSoft\\JRE\\17.0." + std::to_wstring(i);
    RegCreateKeyExW(root, name.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr);
    RegSetValueExW(key, L"JavaHome", 0, REG_SZ, reinterpret_cast<const BYTE*>(home.c_str()),
                   static_cast<DWORD>((home.size() + 1) * sizeof(wchar_t)));
    RegCloseKey(key);
  }
  RegOverridePredefKey(HKEY_LOCAL_MACHINE, root);
  RegCloseKey(root);
}

double search(const std::wstring& path, size_t& found) {
  ryn::SystemVmProbe probe;
  ryn::VmRules rules;
  rules.validVmList = L"JRE JDK";
  rules.platform = 2;
  LARGE_INTEGER frequency, before, after;
  QueryPerformanceFrequency(&frequency);
  QueryPerformanceCounter(&before);
  found = ryn::searchInstalledVms(L"", path, rules, probe, false).considered.size();
  QueryPerformanceCounter(&after);
  return 1000.0 * static_cast<double>(after.QuadPart - before.QuadPart) /
         static_cast<double>(frequency.QuadPart);
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
  if (count != 6) return 2;
  const std::wstring home = L"C:\\windows";
  for (int round = 0; round < _wtoi(arguments[1]); ++round) {
    double ms[2];
    size_t found[2];
    for (int size = 0; size < 2; ++size) {
      registerVms(_wtoi(arguments[3 + 2 * size]), home);
      ms[size] = search(readText(arguments[2 + 2 * size]), found[size]);
    }
    std::printf("%.3f %.3f %d %d\n", ms[0], ms[1], static_cast<int>(found[0]), static_cast<int>(found[1]));
  }
  RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
  RegDeleteTreeW(HKEY_CURRENT_USER, kRoot);
  return 0;
}
