#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace ryn {

using Bytes = std::vector<uint8_t>;
using ByteView = std::span<const uint8_t>;

/// The number in the two or four bytes from `at`, which must be there.
inline uint16_t readU16(ByteView bytes, size_t at) {
  return static_cast<uint16_t>(bytes[at] | bytes[at + 1] << 8);
}

inline uint32_t readU32(ByteView bytes, size_t at) {
  return readU16(bytes, at) | static_cast<uint32_t>(readU16(bytes, at + 2)) << 16;
}

inline void writeU16(Bytes& bytes, size_t at, uint16_t value) {
  bytes[at] = static_cast<uint8_t>(value);
  bytes[at + 1] = static_cast<uint8_t>(value >> 8);
}

inline void writeU32(Bytes& bytes, size_t at, uint32_t value) {
  writeU16(bytes, at, static_cast<uint16_t>(value));
  writeU16(bytes, at + 2, static_cast<uint16_t>(value >> 16));
}

inline void appendU16(Bytes& bytes, uint16_t value) {
  bytes.push_back(static_cast<uint8_t>(value));
  bytes.push_back(static_cast<uint8_t>(value >> 8));
}

inline void appendU32(Bytes& bytes, uint32_t value) {
  appendU16(bytes, static_cast<uint16_t>(value));
  appendU16(bytes, static_cast<uint16_t>(value >> 16));
}

inline void append(Bytes& bytes, ByteView more) {
  bytes.insert(bytes.end(), more.begin(), more.end());
}

/// Zeros up to a length that is a multiple of `alignment`.
inline void padTo(Bytes& bytes, size_t alignment) {
  bytes.resize((bytes.size() + alignment - 1) / alignment * alignment);
}

}  // namespace ryn
