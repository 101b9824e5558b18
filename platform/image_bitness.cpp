#include "platform/image_bitness.h"

#include <windows.h>

#include <cstddef>
#include <cstring>

#include "platform/unique_handle.h"

namespace ryn {

ImageBitness imageBitness(const std::wstring& path) {
  const UniqueFile file(
      CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
  if (!file) return ImageBitness::kUnknown;
  LARGE_INTEGER size = {};
  if (!GetFileSizeEx(file.get(), &size)) return ImageBitness::kUnknown;
  // Null for an empty file, too.
  const UniqueHandle mapping(CreateFileMappingW(file.get(), nullptr, PAGE_READONLY, 0, 0, nullptr));
  if (!mapping) return ImageBitness::kUnknown;
  const UniqueView view(MapViewOfFile(mapping.get(), FILE_MAP_READ, 0, 0, 0));
  if (!view) return ImageBitness::kUnknown;

  const auto fileSize = static_cast<ULONGLONG>(size.QuadPart);
  const auto* bytes = static_cast<const BYTE*>(view.get());
  IMAGE_DOS_HEADER dos;
  if (fileSize < sizeof(dos)) return ImageBitness::kUnknown;
  std::memcpy(&dos, bytes, sizeof(dos));
  if (dos.e_magic != IMAGE_DOS_SIGNATURE || dos.e_lfanew <= 0) return ImageBitness::kUnknown;

  // The headers up to the optional header's magic have the same layout in both formats.
  struct Headers {
    DWORD signature;
    IMAGE_FILE_HEADER file;
    WORD magic;
  };
  Headers headers;
  const auto offset = static_cast<ULONGLONG>(dos.e_lfanew);
  const size_t needed = offsetof(Headers, magic) + sizeof(headers.magic);
  if (offset + needed > fileSize) return ImageBitness::kUnknown;
  std::memcpy(&headers, bytes + offset, needed);
  if (headers.signature != IMAGE_NT_SIGNATURE) return ImageBitness::kUnknown;

  const WORD machine = headers.file.Machine;
  if (headers.magic == IMAGE_NT_OPTIONAL_HDR32_MAGIC && machine == IMAGE_FILE_MACHINE_I386) {
    return ImageBitness::k32;
  }
  if (headers.magic == IMAGE_NT_OPTIONAL_HDR64_MAGIC && machine == IMAGE_FILE_MACHINE_AMD64) {
    return ImageBitness::k64;
  }
  return ImageBitness::kUnknown;
}

}  // namespace ryn
