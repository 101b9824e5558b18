#pragma once

#include <string>
#include <string_view>

#include "text/fold_case.h"
#include "text/text.h"

namespace ryn {

/// In the system's ANSI code page; characters outside it become its default character.
std::string toAnsi(std::wstring_view text);

}  // namespace ryn
