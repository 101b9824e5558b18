#include "image/version_info.h"

#include "image/image_error.h"
#include "text/text.h"

namespace ryn {
namespace {

constexpr uint32_t kFixedSignature = 0xFEEF04BD;
constexpr uint32_t kFixedVersion = 0x10000;
constexpr size_t kFixedSize = 52;
constexpr wchar_t kRootKey[] = L"VS_VERSION_INFO";
constexpr wchar_t kStringKey[] = L"StringFileInfo";
constexpr wchar_t kVariableKey[] = L"VarFileInfo";
constexpr wchar_t kTranslationKey[] = L"Translation";

constexpr char kDamagedVersion[] = "its version information is damaged";

size_t aligned(size_t offset) {
  return (offset + 3) / 4 * 4;
}

/// One block: its key, and what follows the key up to the end of the block.
struct VersionBlock {
  std::wstring key;
  /// Of `value` what the block counts as its value, in its own unit.
  size_t valueLength = 0;
  ByteView value;
};

/// Reads the block at `offset` and moves `offset` behind it and its padding. Padding counts from the start of
/// the resource, which blocks keep as their parents are multiples of four.
VersionBlock readBlock(ByteView bytes, size_t& offset) {
  require(offset + 6 <= bytes.size(), kDamagedVersion);
  const size_t length = readU16(bytes, offset);
  require(length >= 6 && length <= bytes.size() - offset, kDamagedVersion);
  const ByteView whole = bytes.subspan(offset, length);
  VersionBlock block;
  block.valueLength = readU16(whole, 2);
  size_t at = 6;
  for (;; at += 2) {
    require(at + 2 <= whole.size(), kDamagedVersion);
    const uint16_t unit = readU16(whole, at);
    if (unit == 0) break;
    block.key.push_back(unit);
  }
  at = aligned(at + 2);
  if (at < whole.size()) block.value = whole.subspan(at);
  offset += aligned(length);
  return block;
}

/// Some compilers leave padding behind the last child.
bool hasBlock(ByteView bytes, size_t offset) {
  return offset + 6 <= bytes.size() && readU16(bytes, offset) != 0;
}

std::wstring textOf(ByteView bytes) {
  std::wstring text;
  for (size_t at = 0; at + 2 <= bytes.size() && readU16(bytes, at) != 0; at += 2) {
    text.push_back(readU16(bytes, at));
  }
  return text;
}

VersionInfo::StringTable readTable(const VersionBlock& table) {
  VersionInfo::StringTable result{table.key, {}};
  for (size_t at = 0; hasBlock(table.value, at);) {
    const VersionBlock string = readBlock(table.value, at);
    result.strings.emplace_back(string.key, string.valueLength == 0 ? L"" : textOf(string.value));
  }
  return result;
}

VersionInfo::Numbers numbersAt(ByteView bytes, size_t at) {
  return {readU16(bytes, at + 2), readU16(bytes, at), readU16(bytes, at + 6), readU16(bytes, at + 4)};
}

void appendNumbers(Bytes& bytes, const VersionInfo::Numbers& numbers) {
  for (const size_t i : {1U, 0U, 3U, 2U}) appendU16(bytes, numbers[i]);
}

void appendText(Bytes& bytes, const std::wstring& text) {
  for (const wchar_t unit : text) appendU16(bytes, static_cast<uint16_t>(unit));
  appendU16(bytes, 0);
}

enum class ValueKind : uint16_t { kBinary = 0, kText = 1 };

/// Appends a block whose value and children `content` appends.
template <typename Content>
void writeBlock(Bytes& bytes, const std::wstring& key, ValueKind kind, size_t valueLength, Content content) {
  padTo(bytes, 4);
  const size_t start = bytes.size();
  appendU16(bytes, 0);
  appendU16(bytes, static_cast<uint16_t>(valueLength));
  appendU16(bytes, static_cast<uint16_t>(kind));
  appendText(bytes, key);
  padTo(bytes, 4);
  content();
  if (bytes.size() > UINT16_MAX) throw ImageError("its version information becomes too large");
  writeU16(bytes, start, static_cast<uint16_t>(bytes.size() - start));
}

}  // namespace

std::wstring VersionInfo::text(const std::wstring& name) const {
  if (!tables.empty()) {
    for (const auto& [key, value] : tables.front().strings) {
      if (key == name) return value;
    }
  }
  return {};
}

VersionInfo readVersionInfo(ByteView bytes) {
  size_t at = 0;
  const VersionBlock root = readBlock(bytes, at);
  require(root.key == kRootKey && root.valueLength <= root.value.size(), kDamagedVersion);
  VersionInfo info;
  if (root.valueLength >= kFixedSize) {
    require(readU32(root.value, 0) == kFixedSignature, kDamagedVersion);
    info.fileVersion = numbersAt(root.value, 8);
    info.productVersion = numbersAt(root.value, 16);
    info.flagsMask = readU32(root.value, 24);
    info.flags = readU32(root.value, 28);
    info.os = readU32(root.value, 32);
    info.type = readU32(root.value, 36);
    info.subtype = readU32(root.value, 40);
  }
  info.translations.clear();
  for (size_t child = aligned(root.valueLength); hasBlock(root.value, child);) {
    const VersionBlock part = readBlock(root.value, child);
    for (size_t inner = 0; hasBlock(part.value, inner);) {
      const VersionBlock block = readBlock(part.value, inner);
      if (part.key == kStringKey) {
        info.tables.push_back(readTable(block));
      } else if (part.key == kVariableKey && block.key == kTranslationKey) {
        for (size_t i = 0; i + 4 <= block.value.size(); i += 4) {
          info.translations.emplace_back(readU16(block.value, i), readU16(block.value, i + 2));
        }
      }
    }
  }
  return info;
}

Bytes writeVersionInfo(const VersionInfo& info) {
  Bytes bytes;
  writeBlock(bytes, kRootKey, ValueKind::kBinary, kFixedSize, [&] {
    appendU32(bytes, kFixedSignature);
    appendU32(bytes, kFixedVersion);
    appendNumbers(bytes, info.fileVersion);
    appendNumbers(bytes, info.productVersion);
    for (const uint32_t field : {info.flagsMask, info.flags, info.os, info.type, info.subtype, 0U, 0U}) {
      appendU32(bytes, field);
    }
    writeBlock(bytes, kStringKey, ValueKind::kText, 0, [&] {
      for (const VersionInfo::StringTable& table : info.tables) {
        writeBlock(bytes, table.key, ValueKind::kText, 0, [&] {
          for (const auto& string : table.strings) {
            const std::wstring& text = string.second;
            writeBlock(bytes, string.first, ValueKind::kText, text.size() + 1,
                       [&] { appendText(bytes, text); });
          }
        });
      }
    });
    writeBlock(bytes, kVariableKey, ValueKind::kText, 0, [&] {
      writeBlock(bytes, kTranslationKey, ValueKind::kBinary, 4 * info.translations.size(), [&] {
        for (const auto& [language, codePage] : info.translations) {
          appendU16(bytes, language);
          appendU16(bytes, codePage);
        }
      });
    });
  });
  return bytes;
}

std::wstring versionText(const VersionInfo::Numbers& numbers) {
  return concat(
      {decimal(numbers[0]), L".", decimal(numbers[1]), L".", decimal(numbers[2]), L".", decimal(numbers[3])});
}

}  // namespace ryn
