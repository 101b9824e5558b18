#include <zconf.h>

#include <array>
#include <cstdint>
#include <cstring>

// zlib's two checksums. Its own CRC-32 carries 12 KB of tables for one that reads 40 bytes at a time; this
// one makes four tables of its own when it is first asked, and is fast enough for the disk that the data go
// to. minizip checks what it inflates with it; nothing that is packed here has an Adler-32, but the inflater
// refers to it.
//
// When code begins to use another function of the same files, the linker takes zlib's file with all of them
// and complains of definitions that occur twice: define that one here, too.
namespace {

constexpr uint32_t kPolynomial = 0xEDB88320;
constexpr uint32_t kAdlerBase = 65521;

using Tables = std::array<std::array<uint32_t, 256>, 4>;

Tables makeTables() {
  Tables tables;
  for (uint32_t byte = 0; byte < 256; ++byte) {
    uint32_t rest = byte;
    for (int bit = 0; bit < 8; ++bit) rest = rest >> 1 ^ ((rest & 1) != 0 ? kPolynomial : 0);
    tables[0][byte] = rest;
  }
  for (uint32_t byte = 0; byte < 256; ++byte) {
    for (size_t i = 1; i < tables.size(); ++i) {
      const uint32_t before = tables[i - 1][byte];
      tables[i][byte] = before >> 8 ^ tables[0][before & 255];
    }
  }
  return tables;
}

const Tables& tables() {
  static const Tables made = makeTables();
  return made;
}

}  // namespace

extern "C" {

uLong crc32(uLong start, const Bytef* data, uInt size) {
  // Null asks for the value to begin with.
  if (data == nullptr) return 0;
  const Tables& table = tables();
  uint32_t crc = ~static_cast<uint32_t>(start);
  for (; size >= 4; size -= 4, data += 4) {
    uint32_t word = 0;
    std::memcpy(&word, data, sizeof(word));
    crc ^= word;
    crc = table[3][crc & 255] ^ table[2][crc >> 8 & 255] ^ table[1][crc >> 16 & 255] ^ table[0][crc >> 24];
  }
  for (; size > 0; --size, ++data) crc = crc >> 8 ^ table[0][(crc ^ *data) & 255];
  return ~crc;
}

uLong adler32(uLong start, const Bytef* data, uInt size) {
  if (data == nullptr) return 1;
  uint32_t a = start & 0xFFFF;
  uint32_t b = start >> 16 & 0xFFFF;
  for (; size > 0; --size, ++data) {
    a = (a + *data) % kAdlerBase;
    b = (b + a) % kAdlerBase;
  }
  return b << 16 | a;
}

}  // extern "C"
