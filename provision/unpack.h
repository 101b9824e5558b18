#pragma once

#include <string>

namespace ryn {

/// Unpacks the VM pack at `packPath` into `extractionFolder`, which is made with the folder above it when
/// missing, by way of the folder "downloadIntermediary" beside the pack, which is removed unless the pack
/// holds more than "vm.zip" and "vm.properties". False when the pack or the "vm.zip" at its top cannot be
/// opened, the extraction folder takes no file, or the disk is full. Other entries that cannot be created or
/// are damaged are passed over: a pack that has to be whole needs a checksum. isHalfUnpacked says when a
/// process ended or the disk was full on the way.
[[nodiscard]] bool extractPack(const std::wstring& packPath, const std::wstring& extractionFolder);

}  // namespace ryn
