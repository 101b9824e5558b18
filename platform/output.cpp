#include "platform/output.h"

#include <windows.h>

#include <algorithm>

#include "platform/text.h"

namespace ryn {
namespace {

std::wstring withWindowsLineEnds(std::wstring_view text) {
  return replaceAll(text, L"\n", L"\r\n");
}

/// False when `handle` is no console. Asking for its mode takes a handle that can be read from, too.
bool writeToConsole(HANDLE handle, std::wstring_view text) {
  DWORD mode = 0;
  if (!GetConsoleMode(handle, &mode)) return false;
  // Up to Windows 7 a console refuses a text of 64 KB, which a long class path reaches.
  static constexpr size_t kPieceSize = 8192;
  while (!text.empty()) {
    size_t size = std::min(text.size(), kPieceSize);
    if (size < text.size() && IS_HIGH_SURROGATE(text[size - 1])) --size;
    DWORD written = 0;
    if (!WriteConsoleW(handle, text.data(), static_cast<DWORD>(size), &written, nullptr)) break;
    text.remove_prefix(written);
  }
  return true;
}

void write(DWORD stream, std::wstring_view text) {
  const HANDLE handle = GetStdHandle(stream);
  const std::wstring lines = withWindowsLineEnds(text);
  if (writeToConsole(handle, lines)) return;
  const std::string ansi = toAnsi(lines);
  std::string_view bytes = ansi;
  DWORD written = 0;
  while (!bytes.empty() &&
         WriteFile(handle, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr)) {
    bytes.remove_prefix(written);
  }
}

}  // namespace

void writeOutput(std::wstring_view text) {
  write(STD_OUTPUT_HANDLE, text);
}

void writeError(std::wstring_view text) {
  write(STD_ERROR_HANDLE, text);
}

void writeErrorToConsole(std::wstring_view text) {
  writeToConsole(GetStdHandle(STD_ERROR_HANDLE), withWindowsLineEnds(text));
}

}  // namespace ryn
