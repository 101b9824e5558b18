#include "provision/build_options.h"

#include "platform/text.h"

namespace ryn {
namespace {

PackSource readPack(const PropertyFile& jvmspecs, const wchar_t* urlKey, const std::wstring& checksumPrefix) {
  return {.url = jvmspecs.get(urlKey, L""),
          .verify = jvmspecs.get(checksumPrefix + L".applicable", L"") == L"true",
          .digest = jvmspecs.get(checksumPrefix + L".value", L"")};
}

}  // namespace

BuildOptions readBuildOptions(const PropertyFile& jvmspecs) {
  const auto number = [&jvmspecs](const wchar_t* key, const wchar_t* defaultValue) {
    return parseInteger(jvmspecs.get(key, defaultValue));
  };
  return {
      .option = jvmspecs.get(L"build.option", L""),
      .withVmSearchOption = number(L"build.with.vm.search.option", L"20"),
      .withoutVmSearchOption = number(L"build.without.vm.search.option", L"10"),
      .jvmspecApplicable = jvmspecs.get(L"build.jvmspec.applicable", L"") == L"true",
      .jvmspecCount = number(L"build.jvmspec.total.num", L"0"),
      .notFoundPack = readPack(jvmspecs, L"build.without.vm.not.found.download.url",
                               L"build.without.vm.not.found.download.url.md5Checksum"),
      .directPack = readPack(jvmspecs, L"build.without.vm.direct.download.url",
                             L"build.without.vm.dont.search.download.url.md5Checksum"),
      .withVm = jvmspecs.get(L"build.with.vm", L""),
      .withoutVm = jvmspecs.get(L"build.without.vm", L""),
  };
}

std::wstring jvmspecEntry(const PropertyFile& jvmspecs, int number) {
  return jvmspecs.get(L"build.jvmspec." + decimal(number), L"");
}

}  // namespace ryn
