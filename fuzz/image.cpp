#include "fuzz/input.h"
#include "image/icon.h"
#include "image/image_bitness.h"
#include "image/image_error.h"
#include "image/manifest.h"
#include "image/resources.h"
#include "image/string_block.h"

using namespace ryn;

namespace {

template <typename Action>
void mayRefuse(Action action) {
  try {
    action();
  } catch (const ImageError&) {
  }
}

}  // namespace

// A program, an icon or a manifest.
int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const ByteView bytes(data, size);
  bitnessOfImage(bytes);
  mayRefuse([&] { readIcon(bytes); });
  mayRefuse([&] { withExecutionLevel(fuzz::bytesAsText(data, size), ExecutionLevel::kAsInvoker); });
  mayRefuse([&] {
    const PeImage image(Bytes(data, data + size));
    const Resources resources = readResources(image);
    mayRefuse([&] {
      for (const uint16_t language : stringLanguages(resources)) findString(resources, 101, language);
    });
    mayRefuse([&] { iconGroup(resources, uint16_t{1}); });
    const Bytes written = withResources(image, resources);
    fuzz::require(readResources(PeImage(written)) == resources, "resources that are written are read again");
  });
  return 0;
}
