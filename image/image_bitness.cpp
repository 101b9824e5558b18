#include "image/image_bitness.h"

namespace ryn {
namespace {

constexpr uint16_t kStubSignature = 0x5A4D;
constexpr uint32_t kSignature = 0x4550;
constexpr size_t kStubSize = 64;
// From the signature; the headers up to the optional header's magic have the same layout in both formats.
constexpr size_t kMachine = 4;
constexpr size_t kMagic = 24;
constexpr uint16_t kI386 = 0x14C;
constexpr uint16_t kAmd64 = 0x8664;
constexpr uint16_t kPe32 = 0x10B;
constexpr uint16_t kPe32Plus = 0x20B;

}  // namespace

ImageBitness bitnessOfImage(ByteView file) {
  if (file.size() < kStubSize || readU16(file, 0) != kStubSignature) return ImageBitness::kUnknown;
  const uint32_t offset = readU32(file, kStubSize - 4);
  // The offset has a sign.
  if (offset == 0 || offset > INT32_MAX || uint64_t{offset} + kMagic + 2 > file.size()) {
    return ImageBitness::kUnknown;
  }
  const ByteView headers = file.subspan(offset);
  if (readU32(headers, 0) != kSignature) return ImageBitness::kUnknown;

  const uint16_t machine = readU16(headers, kMachine);
  const uint16_t magic = readU16(headers, kMagic);
  if (magic == kPe32 && machine == kI386) return ImageBitness::k32;
  if (magic == kPe32Plus && machine == kAmd64) return ImageBitness::k64;
  return ImageBitness::kUnknown;
}

}  // namespace ryn
