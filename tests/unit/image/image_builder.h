#pragma once

#include <string>
#include <string_view>

#include "image/image_error.h"
#include "image/resources.h"

namespace ryn::test {

inline Bytes bytesOf(std::string_view text) {
  return {text.begin(), text.end()};
}

/// What an ImageError says; empty when there is none.
template <typename Action>
std::string complaint(Action action) {
  try {
    action();
    return {};
  } catch (const ImageError& error) {
    return error.what();
  }
}

/// A program of the shape that our linker gives it: .text, .rsrc, .reloc, and `overlay` behind them. Its
/// resources are `resources`, its hardening flags are set, its symbol table is the overlay.
inline Bytes makeImage(bool is64Bit, const Resources& resources, std::string_view overlay = {}) {
  const size_t fixedSize = is64Bit ? 112 : 96;
  Bytes bytes = bytesOf("MZ");
  bytes.resize(0x3C);
  appendU32(bytes, 0x40);
  append(bytes, bytesOf({"PE\0\0", 4}));
  for (const unsigned field : {is64Bit ? 0x8664U : 0x14CU, 3U})
    appendU16(bytes, static_cast<uint16_t>(field));
  for (const unsigned field : {0x5F5E100U, overlay.empty() ? 0U : 0x800U, 2U}) appendU32(bytes, field);
  appendU16(bytes, static_cast<uint16_t>(fixedSize + 128));
  appendU16(bytes, 0x22);
  const size_t optional = bytes.size();
  bytes.resize(optional + fixedSize + 128);
  writeU16(bytes, optional, is64Bit ? 0x20B : 0x10B);
  writeU32(bytes, optional + 8, 0x400);
  writeU32(bytes, optional + 32, 0x1000);
  writeU32(bytes, optional + 36, 0x200);
  writeU32(bytes, optional + 56, 0x4000);
  writeU32(bytes, optional + 60, 0x200);
  writeU16(bytes, optional + 70, 0x160);
  writeU32(bytes, optional + fixedSize - 4, 16);
  const auto setDirectory = [&](unsigned index, uint32_t address, uint32_t size) {
    writeU32(bytes, optional + fixedSize + size_t{8} * index, address);
    writeU32(bytes, optional + fixedSize + size_t{8} * index + 4, size);
  };
  setDirectory(kResourceDirectory, 0x2000, 16);
  setDirectory(kRelocationDirectory, 0x3000, 12);
  const auto addSection = [&](std::string name, uint32_t number, uint32_t size, uint32_t flags) {
    name.resize(8);
    append(bytes, bytesOf(name));
    for (const uint32_t field : {size, number << 12, 0x200U, number << 9, 0U, 0U, 0U, flags}) {
      appendU32(bytes, field);
    }
  };
  addSection(".text", 1, 0x20, 0x60000020);
  addSection(".rsrc", 2, 0x10, 0x40000040);
  addSection(".reloc", 3, 12, 0x42000040);
  bytes.resize(0x200);
  append(bytes, bytesOf("the code of the program"));
  bytes.resize(0x600);
  for (const uint32_t word : {0x1000U, 12U, 0x3008U}) appendU32(bytes, word);
  bytes.resize(0x800);
  append(bytes, bytesOf(overlay));
  return withResources(PeImage(bytes), resources);
}

}  // namespace ryn::test
