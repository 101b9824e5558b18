#pragma once

#include <map>
#include <string>

#include "platform/errors.h"
#include "resources/resource.h"

namespace ryn {

/// A string ID without text: "invalid key".
class StringTableException : public WideException {
 public:
  using WideException::WideException;
};

/// The program's texts in the language of the user interface, read from the resources of the running
/// program on first request and kept.
class StringTable {
 public:
  /// A copy of the text with the given ID, at most 255 characters. Throws StringTableException "invalid
  /// key" for an ID without text.
  static std::wstring get(unsigned id);

 private:
  static StringTable& instance();

  std::map<unsigned, std::wstring> texts_;
};

}  // namespace ryn
