#include "platform/wow64.h"

#include "platform/bound_function.h"
#include "platform/paths.h"

namespace ryn {

bool runsUnderWow64() {
  const RYN_FUNCTION(IsWow64Process) isWow64Process(kernelLibrary());
  BOOL answer = FALSE;
  return isWow64Process && isWow64Process(GetCurrentProcess(), &answer) && answer;
}

std::wstring wow64SystemFolder() {
  const RYN_FUNCTION(GetSystemWow64DirectoryW) getFolder(kernelLibrary());
  if (!getFolder) return {};
  wchar_t buffer[kPathBufferSize];
  const UINT length = getFolder(buffer, kPathBufferSize);
  return length < kPathBufferSize ? std::wstring(buffer, length) : std::wstring();
}

void disableFileSystemRedirection() {
  const RYN_FUNCTION(Wow64DisableWow64FsRedirection) disable(kernelLibrary());
  const RYN_FUNCTION(Wow64RevertWow64FsRedirection) revert(kernelLibrary());
  if (disable && revert) {
    PVOID oldState = nullptr;
    disable(&oldState);
    return;
  }
  // A Windows with half of the pair has only the switch that the pair replaced.
  const RYN_FUNCTION(Wow64EnableWow64FsRedirection) enable(kernelLibrary());
  if (enable) enable(FALSE);
}

}  // namespace ryn
