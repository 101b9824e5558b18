#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "text/little_endian.h"
#include "text/text.h"

namespace ryn::fuzz {

/// Ends the run with a find when `held` is false.
inline void require(bool held, const char* promise) {
  if (held) return;
  std::fprintf(stderr, "broken promise: %s\n", promise);
  std::abort();
}

inline std::string_view bytesAsText(const uint8_t* data, size_t size) {
  return {reinterpret_cast<const char*>(data), size};
}

/// One statement of an input that is a script: a letter, a colon and what it is about.
struct Statement {
  wchar_t letter = 0;
  std::wstring text;
};

/// The lines of a UTF-8 text; those of another form are left out.
inline std::vector<Statement> statements(const uint8_t* data, size_t size) {
  std::vector<Statement> result;
  for (const std::wstring& line : split(fromUtf8(bytesAsText(data, size)), L'\n')) {
    if (line.size() >= 2 && line[1] == L':') result.push_back({line[0], line.substr(2)});
  }
  return result;
}

}  // namespace ryn::fuzz

/// What libFuzzer calls.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);
