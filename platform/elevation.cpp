#include "platform/elevation.h"

#include <windows.h>

#include "platform/unique_handle.h"

namespace ryn {

bool isElevatedProcess() {
  UniqueHandle token;
  TOKEN_ELEVATION elevation = {};
  DWORD size = 0;
  return !OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, token.receive()) ||
         !GetTokenInformation(token.get(), TokenElevation, &elevation, sizeof(elevation), &size) ||
         elevation.TokenIsElevated != 0;
}

}  // namespace ryn
