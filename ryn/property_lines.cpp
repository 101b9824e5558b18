#include "ryn/property_lines.h"

#include <tuple>

#include "text/text.h"

namespace ryn {

PropertyLines::PropertyLines(std::string file, const std::wstring& text) : file_(std::move(file)) {
  properties_.parse(text);
  std::vector<std::wstring> pieces = split(text, L'\n');
  endsInLine_ = pieces.back().empty();
  for (size_t i = 0; i < pieces.size(); ++i) {
    const bool isLast = i + 1 == pieces.size();
    if (isLast && endsInLine_) break;
    // Each by itself, by the rules of the whole.
    PropertyFile one;
    one.parse(isLast ? pieces[i] : pieces[i] + L"\n");
    Line line{.number = i + 1, .text = std::move(pieces[i]), .key = {}, .value = {}};
    if (!one.entries().empty()) {
      std::tie(line.key, line.value) = *one.entries().begin();
      line.isEntry = true;
    }
    lines_.push_back(std::move(line));
  }
}

size_t PropertyLines::lineOf(std::wstring_view key) const {
  size_t number = 1;
  for (const Line& line : lines_) {
    if (line.isEntry && line.key == key) number = line.number;
  }
  return number;
}

}  // namespace ryn
