#include <algorithm>

#include "fuzz/input.h"
#include "packs/memory_file.h"
#include "provision/pack_reader.h"

using namespace ryn;

namespace {

constexpr int32_t kMostEntries = 64;
constexpr size_t kMostBytes = size_t{1} << 20;

bool isSeparator(wchar_t c) {
  return c == L'/' || c == L'\\';
}

bool hasParent(std::wstring_view name) {
  for (size_t at = 0; at + 3 < name.size(); ++at) {
    if (isSeparator(name[at]) && name.substr(at + 1, 2) == L".." && isSeparator(name[at + 3])) return true;
  }
  return false;
}

void checkName(std::wstring_view name, bool hadParent) {
  fuzz::require(name.size() <= 260 && !hasParent(name), "names are short and have no parents");
  // Behind a parent anything may stand: docs/vm-packs.md.
  if (hadParent) return;
  fuzz::require(name.empty() || !isSeparator(name[0]), "a name has no root");
  fuzz::require(name.size() < 2 || name[1] != L':', "a name has no drive");
}

void checkArchive(ByteView bytes) {
  MemoryFile file{bytes};
  PackReader reader([](uint32_t dosDateTime) { return uint64_t{dosDateTime}; });
  zlib_filefunc64_def functions = memoryFunctions();
  if (!reader.open(functions, &file)) return;
  PackEntry entry;
  reader.getEntry(-1, entry);
  const int32_t count = std::min(entry.index, kMostEntries);
  for (int32_t index = 0; index < count; ++index) {
    const PackResult result = reader.getEntry(index, entry);
    if (result == PackResult::kBadIndex) break;
    if (result != PackResult::kOk) continue;
    checkName(entry.name, true);
    if (reader.openData() != PackResult::kOk) continue;
    size_t total = 0;
    std::string_view piece;
    while (reader.readData(piece) == PackResult::kOk && !piece.empty() && total < kMostBytes)
      total += piece.size();
    reader.closeData();
  }
}

}  // namespace

// Behind the first byte the name of an entry, its extra field, or a whole pack.
int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const std::string_view rest = fuzz::bytesAsText(data + 1, size - 1);
  switch (data[0]) {
    case 'n':
      checkName(entryName(rest), hasParent(fromUtf8(rest.substr(0, rest.find('\0')))));
      break;
    case 'x':
      if (size > 9) attributesOf(readU32({data + 1, 4}, 0), readU32({data + 5, 4}, 0));
      timesOf(1, rest);
      break;
    default:
      checkArchive({data + 1, size - 1});
  }
  return 0;
}
