#include "image/manifest.h"

#include "image/image_error.h"

namespace ryn {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";

/// `name` as the manifest spells it.
std::string_view nameOf(ExecutionLevel level) {
  switch (level) {
    case ExecutionLevel::kHighestAvailable:
      return "highestAvailable";
    case ExecutionLevel::kRequireAdministrator:
      return "requireAdministrator";
    case ExecutionLevel::kAsInvoker:
      break;
  }
  return "asInvoker";
}

/// Where the value of the attribute "level" stands in a tag that begins at `at` with the end of its name;
/// npos for none.
size_t levelValue(std::string_view text, size_t at, size_t& end) {
  for (;;) {
    at = text.find_first_not_of(kBlanks, at);
    const size_t equals = text.find('=', at);
    const size_t quote = text.find_first_of("\"'", at);
    const size_t close = text.find('>', at);
    if (equals == std::string_view::npos || quote == std::string_view::npos || close < quote ||
        quote < equals) {
      return std::string_view::npos;
    }
    end = text.find(text[quote], quote + 1);
    if (end == std::string_view::npos) return end;
    if (text.substr(at, text.find_first_of(" \t\r\n=", at) - at) == "level") return quote + 1;
    at = end + 1;
  }
}

}  // namespace

std::string withExecutionLevel(std::string_view manifest, ExecutionLevel level) {
  for (size_t at = manifest.find('<'); at != std::string_view::npos; at = manifest.find('<', at + 1)) {
    if (manifest.substr(at).starts_with("<!--")) {
      at = manifest.find("-->", at);
      if (at == std::string_view::npos) break;
      continue;
    }
    const size_t nameEnd = manifest.find_first_of(" \t\r\n/>", at);
    if (nameEnd == std::string_view::npos) break;
    // With the prefix of a namespace or without.
    const std::string_view name = manifest.substr(at + 1, nameEnd - at - 1);
    if (name.substr(name.find(':') + 1) != "requestedExecutionLevel") continue;
    size_t end = 0;
    const size_t start = levelValue(manifest, nameEnd, end);
    if (start == std::string_view::npos) break;
    std::string result(manifest.substr(0, start));
    result += nameOf(level);
    result += manifest.substr(end);
    return result;
  }
  throw ImageError("its manifest does not say an execution level");
}

}  // namespace ryn
