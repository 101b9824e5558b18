#pragma once

#include <string_view>

namespace ryn {

enum class UrlScheme { kOther, kHttp, kFtp };

/// By the first letters of the URL; "https" is kHttp too.
UrlScheme urlScheme(std::wstring_view url);

/// Whether a URL can be that of a VM pack.
bool namesPack(std::wstring_view url);

}  // namespace ryn
