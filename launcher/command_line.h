#pragma once

#include <optional>
#include <string>
#include <vector>

namespace ryn {

/// The parsed command line of the process; copied into the launcher that is built from it.
struct CommandLine {
  /// What was parsed.
  std::wstring text;
  /// Every token but the service switch and its name: the program's own path first, then what the application
  /// is handed. Quotes are rejoined and existing paths expanded.
  std::vector<std::wstring> arguments;
  bool service = false;
  bool console = false;
  std::wstring serviceName;
  /// The absolute path of an existing folder, or empty.
  std::wstring tempFolder;
};

/// What the command line asks of the file system.
struct PathLookup {
  /// A file or a folder.
  bool (*exists)(const std::wstring& path);
  bool (*folderExists)(const std::wstring& path);
  /// The absolute path.
  std::wstring (*normalise)(const std::wstring& path);
  /// The absolute path with long names.
  std::wstring (*expand)(const std::wstring& path);
};

/// Parses a whole command line as GetCommandLineW gives it. Its rules are the launcher's own, not the C
/// runtime's: tokens end at blanks, a token that begins with a double quote is joined with the following ones
/// up to one that ends with a double quote, and backslashes mean nothing. An argument that names an existing
/// file or folder becomes its absolute long path; one that begins with "/" does not. Never fails.
CommandLine parseCommandLine(const std::wstring& text, const PathLookup& paths);

/// What the command line says of a silent launch: true when its last argument is "silent" in any letter case,
/// false for any other last argument, nothing when there are no arguments. Arguments are those of
/// splitAsWindows here.
std::optional<bool> silentArgument(std::wstring_view text);

/// The program and its arguments as CommandLineToArgvW gives them. Its library, shell32, takes as long to
/// load as all others together, and every launch would pay for it.
std::vector<std::wstring> splitAsWindows(std::wstring_view text);

}  // namespace ryn
