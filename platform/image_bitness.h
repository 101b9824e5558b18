#pragma once

#include <string>

#include "image/image_bitness.h"

namespace ryn {

/// What the header of an executable says; kUnknown also for a file that cannot be read.
ImageBitness imageBitness(const std::wstring& path);

}  // namespace ryn
