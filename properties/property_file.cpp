#include "properties/property_file.h"

#include "text/text.h"

namespace ryn {
namespace {

// What the C library's wide read gives at the end of a file; it ends up behind the last line.
constexpr wchar_t kEndOfFile = 0xFFFF;

int hexValue(wchar_t c) {
  if (c >= L'0' && c <= L'9') return c - L'0';
  if (c >= L'a' && c <= L'f') return c - L'a' + 10;
  if (c >= L'A' && c <= L'F') return c - L'A' + 10;
  return -1;
}

std::wstring unescape(std::wstring_view text) {
  std::wstring result;
  result.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] != L'\\' || i + 1 == text.size()) {
      result.push_back(text[i]);
      continue;
    }
    ++i;
    if (text[i] != L'u') {
      result.push_back(L'\\');
      result.push_back(text[i]);
      continue;
    }
    unsigned code = 0;
    for (int digits = 0; digits < 4 && i + 1 < text.size() && hexValue(text[i + 1]) >= 0; ++digits) {
      code = code * 16 + static_cast<unsigned>(hexValue(text[++i]));
    }
    result.push_back(static_cast<wchar_t>(code));
  }
  return result;
}

void appendEscape(std::wstring& text, wchar_t c) {
  static constexpr wchar_t kHexDigits[] = L"0123456789abcdef";
  text += L"\\u";
  for (int shift = 12; shift >= 0; shift -= 4) text.push_back(kHexDigits[(c >> shift) & 0xF]);
}

}  // namespace

void PropertyFile::parse(std::wstring_view text) {
  for (;;) {
    const size_t end = text.find(L'\n');
    if (end == std::wstring_view::npos) break;
    parseLine(text.substr(0, end));
    text.remove_prefix(end + 1);
  }
  parseLine(std::wstring(text) + kEndOfFile);
}

void PropertyFile::parseLine(std::wstring_view line) {
  if (line.starts_with(L'#')) return;
  const size_t separator = line.find(L'=');
  if (separator == std::wstring_view::npos) return;

  std::wstring value(trim(line.substr(separator + 1)));
  if (value.ends_with(L'\\')) value.back() = L' ';
  entries_[unescape(trim(line.substr(0, separator)))] = unescape(value);
}

std::wstring PropertyFile::get(std::wstring_view key, std::wstring_view defaultValue) const {
  const auto found = entries_.find(key);
  return std::wstring(found == entries_.end() ? defaultValue : found->second);
}

bool PropertyFile::hasKeyWithPrefix(std::wstring_view prefix) const {
  const auto found = entries_.lower_bound(prefix);
  return found != entries_.end() && found->first.starts_with(prefix);
}

std::wstring escapeProperty(std::wstring_view text) {
  std::wstring result;
  result.reserve(text.size());
  for (const wchar_t c : text) {
    if (c == L'\\') {
      result += L"\\\\";
    } else if (c > 127) {
      appendEscape(result, c);
    } else {
      result.push_back(c);
    }
  }
  return result;
}

std::wstring escapeAnyProperty(std::wstring_view text) {
  std::wstring result;
  result.reserve(text.size());
  for (const wchar_t c : text) {
    if (c < L' ' || (c == L' ' && result.empty())) {
      appendEscape(result, c);
    } else {
      result += escapeProperty({&c, 1});
    }
  }
  return result;
}

}  // namespace ryn
