#pragma once

#include "text/little_endian.h"

namespace ryn {

/// The values are the ones that discovery records.
enum class ImageBitness { kUnknown = 0, k32 = 1, k64 = 2 };

/// What the header of an executable, whose bytes these are, says: i386 PE32 is k32, x86-64 PE32+ is k64,
/// anything else (also a file that ends before its header does) kUnknown. Source of the layout: "PE Format"
/// in Microsoft's documentation of Win32.
ImageBitness bitnessOfImage(ByteView file);

}  // namespace ryn
