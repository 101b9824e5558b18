#pragma once

#include <string>

namespace ryn {

/// The values are the ones that discovery records.
enum class ImageBitness { kUnknown = 0, k32 = 1, k64 = 2 };

/// What the header of an executable says: i386 PE32 is k32, x86-64 PE32+ is k64, anything else (also a
/// file that cannot be read or ends before its header does) kUnknown.
ImageBitness imageBitness(const std::wstring& path);

}  // namespace ryn
