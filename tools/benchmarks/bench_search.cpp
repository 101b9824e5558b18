// Times the search for installed VMs: bench_search ROUNDS HOMES SMALL_PATH_FILE SMALL_KEYS LARGE_PATH_FILE
// LARGE_KEYS. The path files hold a PATH text each; that many registered VMs, with the folders "0", "1" and
// so on of HOMES, are written below a throw-away key that stands in for HKEY_LOCAL_MACHINE. Prints each
// round's milliseconds for small and large, and the number of VMs seen. The last registered VM has the
// highest version; a search that does not choose it has failed.
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

void registerVms(int count, const std::wstring& homes) {
  RegDeleteTreeW(HKEY_CURRENT_USER, kRoot);
  HKEY root = nullptr;
  RegCreateKeyExW(HKEY_CURRENT_USER, kRoot, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &root, nullptr);
  RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
  for (int i = 0; i < count; ++i) {
    HKEY key = nullptr;
    const std::wstring name = L"SOFTWARE\\JavaSoft\\JRE\\21.0." + std::to_wstring(i);
    const std::wstring home = homes + L"\\" + std::to_wstring(i);
    RegCreateKeyExW(root, name.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr);
    RegSetValueExW(key, L"JavaHome", 0, REG_SZ, reinterpret_cast<const BYTE*>(home.c_str()),
                   static_cast<DWORD>((home.size() + 1) * sizeof(wchar_t)));
    RegCloseKey(key);
  }
  RegOverridePredefKey(HKEY_LOCAL_MACHINE, root);
  RegCloseKey(root);
}

// Milliseconds; less than 0 when anything but the VM in `expected` was chosen.
double search(const std::wstring& path, const std::wstring& expected, size_t& seen) {
  ryn::SystemVmProbe probe;
  ryn::VmRules rules;
  rules.validVmList = L"JRE JDK";
  rules.platform = 2;
  LARGE_INTEGER frequency, before, after;
  QueryPerformanceFrequency(&frequency);
  QueryPerformanceCounter(&before);
  const ryn::VmChoice choice = ryn::searchInstalledVms(L"", path, rules, probe, false);
  QueryPerformanceCounter(&after);
  seen = choice.considered.size();
  if (!choice.chosen || choice.chosen->folder != expected) return -1;
  return 1000.0 * static_cast<double>(after.QuadPart - before.QuadPart) /
         static_cast<double>(frequency.QuadPart);
}

}  // namespace

int wmain(int count, wchar_t** arguments) {
  if (count != 7) return 2;
  const std::wstring homes = arguments[2];
  int failed = 0;
  for (int round = 0; round < _wtoi(arguments[1]) && failed == 0; ++round) {
    double ms[2];
    size_t seen[2];
    for (int size = 0; size < 2; ++size) {
      const int keys = _wtoi(arguments[4 + 2 * size]);
      registerVms(keys, homes);
      ms[size] =
          search(readText(arguments[3 + 2 * size]), homes + L"\\" + std::to_wstring(keys - 1), seen[size]);
      failed += ms[size] < 0;
    }
    std::printf("%.3f %.3f %d %d\n", ms[0], ms[1], static_cast<int>(seen[0]), static_cast<int>(seen[1]));
  }
  RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
  RegDeleteTreeW(HKEY_CURRENT_USER, kRoot);
  if (failed != 0) std::fputs("the search did not choose the VM that it should\n", stderr);
  return failed;
}
