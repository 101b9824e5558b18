#include "platform/dll_search.h"

#include <windows.h>

#include "platform/system_library.h"

namespace ryn {

void narrowDllSearch() {
  const HMODULE kernel = GetModuleHandleW(L"KERNEL32");
  if (const auto set = getFunction<BOOL(WINAPI*)(DWORD)>(kernel, "SetDefaultDllDirectories")) {
    set(LOAD_LIBRARY_SEARCH_SYSTEM32);
  }
  if (const auto set = getFunction<BOOL(WINAPI*)(LPCWSTR)>(kernel, "SetDllDirectoryW")) set(L"");
  if (const auto set = getFunction<BOOL(WINAPI*)(DWORD)>(kernel, "SetSearchPathMode")) {
    set(BASE_SEARCH_PATH_ENABLE_SAFE_SEARCHMODE | BASE_SEARCH_PATH_PERMANENT);
  }
}

}  // namespace ryn
