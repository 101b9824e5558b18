#include <zlib.h>

#include <vector>

#include <gtest/gtest.h>

// linkage/crc32.cpp, built under this name beside zlib's own.
extern "C" uLong standInCrc32(uLong before, const Bytef* data, uInt size);
extern "C" uLong standInAdler32(uLong before, const Bytef* data, uInt size);

TEST(Crc32Test, IsThatOfZlib) {
  std::vector<Bytef> bytes(80);
  for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<Bytef>(i * i + 251);
  for (uInt start = 0; start < 8; ++start) {
    for (uInt size = 0; size < 72; ++size) {
      const uLong before = 0x9E3779B9u * start;
      EXPECT_EQ(standInCrc32(before, &bytes[start], size), crc32(before, &bytes[start], size))
          << start << ' ' << size;
    }
  }
  EXPECT_EQ(standInCrc32(7, Z_NULL, 0), crc32(7, Z_NULL, 0));
  EXPECT_EQ(standInAdler32(7, bytes.data(), 80), adler32(7, bytes.data(), 80));
}
