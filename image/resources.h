#pragma once

#include <map>
#include <optional>
#include <string>

#include "image/pe_image.h"
#include "text/little_endian.h"

namespace ryn {

inline constexpr uint16_t kRtIcon = 3;
inline constexpr uint16_t kRtString = 6;
inline constexpr uint16_t kRtGroupIcon = 14;
inline constexpr uint16_t kRtVersion = 16;
inline constexpr uint16_t kRtManifest = 24;

/// A type or a name of a resource: a number, or a text. The loader looks for texts in capitals, so a new one
/// has to be written in them. Two that differ in the case of ASCII letters are the same.
class ResourceId {
 public:
  ResourceId(uint16_t number) : number_(number) {}
  /// Not empty.
  ResourceId(std::wstring text);

  bool isText() const { return !text_.empty(); }
  const std::wstring& text() const { return text_; }
  uint16_t number() const { return number_; }

  /// The order of a directory, in which the loader searches by halves: texts by their UTF-16 units, then
  /// numbers.
  bool operator<(const ResourceId& other) const;
  bool operator==(const ResourceId& other) const;

 private:
  std::wstring text_;
  std::wstring capitals_;
  uint16_t number_ = 0;
};

struct ResourceKey {
  ResourceId type;
  ResourceId name;
  /// Windows language identifier; 0 is neutral.
  uint16_t language = 0;

  bool operator<(const ResourceKey& other) const;
  bool operator==(const ResourceKey&) const = default;
};

struct Resource {
  Bytes data;
  uint32_t codePage = 0;

  bool operator==(const Resource&) const = default;
};

/// Every resource of an image, in the order of its directory.
using Resources = std::map<ResourceKey, Resource>;

/// All resources of an image; none for one without a directory. Throws ImageError when the directory is
/// damaged.
Resources readResources(const PeImage& image);

/// The program with `resources` instead of its own, of any size: what stands behind the section .rsrc moves
/// in memory and file (relocations, debugging data, anything behind the last section). Everything else is
/// kept, byte for byte; sizes, the relocations' address and the check sum in the headers follow.
///
/// Throws ImageError for a signed image, for one whose resources are not in a section of their own, and when
/// a section behind them cannot move, because the program refers to it.
Bytes withResources(const PeImage& image, const Resources& resources);

/// The first language in which a resource exists.
std::optional<uint16_t> firstLanguage(const Resources& resources, const ResourceId& type,
                                      const ResourceId& name);

/// Puts a resource in place of the one of that type and name in all its languages, under the first of these
/// (a new one is neutral): a reader that leaves the language to the system must not find another.
void replaceInAllLanguages(Resources& resources, const ResourceId& type, const ResourceId& name, Bytes data);

}  // namespace ryn
