#pragma once

#include <stdexcept>

namespace ryn {

/// What keeps an image, or something in it, from being read or changed. `what()` is a clause in UTF-8,
/// without a full stop, to be put behind the file's name: "it is signed, ...".
class ImageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Throws an ImageError with that clause unless what it is about holds.
inline void require(bool holds, const char* complaint) {
  if (!holds) throw ImageError(complaint);
}

}  // namespace ryn
