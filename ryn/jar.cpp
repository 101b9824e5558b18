#include "ryn/jar.h"

#include <memory>

#include "packs/memory_file.h"
#include "text/text.h"

namespace ryn {
namespace {

struct Close {
  void operator()(void* reader) const { unzClose(reader); }
};

/// The first line of `text`, which it takes away.
std::string_view takeLine(std::string_view& text) {
  const size_t end = std::min(text.find_first_of("\r\n"), text.size());
  const std::string_view line = text.substr(0, end);
  text.remove_prefix(end);
  if (text.starts_with("\r\n"))
    text.remove_prefix(2);
  else if (!text.empty())
    text.remove_prefix(1);
  return line;
}

}  // namespace

std::optional<std::string> archiveEntry(ByteView archive, const std::string& name) {
  constexpr int kAnyCase = 2;
  MemoryFile file{archive};
  zlib_filefunc64_def functions = memoryFunctions();
  const std::unique_ptr<void, Close> reader(unzOpen2_64(&file, &functions));
  if (!reader || unzLocateFile(reader.get(), name.c_str(), kAnyCase) != UNZ_OK ||
      unzOpenCurrentFile(reader.get()) != UNZ_OK) {
    return {};
  }
  std::string content;
  char piece[4096];
  int size = 0;
  while ((size = unzReadCurrentFile(reader.get(), piece, sizeof piece)) > 0)
    content.append(piece, size_t(size));
  // Closing says whether the check sum was right.
  if (unzCloseCurrentFile(reader.get()) != UNZ_OK || size < 0) return {};
  return content;
}

std::string manifestOf(ByteView jar) {
  return archiveEntry(jar, "META-INF/MANIFEST.MF").value_or("");
}

std::string manifestAttribute(std::string_view manifest, std::string_view name) {
  const std::wstring wanted = lowerCase(widenBytes(name));
  std::string line(takeLine(manifest));
  while (!line.empty()) {
    // A line that begins with a blank continues the one before.
    while (manifest.starts_with(' ')) line += takeLine(manifest).substr(1);
    const size_t colon = line.find(": ");
    if (colon != std::string::npos && lowerCase(widenBytes(line.substr(0, colon))) == wanted)
      return line.substr(colon + 2);
    line = takeLine(manifest);
  }
  return {};
}

}  // namespace ryn
