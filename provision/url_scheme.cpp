#include "provision/url_scheme.h"

namespace ryn {

UrlScheme urlScheme(std::wstring_view url) {
  if (url.starts_with(L"http")) return UrlScheme::kHttp;
  if (url.starts_with(L"ftp")) return UrlScheme::kFtp;
  return UrlScheme::kOther;
}

bool namesPack(std::wstring_view url) {
  return url.ends_with(L".vm");
}

}  // namespace ryn
