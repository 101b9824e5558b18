#include "platform/image_bitness.h"

#include <windows.h>

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

  return bitnessOfImage({static_cast<const uint8_t*>(view.get()), static_cast<size_t>(size.QuadPart)});
}

}  // namespace ryn
