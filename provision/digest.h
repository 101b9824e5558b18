#pragma once

#include <string>

namespace ryn {

/// MD5 of a file as 32 lower-case hexadecimal digits; empty when it cannot be computed. What went wrong
/// goes to standard output, for a silent launch too, and so does a line end after a success.
[[nodiscard]] std::wstring md5OfFile(const std::wstring& path);

}  // namespace ryn
