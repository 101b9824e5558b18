#include "text/text.h"

#include <algorithm>
#include <climits>
#include <cstdint>

namespace ryn {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

bool isHighSurrogate(char32_t unit) {
  return unit >= 0xD800 && unit < 0xDC00;
}

bool isLowSurrogate(char32_t unit) {
  return unit >= 0xDC00 && unit < 0xE000;
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

std::wstring hexadecimal(std::span<const uint8_t> bytes) {
  static constexpr wchar_t kDigits[] = L"0123456789abcdef";
  std::wstring text;
  for (const uint8_t byte : bytes) {
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

namespace {

struct Digits {
  bool negative = false;
  // At most `limit` of readDigits.
  uint64_t magnitude = 0;
};

// A number as the C library's functions read it: blanks, a sign, digits up to the first other character.
Digits readDigits(std::wstring_view text, uint64_t limit) {
  size_t at = 0;
  while (at < text.size() && (text[at] == L' ' || (text[at] >= L'\t' && text[at] <= L'\r'))) ++at;
  Digits result;
  result.negative = at < text.size() && text[at] == L'-';
  if (at < text.size() && (text[at] == L'-' || text[at] == L'+')) ++at;
  for (; at < text.size() && text[at] >= L'0' && text[at] <= L'9'; ++at) {
    const auto digit = static_cast<uint64_t>(text[at] - L'0');
    const bool over = result.magnitude > (limit - digit) / 10;
    result.magnitude = over ? limit : result.magnitude * 10 + digit;
  }
  return result;
}

}  // namespace

int parseInteger(std::wstring_view text) {
  const Digits digits = readDigits(text, uint64_t{INT_MAX} + 1);
  const auto value = static_cast<int64_t>(digits.magnitude);
  return static_cast<int>(digits.negative ? -value : std::min<int64_t>(value, INT_MAX));
}

uint64_t parseUnsigned(std::wstring_view text) {
  const Digits digits = readDigits(text, UINT64_MAX);
  return digits.negative && digits.magnitude != UINT64_MAX ? 0 - digits.magnitude : digits.magnitude;
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

std::string toUtf8(std::wstring_view text) {
  std::string result;
  result.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    auto point = static_cast<char32_t>(text[i]);
    if (isHighSurrogate(point) && i + 1 < text.size() && isLowSurrogate(static_cast<char32_t>(text[i + 1]))) {
      point = 0x10000 + ((point - 0xD800) << 10) + (static_cast<char32_t>(text[++i]) - 0xDC00);
    } else if (isHighSurrogate(point) || isLowSurrogate(point)) {
      point = kReplacement;
    }
    if (point < 0x80) {
      result.push_back(static_cast<char>(point));
      continue;
    }
    const unsigned following = point < 0x800 ? 1 : point < 0x10000 ? 2 : 3;
    // The lead byte begins with as many ones as the character has bytes.
    result.push_back(static_cast<char>(0xFF80U >> following | point >> 6 * following));
    for (unsigned rest = following; rest-- > 0;) {
      result.push_back(static_cast<char>(0x80 | (point >> 6 * rest & 0x3F)));
    }
  }
  return result;
}

std::wstring fromUtf8(std::string_view text) {
  std::wstring result;
  result.reserve(text.size());
  for (size_t i = 0; i < text.size();) {
    const auto lead = static_cast<unsigned char>(text[i++]);
    if (lead < 0x80) {
      result.push_back(lead);
      continue;
    }
    unsigned following = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
    char32_t point = lead & (0x3FU >> following);
    // The second byte is where overlong forms, surrogates and numbers beyond U+10FFFF show.
    unsigned lowest = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    unsigned highest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    bool good = lead >= 0xC2 && lead <= 0xF4;
    for (; good && following > 0; --following) {
      const unsigned next = i < text.size() ? static_cast<unsigned char>(text[i]) : 0;
      good = next >= lowest && next <= highest;
      if (!good) break;
      point = point << 6 | (next & 0x3F);
      lowest = 0x80;
      highest = 0xBF;
      ++i;
    }
    if (!good) point = kReplacement;
    if (point >= 0x10000) {
      result.push_back(static_cast<wchar_t>(0xD800 + ((point - 0x10000) >> 10)));
      point = 0xDC00 + (point & 0x3FF);
    }
    result.push_back(static_cast<wchar_t>(point));
  }
  return result;
}

}  // namespace ryn
