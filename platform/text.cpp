#include "platform/text.h"

#include <windows.h>

#include <cwchar>

namespace ryn {
namespace {

std::string narrow(std::wstring_view text, UINT codePage) {
  const int length = static_cast<int>(text.size());
  const int size = WideCharToMultiByte(codePage, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
  std::string result(static_cast<size_t>(size), '\0');
  WideCharToMultiByte(codePage, 0, text.data(), length, result.data(), size, nullptr, nullptr);
  return result;
}

}  // namespace

std::wstring lowerCase(std::wstring_view text) {
  std::wstring result(text);
  for (wchar_t& c : result) {
    if (c >= L'A' && c <= L'Z') c = static_cast<wchar_t>(c - L'A' + L'a');
  }
  return result;
}

std::wstring upperCase(std::wstring_view text) {
  std::wstring result(text);
  for (wchar_t& c : result) {
    if (c >= L'a' && c <= L'z') c = static_cast<wchar_t>(c - L'a' + L'A');
  }
  return result;
}

bool equalIgnoringCase(std::wstring_view a, std::wstring_view b) {
  // CompareStringOrdinal takes a length of 0 for an error on some systems.
  if (a.empty() || b.empty()) return a.empty() && b.empty();
  return CompareStringOrdinal(a.data(), static_cast<int>(a.size()), b.data(), static_cast<int>(b.size()),
                              TRUE) == CSTR_EQUAL;
}

std::wstring foldCase(std::wstring_view text) {
  std::wstring folded(text);
  CharUpperBuffW(folded.data(), static_cast<DWORD>(folded.size()));
  return folded;
}

std::wstring_view trim(std::wstring_view text) {
  while (!text.empty() && text.front() <= L' ') text.remove_prefix(1);
  while (!text.empty() && text.back() <= L' ') text.remove_suffix(1);
  return text;
}

std::vector<std::wstring> split(std::wstring_view text, wchar_t separator) {
  std::vector<std::wstring> pieces;
  for (;;) {
    const size_t at = text.find(separator);
    pieces.emplace_back(text.substr(0, at));
    if (at == std::wstring_view::npos) return pieces;
    text.remove_prefix(at + 1);
  }
}

std::wstring replaceFirst(std::wstring_view text, std::wstring_view placeholder, std::wstring_view value) {
  std::wstring result(text);
  const size_t at = result.find(placeholder);
  if (at != std::wstring::npos) result.replace(at, placeholder.size(), value);
  return result;
}

std::wstring replaceAll(std::wstring_view text, std::wstring_view from, std::wstring_view to) {
  std::wstring result(text);
  for (size_t at = result.find(from); at != std::wstring::npos; at = result.find(from, at + to.size())) {
    result.replace(at, from.size(), to);
  }
  return result;
}

std::wstring concat(std::initializer_list<std::wstring_view> texts) {
  std::wstring result;
  for (const std::wstring_view text : texts) result += text;
  return result;
}

std::wstring decimal(long long number) {
  const bool negative = number < 0;
  unsigned long long rest =
      negative ? 0ULL - static_cast<unsigned long long>(number) : static_cast<unsigned long long>(number);
  std::wstring digits;
  do {
    digits.insert(digits.begin(), static_cast<wchar_t>(L'0' + rest % 10));
    rest /= 10;
  } while (rest != 0);
  return negative ? L"-" + digits : digits;
}

int parseInteger(std::wstring_view text) {
  const std::wstring terminated(text);
  return static_cast<int>(std::wcstol(terminated.c_str(), nullptr, 10));
}

std::wstring widenBytes(std::string_view bytes) {
  std::wstring result;
  result.reserve(bytes.size());
  for (const char byte : bytes) result.push_back(static_cast<unsigned char>(byte));
  return result;
}

std::string toLatin1WithEscapes(std::wstring_view text) {
  static constexpr char kHexDigits[] = "0123456789abcdef";
  std::string result;
  result.reserve(text.size());
  for (const wchar_t c : text) {
    if (c < 256) {
      result.push_back(static_cast<char>(c));
      continue;
    }
    result += "\\u";
    for (int shift = 12; shift >= 0; shift -= 4) result.push_back(kHexDigits[(c >> shift) & 0xF]);
  }
  return result;
}

std::string toAnsi(std::wstring_view text) {
  return narrow(text, CP_ACP);
}

std::string toUtf8(std::wstring_view text) {
  return narrow(text, CP_UTF8);
}

std::wstring fromUtf8(std::string_view text) {
  const int length = static_cast<int>(text.size());
  const int size = MultiByteToWideChar(CP_UTF8, 0, text.data(), length, nullptr, 0);
  std::wstring result(static_cast<size_t>(size), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, text.data(), length, result.data(), size);
  return result;
}

}  // namespace ryn
