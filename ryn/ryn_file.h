#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ryn {

/// What an application's .ryn file says. Texts are UTF-8.
struct RynFile {
  std::string name = {};
  /// Empty: the one that the manifest of the first jar names.
  std::string mainClass = {};
  /// File names in the folder "lib"; none: all jars of that folder.
  std::vector<std::string> jars = {};
  /// Whether ryn-start.jar lies in that folder and starts the program; else this is written for the launcher.
  bool start = true;
  std::string validVms = "JRE JDK";
  /// Bytes; 0 leaves it to the VM.
  uint64_t heapMax = 0;
  /// Options of the VM, each of which reaches it as one argument.
  std::vector<std::string> options = {};
  /// The VM of the folder, or where one will be fetched to, as "jre/bin/java.exe"; empty: none.
  std::string currentVm = {};
  bool console = false;
};

/// The content of the file, in ASCII.
std::string rynFileText(const RynFile& file);

/// Bytes of "536870912", "524288k", "512m" or "1g"; nothing for other texts and for 0.
std::optional<uint64_t> parseSize(std::string_view text);

/// `text` such that the C runtime of Windows, and with it the VM, reads it as one argument.
/// Source: "Parsing C command-line arguments" in Microsoft's documentation.
std::string quotedArgument(std::string_view text);

}  // namespace ryn
