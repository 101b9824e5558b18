#include <windows.h>
#include "resources/string_table.h"
#include "properties/environment_export.h"
#include "platform/registry_key.h"
#include "platform/version_resource.h"
#include "platform/user_prompt.h"
using namespace ryn;
int WINAPI wWinMain(HINSTANCE, HINSTANCE, PWSTR, int) {
  try { exportEnvironment(readEnvironment()); VersionReader().read(L"x"); RegistryKey(L"SOFTWARE\\xx", KEY_READ); } catch (const WideException& e) { MessageBoxPrompt().showError(e.message(), StringTable::get(110)); return 2; }
  return (int)StringTable::get(101).size();
}
