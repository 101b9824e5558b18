#include <windows.h>
// Behind the declarations that they need.
#include <knownfolders.h>
#include <shlobj.h>
#include <softpub.h>
#include <wintrust.h>

#include "launcher/command_line.h"
#include "platform/bound_function.h"
#include "platform/environment.h"
#include "platform/files.h"
#include "platform/paths.h"
#include "platform/quiet_drives.h"
#include "platform/system_library.h"
#include "ryn/machine.h"
#include "ryn/output.h"
#include "vmsearch/system_vm_probe.h"

namespace ryn {
namespace {

std::string signatureOf(const std::wstring& program) {
  const UniqueModule library = loadSystemLibrary(L"wintrust.dll");
  const RYN_FUNCTION(WinVerifyTrust) verify(library.get());
  if (!verify) return "unchecked";
  WINTRUST_FILE_INFO file = {};
  file.cbStruct = sizeof(file);
  file.pcwszFilePath = program.c_str();
  WINTRUST_DATA data = {};
  data.cbStruct = sizeof(data);
  data.dwUIChoice = WTD_UI_NONE;
  data.fdwRevocationChecks = WTD_REVOKE_NONE;
  data.dwUnionChoice = WTD_CHOICE_FILE;
  data.pFile = &file;
  data.dwStateAction = WTD_STATEACTION_VERIFY;
  // Nothing is fetched to answer this.
  data.dwProvFlags = WTD_CACHE_ONLY_URL_RETRIEVAL;
  GUID policy = WINTRUST_ACTION_GENERIC_VERIFY_V2;
  const auto noWindow = static_cast<HWND>(INVALID_HANDLE_VALUE);
  const LONG answer = verify(noWindow, &policy, &data);
  data.dwStateAction = WTD_STATEACTION_CLOSE;
  verify(noWindow, &policy, &data);
  if (answer == TRUST_E_NOSIGNATURE) return "none";
  return answer == ERROR_SUCCESS ? "valid" : "invalid";
}

}  // namespace

void withThisMachine(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                     const std::function<void(const Situation&, const VmProbe&)>& use) {
  const QuietDrives quiet;
  Situation situation;
  situation.programPath = normalisePath(program.wstring());
  situation.startFolder = currentFolder();
  situation.environment = readEnvironment();
  situation.commandLine = parseCommandLine(
      commandLineOf(situation.programPath, arguments),
      {.exists = pathExists, .folderExists = folderExists, .normalise = normalisePath, .expand = expandPath});
  situation.signature = signatureOf(situation.programPath);
  use(situation, SystemVmProbe());
}

bool hasOwnConsole() {
  DWORD process = 0;
  return GetConsoleProcessList(&process, 1) == 1;
}

std::filesystem::path programFolder() {
  return folderPart(modulePath());
}

std::filesystem::path desktopFolder() {
  const UniqueModule library = loadSystemLibrary(L"shell32.dll");
  const RYN_FUNCTION(SHGetKnownFolderPath) find(library.get());
  wchar_t* path = nullptr;
  if (!find || FAILED(find(FOLDERID_Desktop, 0, nullptr, &path))) return {};
  const std::filesystem::path folder = path;
  CoTaskMemFree(path);
  return folder;
}

}  // namespace ryn
