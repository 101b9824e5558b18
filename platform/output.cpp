#include "platform/output.h"

#include <io.h>
#include <windows.h>

#include <cstdio>

#include "platform/text.h"

namespace ryn {
namespace {

void write(std::FILE* stream, std::wstring_view text) {
  const int descriptor = _fileno(stream);
  // A GUI program that was started without standard handles has streams without descriptors.
  if (descriptor < 0) return;

  const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(descriptor));
  DWORD mode = 0;
  if (GetConsoleMode(handle, &mode)) {
    std::fflush(stream);
    DWORD written = 0;
    WriteConsoleW(handle, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
    return;
  }
  const std::string bytes = toAnsi(text);
  std::fwrite(bytes.data(), 1, bytes.size(), stream);
  std::fflush(stream);
}

}  // namespace

void writeOutput(std::wstring_view text) {
  write(stdout, text);
}

void writeError(std::wstring_view text) {
  write(stderr, text);
}

}  // namespace ryn
