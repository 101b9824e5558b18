// Times the unpacking of a VM pack: bench_unpack PACK FOLDER. Unpacks it once by the product's code into
// FOLDER\product and once by the plainest loop over minizip into FOLDER\plain, and prints the milliseconds of
// both. The folders must not exist; paths are ASCII.
#include <direct.h>
#include <unzip.h>
#include <windows.h>

#include <cstdio>
#include <string>
#include <vector>

#include "platform/text.h"
#include "provision/unpack.h"

namespace {

double milliseconds() {
  LARGE_INTEGER frequency;
  LARGE_INTEGER now;
  QueryPerformanceFrequency(&frequency);
  QueryPerformanceCounter(&now);
  return 1000.0 * static_cast<double>(now.QuadPart) / static_cast<double>(frequency.QuadPart);
}

bool unzipPlainly(const std::string& archive, const std::string& folder) {
  unzFile zip = unzOpen64(archive.c_str());
  if (zip == nullptr) return false;
  _mkdir(folder.c_str());
  std::vector<char> buffer(16384);
  for (int status = unzGoToFirstFile(zip); status == UNZ_OK; status = unzGoToNextFile(zip)) {
    char name[512];
    unzGetCurrentFileInfo64(zip, nullptr, name, sizeof(name), nullptr, 0, nullptr, 0);
    std::string path = folder + "\\" + name;
    for (size_t at = folder.size() + 1; (at = path.find('/', at)) != std::string::npos; ++at) {
      _mkdir(path.substr(0, at).c_str());
    }
    if (path.back() == '/') continue;
    std::FILE* file = std::fopen(path.c_str(), "wb");
    if (file == nullptr || unzOpenCurrentFile(zip) != UNZ_OK) return false;
    int size = 0;
    while ((size = unzReadCurrentFile(zip, buffer.data(), static_cast<unsigned>(buffer.size()))) > 0) {
      std::fwrite(buffer.data(), 1, static_cast<size_t>(size), file);
    }
    unzCloseCurrentFile(zip);
    std::fclose(file);
  }
  unzClose(zip);
  return true;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 3) return 2;
  const std::string pack = arguments[1];
  const std::string folder = arguments[2];
  const std::string outer = folder + "\\outer";

  const double start = milliseconds();
  if (!ryn::extractPack(ryn::widenBytes(pack), ryn::widenBytes(folder + "\\product\\"))) return 1;
  const double between = milliseconds();
  if (!unzipPlainly(pack, outer) || !unzipPlainly(outer + "\\vm.zip", folder + "\\plain")) return 1;
  const double end = milliseconds();
  std::printf("%.0f %.0f\n", between - start, end - between);
  return 0;
}
