#pragma once

#include <vector>

#include "image/resources.h"
#include "text/little_endian.h"

namespace ryn {

/// One picture of an icon, as a file or a resource holds it: a bitmap with its mask, or a PNG.
struct IconImage {
  /// In pixels, 1 to 256.
  unsigned width = 0;
  unsigned height = 0;
  /// Of a palette, 0 for none or 256.
  uint8_t colours = 0;
  uint16_t planes = 1;
  uint16_t bitCount = 0;
  Bytes data;

  bool operator==(const IconImage&) const = default;
};

/// The pictures of an .ico file, or the one of a .png file; which of them it is shows in the bytes. Sizes and
/// colours are those of the pictures themselves, whatever the list in the file says of them: Windows chooses
/// by them.
///
/// A .png has to be square, of at most 256 pixels, with colours and transparency of 8 bits each, the only
/// kind that Windows documents for icons; it is not scaled. Throws ImageError for anything else.
std::vector<IconImage> readIcon(ByteView file);

/// Puts `icon` in place of the icon group `name`, in all languages, with its pictures under numbers that
/// other groups do not use. Pictures that nobody uses any more are removed.
void setIconGroup(Resources& resources, const ResourceId& name, const std::vector<IconImage>& icon);

/// The pictures of an icon group in its first language; empty when there is no such group.
std::vector<IconImage> iconGroup(const Resources& resources, const ResourceId& name);

}  // namespace ryn
