#include <algorithm>

#include "fuzz/input.h"
#include "image/image_error.h"
#include "image/version_info.h"
#include "vmsearch/version_range.h"

using namespace ryn;

namespace {

void checkTexts(std::wstring_view text) {
  const VmVersion version = parseVmVersion(text);
  const std::optional<VersionRange> range = parseVersionRange(text);
  VmCandidate vm;
  vm.version = version;
  if (!range) return;
  // Larger numbers lose their sign in a VM's version, and "1" is generation 1 of a list only.
  const auto small = [](const VersionRange::Numbers& numbers) {
    return std::max({numbers.generation, numbers.minor, numbers.micro}) < INT16_MAX;
  };
  const bool single = text.find_first_of(L"+-") == std::wstring_view::npos;
  if (single && small(range->least) && text != L"1" && version != VmVersion()) {
    fuzz::require(fitsRange(vm, *range), "a version fits itself");
  }
  fuzz::require(!fitsRange(vm, *range) || range->least <= range->greatest, "an empty range fits nothing");
}

void checkResource(ByteView bytes) {
  try {
    const VersionInfo info = readVersionInfo(bytes);
    fuzz::require(readVersionInfo(writeVersionInfo(info)) == info, "what is written is read again");
  } catch (const ImageError&) {
  }
}

}  // namespace

// Behind the first byte a version, as registries and lists write it, or a version resource.
int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  if (data[0] == 'r') {
    checkResource({data + 1, size - 1});
  } else {
    checkTexts(fromUtf8(fuzz::bytesAsText(data + 1, size - 1)));
  }
  return 0;
}
