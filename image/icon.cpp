#include "image/icon.h"

#include <algorithm>
#include <set>

#include "image/image_error.h"

namespace ryn {
namespace {

constexpr size_t kHeaderSize = 6;
constexpr size_t kFileEntrySize = 16;
/// Like that of a file, with a number of two bytes at its end in place of an offset of four.
constexpr size_t kGroupEntrySize = 14;
constexpr uint16_t kIconKind = 1;
constexpr unsigned kLargestSize = 256;
constexpr uint8_t kPngSignature[] = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
constexpr size_t kPngHeaderSize = 33;

uint32_t bigEndian(ByteView bytes, size_t at) {
  uint32_t number = 0;
  for (const uint8_t byte : bytes.subspan(at, 4)) number = number << 8 | byte;
  return number;
}

bool isPng(ByteView bytes) {
  return bytes.size() >= sizeof(kPngSignature) &&
         std::equal(std::begin(kPngSignature), std::end(kPngSignature), bytes.begin());
}

/// Size and colours from a PNG whose parts all are there.
IconImage readPng(ByteView bytes) {
  static constexpr char kBroken[] = "its PNG data are damaged";
  static constexpr uint32_t kHeaderTag = 0x49484452;
  static constexpr uint32_t kEndTag = 0x49454E44;
  require(bytes.size() >= kPngHeaderSize && bigEndian(bytes, 8) == 13 && bigEndian(bytes, 12) == kHeaderTag,
          kBroken);
  for (size_t at = sizeof(kPngSignature);;) {
    require(bytes.size() - at >= 12, kBroken);
    const uint32_t length = bigEndian(bytes, at);
    require(length <= bytes.size() - at - 12, kBroken);
    if (bigEndian(bytes, at + 4) == kEndTag) break;
    at += size_t{length} + 12;
  }
  // Samples of a pixel by the colour type, 0 for types that do not exist.
  static constexpr uint16_t kSamples[] = {1, 0, 3, 1, 2, 0, 4};
  const uint8_t colourType = bytes[25];
  require(colourType < std::size(kSamples) && kSamples[colourType] != 0, kBroken);
  const uint32_t width = bigEndian(bytes, 16);
  const uint32_t height = bigEndian(bytes, 20);
  require(width >= 1 && height >= 1, kBroken);
  require(width <= kLargestSize && height <= kLargestSize, "it is larger than 256 x 256 pixels");
  const auto bitCount = static_cast<uint16_t>(kSamples[colourType] * bytes[24]);
  return {width, height, 0, 1, bitCount, Bytes(bytes.begin(), bytes.end())};
}

/// A bitmap without its file header; its height counts the mask, too.
IconImage readBitmap(ByteView bytes) {
  static constexpr char kBroken[] = "a picture in it is neither a bitmap nor a PNG";
  require(bytes.size() >= 40 && readU32(bytes, 0) == 40, kBroken);
  const uint32_t width = readU32(bytes, 4);
  const uint32_t height = readU32(bytes, 8) / 2;
  const uint16_t bitCount = readU16(bytes, 14);
  require(width >= 1 && width <= kLargestSize && height >= 1 && height <= kLargestSize, kBroken);
  require(
      bitCount == 1 || bitCount == 4 || bitCount == 8 || bitCount == 16 || bitCount == 24 || bitCount == 32,
      kBroken);
  const uint32_t used = readU32(bytes, 32);
  const size_t palette = bitCount > 8 ? 0 : used == 0 ? size_t{1} << bitCount : used;
  const auto lineSize = [&](size_t bits) { return (width * bits + 31) / 32 * 4; };
  // Many writers of 32 bits leave out the mask, and Windows does not miss it.
  const size_t mask = bitCount == 32 ? 0 : lineSize(1);
  require(palette <= 256 && bytes.size() >= 40 + 4 * palette + height * (lineSize(bitCount) + mask),
          "a picture in it ends too early");
  const auto colours = static_cast<uint8_t>(bitCount < 8 ? palette : 0);
  return {width, height, colours, 1, bitCount, Bytes(bytes.begin(), bytes.end())};
}

IconImage readImage(ByteView bytes) {
  return isPng(bytes) ? readPng(bytes) : readBitmap(bytes);
}

/// The numbers of the pictures in a group.
std::vector<uint16_t> pictureNumbers(ByteView group) {
  static constexpr char kBroken[] = "an icon group in it is damaged";
  require(group.size() >= kHeaderSize, kBroken);
  const size_t count = readU16(group, 4);
  require(count <= (group.size() - kHeaderSize) / kGroupEntrySize, kBroken);
  std::vector<uint16_t> numbers;
  for (size_t i = 0; i < count; ++i)
    numbers.push_back(readU16(group, kHeaderSize + i * kGroupEntrySize + 12));
  return numbers;
}

std::set<uint16_t> usedNumbers(const Resources& resources) {
  std::set<uint16_t> used;
  for (const auto& [key, resource] : resources) {
    if (!(key.type == kRtGroupIcon)) continue;
    for (const uint16_t number : pictureNumbers(resource.data)) used.insert(number);
  }
  return used;
}

}  // namespace

std::vector<IconImage> readIcon(ByteView file) {
  if (isPng(file)) {
    const IconImage image = readPng(file);
    require(image.width == image.height, "it is not square");
    require(file[24] == 8 && file[25] == 6,
            "its pixels are not red, green, blue and transparency of 8 bits each (RGBA)");
    return {image};
  }

  require(file.size() >= kHeaderSize && readU16(file, 0) == 0 && readU16(file, 2) == kIconKind,
          "it is neither an .ico nor a .png file");
  const size_t count = readU16(file, 4);
  require(count >= 1 && count <= (file.size() - kHeaderSize) / kFileEntrySize,
          "its list of pictures is damaged");
  std::vector<IconImage> icon;
  size_t total = 0;
  for (size_t i = 0; i < count; ++i) {
    const size_t entry = kHeaderSize + i * kFileEntrySize;
    const size_t size = readU32(file, entry + 8);
    const size_t offset = readU32(file, entry + 12);
    require(offset <= file.size() && size <= file.size() - offset, "a picture in it ends too early");
    // Pictures that share their bytes would multiply them.
    total += size;
    require(total <= file.size(), "its list of pictures is damaged");
    icon.push_back(readImage(file.subspan(offset, size)));
  }
  return icon;
}

void setIconGroup(Resources& resources, const ResourceId& name, const std::vector<IconImage>& icon) {
  const std::set<uint16_t> before = usedNumbers(resources);
  const uint16_t language = firstLanguage(resources, kRtGroupIcon, name).value_or(0);
  std::erase_if(resources,
                [&](const auto& item) { return item.first.type == kRtGroupIcon && item.first.name == name; });
  const std::set<uint16_t> kept = usedNumbers(resources);
  std::erase_if(resources, [&](const auto& item) {
    const ResourceKey& key = item.first;
    return key.type == kRtIcon && !key.name.isText() && before.contains(key.name.number()) &&
           !kept.contains(key.name.number());
  });

  Bytes group;
  appendU16(group, 0);
  appendU16(group, kIconKind);
  appendU16(group, static_cast<uint16_t>(icon.size()));
  uint16_t number = 0;
  for (const IconImage& image : icon) {
    do {
      require(++number != 0, "it gets too many icons");
    } while (kept.contains(number) || firstLanguage(resources, kRtIcon, number));
    // A size of 256 is written as 0.
    group.push_back(static_cast<uint8_t>(image.width));
    group.push_back(static_cast<uint8_t>(image.height));
    group.push_back(image.colours);
    group.push_back(0);
    appendU16(group, image.planes);
    appendU16(group, image.bitCount);
    appendU32(group, static_cast<uint32_t>(image.data.size()));
    appendU16(group, number);
    resources[{kRtIcon, number, language}].data = image.data;
  }
  resources[{kRtGroupIcon, name, language}].data = std::move(group);
}

std::vector<IconImage> iconGroup(const Resources& resources, const ResourceId& name) {
  const auto group = resources.lower_bound({kRtGroupIcon, name, 0});
  if (group == resources.end() || !(group->first.type == kRtGroupIcon) || !(group->first.name == name))
    return {};
  std::vector<IconImage> icon;
  for (const uint16_t number : pictureNumbers(group->second.data)) {
    const auto picture = resources.lower_bound({kRtIcon, number, 0});
    require(picture != resources.end() && picture->first.type == kRtIcon && picture->first.name == number,
            "an icon group in it lacks a picture");
    icon.push_back(readImage(picture->second.data));
  }
  return icon;
}

}  // namespace ryn
