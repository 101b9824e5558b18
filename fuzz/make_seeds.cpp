#include <fstream>
#include <string>

#include "image/version_info.h"
#include "tests/unit/image/image_builder.h"
#include "tests/unit/provision/zip_builder.h"

using namespace ryn;

namespace {

template <typename Content>
void write(const std::string& path, const std::string& mode, const Content& content) {
  std::ofstream file(path, std::ios::binary);
  file << mode;
  file.write(reinterpret_cast<const char*>(content.data()), static_cast<std::streamsize>(content.size()));
}

}  // namespace

// Writes what the unit tests build, as seeds of the targets, below the folder given.
int main(int count, char** arguments) {
  if (count != 2) return 2;
  const std::string folder = arguments[1];
  VersionInfo info;
  info.tables = {{.strings = {{L"CompanyName", L"Ibex"}, {L"ProductName", L"\xd83d\xde00"}}}};
  const Bytes version = writeVersionInfo(info);
  write(folder + "/version/resource", "r", version);
  const Resources resources = {{{kRtVersion, uint16_t{1}, 0}, {version}},
                               {{std::wstring(L"NAMED"), uint16_t{7}, 1031}, {{1, 2, 3}}}};
  for (const bool is64Bit : {false, true}) {
    write(folder + (is64Bit ? "/image/64" : "/image/32"), "", test::makeImage(is64Bit, resources, "overlay"));
  }
  const std::string extra = "UT" + test::littleEndian(5, 2) + "\1" + test::littleEndian(1000, 4);
  write(folder + "/archive/extra", "x", extra);
  write(folder + "/archive/pack", "z",
        test::makeZip({{.name = "bin/", .externalAttributes = 0x10},
                       {.name = "bin/a", .data = std::string(300, 'a'), .localExtra = extra},
                       {.name = "..\\b", .data = "b", .method = 0, .versionMadeBy = 0x314},
                       {.name = "c", .data = "c", .flags = 1}}));
  return 0;
}
