#pragma once

#include <unzip.h>

#include <algorithm>
#include <cstring>

#include "text/little_endian.h"

namespace ryn {

/// An archive in memory, which minizip takes for a file.
struct MemoryFile {
  ByteView bytes;
  size_t at = 0;
};

inline voidpf openMemory(voidpf, const void* path, int) {
  return const_cast<void*>(path);
}

inline uLong readMemory(voidpf, voidpf stream, void* buffer, uLong size) {
  auto& file = *static_cast<MemoryFile*>(stream);
  const size_t count = std::min<size_t>(size, file.bytes.size() - file.at);
  if (count != 0) std::memcpy(buffer, file.bytes.data() + file.at, count);
  file.at += count;
  return static_cast<uLong>(count);
}

inline ZPOS64_T tellMemory(voidpf, voidpf stream) {
  return static_cast<MemoryFile*>(stream)->at;
}

inline long seekMemory(voidpf, voidpf stream, ZPOS64_T offset, int origin) {
  auto& file = *static_cast<MemoryFile*>(stream);
  const size_t base = origin == ZLIB_FILEFUNC_SEEK_CUR   ? file.at
                      : origin == ZLIB_FILEFUNC_SEEK_END ? file.bytes.size()
                                                         : 0;
  if (offset > file.bytes.size() - base) return -1;
  file.at = base + static_cast<size_t>(offset);
  return 0;
}

inline int nothing(voidpf, voidpf) {
  return 0;
}

inline zlib_filefunc64_def memoryFunctions() {
  return {.zopen64_file = openMemory,
          .zread_file = readMemory,
          .zwrite_file = nullptr,
          .ztell64_file = tellMemory,
          .zseek64_file = seekMemory,
          .zclose_file = nothing,
          .zerror_file = nothing,
          .opaque = nullptr};
}

}  // namespace ryn
