#include "image/string_block.h"

#include <array>

#include "image/image_error.h"

namespace ryn {
namespace {

constexpr unsigned kBlockSize = 16;
using Block = std::array<std::wstring, kBlockSize>;

Block readBlock(ByteView bytes) {
  Block block;
  size_t at = 0;
  for (std::wstring& text : block) {
    if (at + 2 > bytes.size()) throw ImageError("a table of texts in it is damaged");
    const size_t length = readU16(bytes, at);
    at += 2;
    if (2 * length > bytes.size() - at) throw ImageError("a table of texts in it is damaged");
    for (size_t i = 0; i < length; ++i) text.push_back(readU16(bytes, at + 2 * i));
    at += 2 * length;
  }
  return block;
}

Bytes writeBlock(const Block& block) {
  Bytes bytes;
  for (const std::wstring& text : block) {
    if (text.size() > UINT16_MAX) throw ImageError("a text becomes too long for it");
    appendU16(bytes, static_cast<uint16_t>(text.size()));
    for (const wchar_t unit : text) appendU16(bytes, static_cast<uint16_t>(unit));
  }
  return bytes;
}

ResourceKey blockKey(unsigned id, uint16_t language) {
  return {kRtString, static_cast<uint16_t>(id / kBlockSize + 1), language};
}

}  // namespace

std::set<uint16_t> stringLanguages(const Resources& resources) {
  std::set<uint16_t> languages;
  for (const auto& item : resources) {
    if (item.first.type == kRtString) languages.insert(item.first.language);
  }
  return languages;
}

std::optional<std::wstring> findString(const Resources& resources, unsigned id, uint16_t language) {
  const auto found = resources.find(blockKey(id, language));
  if (found == resources.end()) return {};
  std::wstring text = readBlock(found->second.data)[id % kBlockSize];
  return text.empty() ? std::nullopt : std::optional(std::move(text));
}

void changeStrings(
    Resources& resources,
    const std::function<std::wstring(unsigned id, uint16_t language, const std::wstring& text)>& change) {
  for (auto& [key, resource] : resources) {
    if (!(key.type == kRtString) || key.name.isText() || key.name.number() == 0) continue;
    Block block = readBlock(resource.data);
    bool changed = false;
    for (unsigned i = 0; i < kBlockSize; ++i) {
      if (block[i].empty()) continue;
      std::wstring text = change((key.name.number() - 1U) * kBlockSize + i, key.language, block[i]);
      changed = changed || text != block[i];
      block[i] = std::move(text);
    }
    if (changed) resource.data = writeBlock(block);
  }
}

void setString(Resources& resources, unsigned id, uint16_t language, std::wstring_view text) {
  const auto found = resources.find(blockKey(id, language));
  if (found == resources.end()) throw ImageError("it has no table of texts in that language");
  Block block = readBlock(found->second.data);
  block[id % kBlockSize] = text;
  found->second.data = writeBlock(block);
}

}  // namespace ryn
