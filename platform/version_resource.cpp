#include "platform/version_resource.h"

#include <vector>

#include "platform/system_library.h"

namespace ryn {
namespace {

FourPartVersion words(DWORD most, DWORD least) {
  return {HIWORD(most), LOWORD(most), HIWORD(least), LOWORD(least)};
}

}  // namespace

VersionReader::VersionReader()
    : library_(loadSystemLibrary(L"version.dll")),
      complete_(bindAll(library_.get(), getSize_, getInfo_, queryValue_)) {}

VersionResource VersionReader::read(const std::wstring& path) const {
  VersionResource result;
  if (!complete_) return result;

  DWORD ignored = 0;
  const DWORD sizeBytes = getSize_(path.c_str(), &ignored);
  if (sizeBytes == 0) return result;
  std::vector<BYTE> data(sizeBytes);
  if (!getInfo_(path.c_str(), 0, sizeBytes, data.data())) return result;

  void* value = nullptr;
  UINT length = 0;
  if (queryValue_(data.data(), L"\\", &value, &length) && length >= sizeof(VS_FIXEDFILEINFO)) {
    const auto& fixed = *static_cast<const VS_FIXEDFILEINFO*>(value);
    result.fileVersion = words(fixed.dwFileVersionMS, fixed.dwFileVersionLS);
    result.productVersion = words(fixed.dwProductVersionMS, fixed.dwProductVersionLS);
  }
  if (queryValue_(data.data(), L"\\StringFileInfo\\040904b0\\CompanyName", &value, &length) && length > 0) {
    const auto* text = static_cast<const wchar_t*>(value);
    result.companyName.assign(text, wcsnlen(text, length));
  }
  return result;
}

}  // namespace ryn
