#pragma once

#include <string>

#include "text/little_endian.h"

namespace ryn {

/// The MD5 digest (RFC 1321) as 32 lower-case hexadecimal digits: the form in which jvmspecs.properties names
/// that of a pack.
std::string md5Of(ByteView bytes);

}  // namespace ryn
