#pragma once

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "text/little_endian.h"

namespace ryn {

/// What the program ends with.
enum ExitCode { kGood = 0, kNegative = 1, kUsage = 2 };

/// Ends a command: a sentence in UTF-8 for standard error, and the exit code.
class CommandError : public std::runtime_error {
 public:
  CommandError(ExitCode exitCode, const std::string& text) : std::runtime_error(text), code(exitCode) {}

  ExitCode code;
};

std::filesystem::path pathOf(const std::string& utf8);
/// With "/" between folders.
std::string textOf(const std::filesystem::path& path);
std::vector<std::string> utf8Of(const std::vector<std::wstring>& texts);

/// Throws CommandError (kUsage) for a file that cannot be read.
Bytes readFile(const std::filesystem::path& path);

/// Under a temporary name beside it first, so that the file is whole or as before. Throws CommandError
/// (kUsage) when it cannot be written.
void writeFile(const std::filesystem::path& path, ByteView bytes);

/// All files below a folder, and those of its folders that are empty (with "/" at the end): names relative to
/// it, sorted. Links are followed. Throws CommandError (kUsage) for what is no folder or cannot be read.
std::vector<std::string> filesBelow(const std::filesystem::path& folder);

}  // namespace ryn
