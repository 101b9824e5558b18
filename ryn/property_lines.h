#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "properties/property_file.h"

namespace ryn {

/// A property file that remembers its lines.
class PropertyLines {
 public:
  struct Line {
    /// From 1.
    size_t number = 0;
    /// As it stands in the file.
    std::wstring text;
    /// What the launcher reads in it; both empty for a line that is skipped.
    std::wstring key;
    std::wstring value;
    bool isEntry = false;
  };

  /// `file` is the name for findings, `text` what textFile gives.
  PropertyLines(std::string file, const std::wstring& text);

  const std::string& file() const { return file_; }
  /// What the launcher reads in the whole file.
  const PropertyFile& properties() const { return properties_; }
  const std::vector<Line>& lines() const { return lines_; }
  bool endsInLine() const { return endsInLine_; }
  /// The value that counts; empty when there is none.
  std::wstring get(std::wstring_view key) const { return properties_.get(key); }
  bool has(std::wstring_view key) const { return properties_.entries().contains(key); }
  /// Where the value that counts stands; 1 when there is none.
  size_t lineOf(std::wstring_view key) const;

 private:
  std::string file_;
  PropertyFile properties_;
  std::vector<Line> lines_;
  bool endsInLine_ = true;
};

}  // namespace ryn
