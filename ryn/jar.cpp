#include "ryn/jar.h"

#include <algorithm>
#include <string_view>

#include "text/text.h"

namespace ryn {
namespace {

/// The first line of `text`, which it takes away.
std::string_view takeLine(std::string_view& text) {
  const size_t end = std::min(text.find_first_of("\r\n"), text.size());
  const std::string_view line = text.substr(0, end);
  text.remove_prefix(end);
  text.remove_prefix(text.starts_with("\r\n") ? 2 : std::min<size_t>(text.size(), 1));
  return line;
}

}  // namespace

std::map<std::string, std::string> manifestOf(const ZipFile& jar) {
  std::map<std::string, std::string> attributes;
  const Bytes content = jar.read("META-INF/MANIFEST.MF").value_or(Bytes());
  std::string_view rest(reinterpret_cast<const char*>(content.data()), content.size());
  for (std::string line(takeLine(rest)); !line.empty(); line = takeLine(rest)) {
    // A line that begins with a blank continues the one before, within a character of UTF-8, too.
    while (rest.starts_with(' ')) line += takeLine(rest).substr(1);
    const size_t colon = line.find(": ");
    if (colon == std::string::npos) continue;
    attributes[toUtf8(lowerCase(fromUtf8(line.substr(0, colon))))] = line.substr(colon + 2);
  }
  return attributes;
}

}  // namespace ryn
