#include <windows.h>
#include <zlib.h>

#include <array>
#include <cstdint>
#include <cstring>

// zlib's checksums. The first takes 12 KB of the program, most of it tables. They can be made on first use
// instead; what this one is slower (1.7 GB a second against 2.6) does not show beside unpacking. The second
// belongs to another format than the archives'; the inflater refers to it.
namespace {

constexpr uInt kSlices = 8;
constexpr uint32_t kPolynomial = 0xEDB88320;

using Tables = std::array<std::array<uint32_t, 256>, kSlices>;

Tables tables;
INIT_ONCE tablesMade = INIT_ONCE_STATIC_INIT;

/// `tables[n][b]` is what byte `b` does to a checksum that `n` more bytes follow.
BOOL CALLBACK makeTables(PINIT_ONCE /*once*/, PVOID /*parameter*/, PVOID* /*context*/) {
  for (uint32_t byte = 0; byte < 256; ++byte) {
    uint32_t sum = byte;
    for (int bit = 0; bit < 8; ++bit) sum = (sum >> 1) ^ ((sum & 1) != 0 ? kPolynomial : 0);
    tables[0][byte] = sum;
  }
  for (uInt slice = 1; slice < kSlices; ++slice) {
    for (size_t byte = 0; byte < 256; ++byte) {
      const uint32_t shorter = tables[slice - 1][byte];
      tables[slice][byte] = (shorter >> 8) ^ tables[0][shorter & 0xFF];
    }
  }
  return TRUE;
}

}  // namespace

/// As zlib has it: `data` of null asks for the checksum of nothing.
extern "C" uLong ZEXPORT crc32(uLong before, const Bytef* data, uInt size) {
  if (data == Z_NULL) return 0;
  InitOnceExecuteOnce(&tablesMade, makeTables, nullptr, nullptr);
  uint32_t sum = ~static_cast<uint32_t>(before);
  for (; size >= kSlices; size -= kSlices, data += kSlices) {
    uint64_t eight;
    std::memcpy(&eight, data, sizeof(eight));
    eight ^= sum;
    sum = 0;
#pragma GCC unroll 8
    for (uInt i = 0; i < kSlices; ++i) sum ^= tables[kSlices - 1 - i][eight >> (8 * i) & 0xFF];
  }
  for (; size > 0; --size, ++data) sum = (sum >> 8) ^ tables[0][(sum ^ *data) & 0xFF];
  return ~sum;
}

extern "C" uLong ZEXPORT adler32(uLong before, const Bytef* data, uInt size) {
  constexpr uint32_t kBase = 65521;
  if (data == Z_NULL) return 1;
  uint32_t low = before & 0xFFFF;
  uint32_t high = before >> 16 & 0xFFFF;
  for (; size > 0; --size, ++data) {
    low = (low + *data) % kBase;
    high = (high + low) % kBase;
  }
  return high << 16 | low;
}
