#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ryn/findings.h"
#include "text/little_endian.h"

namespace ryn {

/// What the launcher would do with an entry of the runtime in a pack.
struct UnpackedEntry {
  /// As it is stored, invalid UTF-8 replaced.
  std::string entry;
  /// Where it is unpacked to, below the runtime's folder, with "/" between folders; UTF-8.
  std::string name;
  bool isFolder = false;
  /// Bytes that are written; 0 for what cannot be read.
  uint64_t size = 0;
  /// Windows' attributes, of provision/pack_entry.h.
  uint32_t attributes = 0;
};

struct PackCheck {
  std::vector<UnpackedEntry> entries;
  Findings findings;
};

/// Looks through a VM pack as the launcher would unpack it. Lines of findings are numbers of entries; those
/// of the archive in it have "/vm.zip" behind `file`, the name for findings.
PackCheck checkPack(const std::string& file, Bytes pack);

}  // namespace ryn
