#pragma once

#include <filesystem>

#include "ryn/findings.h"

namespace ryn {

/// Reads the folder of an application, or the .ryn file in it, as the launcher would, and tells what would go
/// wrong; by file and line. Files in findings begin with the folder as it is given. Throws CommandError
/// (kUsage) for a folder without a .ryn file or with several, and for what cannot be read.
Findings checkApplication(const std::filesystem::path& folderOrFile);

}  // namespace ryn
