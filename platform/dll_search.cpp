#include "platform/dll_search.h"

#include "platform/bound_function.h"

namespace ryn {

void narrowDllSearch() {
  const HMODULE kernel = kernelLibrary();
  if (const RYN_FUNCTION(SetDefaultDllDirectories) set(kernel); set) set(LOAD_LIBRARY_SEARCH_SYSTEM32);
  if (const RYN_FUNCTION(SetDllDirectoryW) set(kernel); set) set(L"");
  if (const RYN_FUNCTION(SetSearchPathMode) set(kernel); set) {
    set(BASE_SEARCH_PATH_ENABLE_SAFE_SEARCHMODE | BASE_SEARCH_PATH_PERMANENT);
  }
}

}  // namespace ryn
