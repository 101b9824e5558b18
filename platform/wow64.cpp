#include "platform/wow64.h"

#include <windows.h>

#include <vector>

#include "platform/paths.h"
#include "platform/system_library.h"

namespace ryn {
namespace {

using DisableFunction = BOOL(WINAPI*)(PVOID*);
using RevertFunction = BOOL(WINAPI*)(PVOID);
using EnableFunction = BOOLEAN(WINAPI*)(BOOLEAN);
using Wow64FolderFunction = UINT(WINAPI*)(LPWSTR, UINT);

std::vector<PVOID>& savedStates() {
  static std::vector<PVOID> states;
  return states;
}

}  // namespace

bool runsUnderWow64() {
  const auto isWow64Process = getKernelFunction<BOOL(WINAPI*)(HANDLE, PBOOL)>("IsWow64Process");
  BOOL answer = FALSE;
  return isWow64Process != nullptr && isWow64Process(GetCurrentProcess(), &answer) && answer;
}

std::wstring wow64SystemFolder() {
  const auto getFolder = getKernelFunction<Wow64FolderFunction>("GetSystemWow64DirectoryW");
  if (getFolder == nullptr) return {};
  wchar_t buffer[kPathBufferSize];
  const UINT length = getFolder(buffer, kPathBufferSize);
  return length < kPathBufferSize ? std::wstring(buffer, length) : std::wstring();
}

void disableFileSystemRedirection() {
  const auto disable = getKernelFunction<DisableFunction>("Wow64DisableWow64FsRedirection");
  const auto revert = getKernelFunction<RevertFunction>("Wow64RevertWow64FsRedirection");
  if (disable != nullptr && revert != nullptr) {
    PVOID oldState = nullptr;
    if (disable(&oldState)) savedStates().push_back(oldState);
    return;
  }
  const auto enable = getKernelFunction<EnableFunction>("Wow64EnableWow64FsRedirection");
  if (enable != nullptr) enable(FALSE);
}

void revertFileSystemRedirection() {
  const auto revert = getKernelFunction<RevertFunction>("Wow64RevertWow64FsRedirection");
  if (revert == nullptr || savedStates().empty()) return;
  revert(savedStates().back());
  savedStates().pop_back();
}

}  // namespace ryn
