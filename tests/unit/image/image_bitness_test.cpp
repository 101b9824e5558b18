#include "image/image_bitness.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <tuple>

namespace ryn {
namespace {

constexpr auto kUnknown = ImageBitness::kUnknown;
constexpr uint16_t kI386 = 0x14C, kAmd64 = 0x8664, kPe32 = 0x10B, kPe32Plus = 0x20B;

template <typename T>
void put(std::string& bytes, size_t offset, T value) {
  bytes.resize(std::max(bytes.size(), offset + sizeof(value)));
  std::memcpy(bytes.data() + offset, &value, sizeof(value));
}

/// The least that tells an image's bitness: a stub, and headers at 128 up to the optional one's magic.
std::string image(uint16_t machine, uint16_t magic, int32_t headerOffset = 128) {
  std::string bytes;
  put<uint16_t>(bytes, 0, 0x5A4D);
  put<int32_t>(bytes, 60, headerOffset);
  put<uint32_t>(bytes, 128, 0x4550);
  put<uint16_t>(bytes, 132, machine);
  put<uint16_t>(bytes, 152, magic);
  return bytes;
}

TEST(ImageBitnessTest, ReadsMadeUpHeaders) {
  const std::string good = image(kAmd64, kPe32Plus);
  const std::tuple<const char*, std::string, ImageBitness> rows[] = {
      {"PE32 for i386", image(kI386, kPe32), ImageBitness::k32},
      {"PE32+ for x86-64", good, ImageBitness::k64},
      {"PE32+ for i386", image(kI386, kPe32Plus), kUnknown},
      {"PE32 for x86-64", image(kAmd64, kPe32), kUnknown},
      {"PE32+ for ARM64", image(0xAA64, kPe32Plus), kUnknown},
      {"one byte short", good.substr(0, good.size() - 1), kUnknown},
      {"only the stub", good.substr(0, 64), kUnknown},
      {"half a stub", good.substr(0, 61), kUnknown},
      {"empty", "", kUnknown},
      {"no MZ", "Z" + good.substr(1), kUnknown},
      {"no PE", good.substr(0, 128) + std::string(26, '\0'), kUnknown},
      {"header offset 0", image(kAmd64, kPe32Plus, 0), kUnknown},
      {"header far beyond the end", image(kAmd64, kPe32Plus, 0x7FFFFFFF), kUnknown},
      {"header before the start", image(kAmd64, kPe32Plus, -20), kUnknown},
  };
  for (const auto& [what, bytes, bitness] : rows) {
    EXPECT_EQ(bitnessOfImage({reinterpret_cast<const uint8_t*>(bytes.data()), bytes.size()}), bitness)
        << what;
  }
}

}  // namespace
}  // namespace ryn
