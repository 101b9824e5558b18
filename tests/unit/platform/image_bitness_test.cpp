#include "platform/image_bitness.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <cstring>
#include <tuple>

#include "tests/unit/support/temp_folder.h"

namespace ryn {
namespace {

constexpr auto kUnknown = ImageBitness::kUnknown;
constexpr WORD kI386 = 0x14C, kAmd64 = 0x8664, kPe32 = 0x10B, kPe32Plus = 0x20B;

template <typename T>
void put(std::string& bytes, size_t offset, T value) {
  bytes.resize(std::max(bytes.size(), offset + sizeof(value)));
  std::memcpy(bytes.data() + offset, &value, sizeof(value));
}

/// The least that tells an image's bitness: a stub, and headers at 128 up to the optional one's magic.
std::string image(WORD machine, WORD magic, LONG headerOffset = 128) {
  std::string bytes;
  put<WORD>(bytes, 0, IMAGE_DOS_SIGNATURE);
  put<LONG>(bytes, 60, headerOffset);
  put<DWORD>(bytes, 128, IMAGE_NT_SIGNATURE);
  put<WORD>(bytes, 132, machine);
  put<WORD>(bytes, 152, magic);
  return bytes;
}

TEST(ImageBitnessTest, ReadsMadeUpHeaders) {
  const std::string good = image(kAmd64, kPe32Plus);
  const std::tuple<const char*, std::string, ImageBitness> rows[] = {
      {"PE32 for i386", image(kI386, kPe32), ImageBitness::k32},
      {"PE32+ for x86-64", good, ImageBitness::k64},
      {"PE32+ for i386", image(kI386, kPe32Plus), kUnknown},
      {"PE32+ for ARM64", image(0xAA64, kPe32Plus), kUnknown},
      {"one byte short", good.substr(0, good.size() - 1), kUnknown},
      {"half a stub", good.substr(0, 61), kUnknown},
      {"empty", "", kUnknown},
      {"no MZ", "Z" + good.substr(1), kUnknown},
      {"no PE", good.substr(0, 128) + std::string(26, '\0'), kUnknown},
      {"header far beyond the end", image(kAmd64, kPe32Plus, 0x7FFFFFFF), kUnknown},
      {"header before the start", image(kAmd64, kPe32Plus, -20), kUnknown},
  };
  const test::TempFolder temp;
  for (const auto& [what, bytes, bitness] : rows) {
    EXPECT_EQ(imageBitness(temp.write(L"java.exe", bytes)), bitness) << what;
  }
}

}  // namespace
}  // namespace ryn
