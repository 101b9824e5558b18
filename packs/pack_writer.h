#pragma once

#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "text/little_endian.h"

namespace ryn {

/// What keeps files from becoming a pack, as a clause in UTF-8.
class PackError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Why Windows could not hold the files or folders (these end in "/") of the given names, one line each with
/// the name: characters and names that it reserves, names that differ in case only (ASCII letters), a file in
/// the place of a folder. Names are UTF-8 relative to the runtime's folder, with "/" between folders.
std::vector<std::string> packNameFaults(const std::vector<std::string>& names);

/// Why Windows could not hold the file or folder (this ends in "/") of one such name, as a clause without the
/// name; empty for one that it can.
std::string packNameFault(std::string_view name);

/// A VM pack: a zip archive with "vm.zip", which holds the files, and "vm.properties", which says `vmName`.
///
/// The same names and contents give the same bytes, in whatever order the names come: entries are sorted,
/// bear one date and no attribute but "archive" (a read-only file would be in the way of the next unpacking).
/// The programs "javaw.exe" and, at the very end, "java.exe" of the runtime's "bin" come last, so that there
/// is no runtime where unpacking was broken off.
///
/// `read` gives the content of the file with that name; it is asked once for each. Throws PackError for names
/// with faults, without a bin/java.exe or jre/bin/java.exe, and for sizes beyond what the launcher can read
/// (2 GB).
Bytes writePack(std::vector<std::string> names, const std::function<Bytes(const std::string&)>& read,
                std::string_view vmName);

}  // namespace ryn
