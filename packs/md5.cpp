#include "packs/md5.h"

#include <array>
#include <bit>
#include <cmath>

#include "text/text.h"

namespace ryn {
namespace {

using State = std::array<uint32_t, 4>;

constexpr size_t kBlock = 64;
constexpr int kShifts[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};

/// The RFC's table: the fractions of sines of 1 to 64 radians.
std::array<uint32_t, kBlock> sines() {
  std::array<uint32_t, kBlock> result{};
  for (size_t i = 0; i < result.size(); ++i) {
    result[i] =
        static_cast<uint32_t>(std::floor(std::fabs(std::sin(static_cast<double>(i + 1))) * 4294967296.0));
  }
  return result;
}

void addBlock(State& state, ByteView block) {
  static const std::array<uint32_t, kBlock> kSines = sines();
  auto [a, b, c, d] = state;
  for (size_t i = 0; i < kBlock; ++i) {
    uint32_t mixed = 0;
    size_t word = 0;
    switch (i / 16) {
      case 0:
        mixed = (b & c) | (~b & d), word = i;
        break;
      case 1:
        mixed = (b & d) | (c & ~d), word = (5 * i + 1) % 16;
        break;
      case 2:
        mixed = b ^ c ^ d, word = (3 * i + 5) % 16;
        break;
      default:
        mixed = c ^ (b | ~d), word = 7 * i % 16;
        break;
    }
    const uint32_t sum = a + mixed + kSines[i] + readU32(block, word * 4);
    a = d;
    d = c;
    c = b;
    b += std::rotl(sum, kShifts[i / 16][i % 4]);
  }
  state = {state[0] + a, state[1] + b, state[2] + c, state[3] + d};
}

}  // namespace

std::string md5Of(ByteView bytes) {
  State state = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476};
  const size_t whole = bytes.size() / kBlock * kBlock;
  for (size_t at = 0; at < whole; at += kBlock) addBlock(state, bytes.subspan(at, kBlock));

  // A bit, zeros, and the length in bits as the last eight bytes.
  Bytes rest(bytes.begin() + static_cast<ptrdiff_t>(whole), bytes.end());
  rest.push_back(0x80);
  rest.resize(rest.size() + 8);
  padTo(rest, kBlock);
  const uint64_t bits = static_cast<uint64_t>(bytes.size()) * 8;
  writeU32(rest, rest.size() - 8, static_cast<uint32_t>(bits));
  writeU32(rest, rest.size() - 4, static_cast<uint32_t>(bits >> 32));
  for (size_t at = 0; at < rest.size(); at += kBlock) addBlock(state, ByteView(rest).subspan(at, kBlock));

  Bytes digest;
  for (const uint32_t number : state) appendU32(digest, number);
  return toUtf8(hexadecimal(digest));
}

}  // namespace ryn
