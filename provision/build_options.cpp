#include "provision/build_options.h"

#include "text/text.h"

namespace ryn {
namespace {

VmPack readPack(const PropertyFile& jvmspecs, const wchar_t* urlKey, const std::wstring& checksumPrefix) {
  return {.url = jvmspecs.get(urlKey),
          .verify = jvmspecs.get(checksumPrefix + L".applicable") == L"true",
          .digest = jvmspecs.get(checksumPrefix + L".value")};
}

}  // namespace

BuildOptions readBuildOptions(const PropertyFile& jvmspecs) {
  const auto number = [&jvmspecs](const wchar_t* key, const wchar_t* defaultValue) {
    return parseInteger(jvmspecs.get(key, defaultValue));
  };
  return {
      .option = jvmspecs.get(L"build.option"),
      .withVmSearchOption = number(L"build.with.vm.search.option", L"20"),
      .withoutVmSearchOption = number(L"build.without.vm.search.option", L"10"),
      .jvmspecApplicable = jvmspecs.get(L"build.jvmspec.applicable") == L"true",
      .jvmspecCount = number(L"build.jvmspec.total.num", L"0"),
      .notFoundPack = readPack(jvmspecs, L"build.without.vm.not.found.download.url",
                               L"build.without.vm.not.found.download.url.md5Checksum"),
      .directPack = readPack(jvmspecs, L"build.without.vm.direct.download.url",
                             L"build.without.vm.dont.search.download.url.md5Checksum"),
  };
}

}  // namespace ryn
