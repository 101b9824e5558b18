#include <windows.h>

#include "launcher/entry.h"
#include "platform/dll_search.h"

namespace {

// Runs with the static initialisers, before anything can ask for a library.
[[maybe_unused]] const bool dllSearchNarrowed = (ryn::narrowDllSearch(), true);

}  // namespace

int WINAPI wWinMain(HINSTANCE instance, HINSTANCE /*previous*/, PWSTR /*commandLine*/, int /*show*/) {
  return ryn::runEntry(instance);
}
