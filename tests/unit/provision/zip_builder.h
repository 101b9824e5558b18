#pragma once

#include <zlib.h>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

namespace ryn::test {

/// One entry of an archive; what is not set is an ordinary deflated file made under DOS.
struct ZipEntry {
  std::string name;
  std::string data = {};
  uint16_t method = Z_DEFLATED;
  uint16_t flags = 0;
  uint16_t versionMadeBy = 20;
  uint32_t externalAttributes = 0x20;
  uint32_t dosDateTime = 0x58216000;
  std::string localExtra = {};
  /// Added to the sizes that both headers state.
  uint32_t sizeError = 0;
};

inline std::string littleEndian(size_t value, size_t count) {
  std::string bytes;
  for (size_t i = 0; i < count; ++i) bytes += static_cast<char>(value >> (8 * i));
  return bytes;
}

inline constexpr uint64_t kUnixEpoch = 116'444'736'000'000'000;

inline uint64_t unixTicks(uint64_t seconds) {
  return kUnixEpoch + seconds * 10'000'000;
}

/// A "UT" block with the times given.
inline std::string utBlock(char flags, const std::vector<uint32_t>& seconds) {
  std::string data(1, flags);
  for (const uint32_t second : seconds) data += littleEndian(second, 4);
  return "UT" + littleEndian(data.size(), 2) + data;
}

inline std::string joined(std::initializer_list<std::string> pieces) {
  std::string whole;
  for (const std::string& piece : pieces) whole += piece;
  return whole;
}

inline std::string deflated(const std::string& data) {
  z_stream stream{};
  deflateInit2(&stream, Z_BEST_SPEED, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY);
  std::string result(deflateBound(&stream, static_cast<uLong>(data.size())), '\0');
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(data.data()));
  stream.avail_in = static_cast<uInt>(data.size());
  stream.next_out = reinterpret_cast<Bytef*>(result.data());
  stream.avail_out = static_cast<uInt>(result.size());
  deflate(&stream, Z_FINISH);
  result.resize(stream.total_out);
  deflateEnd(&stream);
  return result;
}

inline std::string makeZip(const std::vector<ZipEntry>& entries) {
  std::string file;
  std::string directory;
  for (const ZipEntry& entry : entries) {
    const std::string packed = entry.method == Z_DEFLATED ? deflated(entry.data) : entry.data;
    const uLong checksum =
        crc32(0, reinterpret_cast<const Bytef*>(entry.data.data()), static_cast<uInt>(entry.data.size()));
    const std::string common =
        joined({littleEndian(20, 2), littleEndian(entry.flags, 2), littleEndian(entry.method, 2),
                littleEndian(entry.dosDateTime, 4), littleEndian(checksum, 4),
                littleEndian(packed.size() + entry.sizeError, 4),
                littleEndian(entry.data.size() + entry.sizeError, 4), littleEndian(entry.name.size(), 2)});
    directory +=
        joined({"PK\1\2", littleEndian(entry.versionMadeBy, 2), common, std::string(8, '\0'),
                littleEndian(entry.externalAttributes, 4), littleEndian(file.size(), 4), entry.name});
    file += joined(
        {"PK\3\4", common, littleEndian(entry.localExtra.size(), 2), entry.name, entry.localExtra, packed});
  }
  const std::string count = littleEndian(entries.size(), 2);
  return joined({file, directory, "PK\5\6", std::string(4, '\0'), count, count,
                 littleEndian(directory.size(), 4), littleEndian(file.size(), 4), std::string(2, '\0')});
}

}  // namespace ryn::test
