#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "properties/property_file.h"
#include "text/environment_map.h"
#include "vmlaunch/user_options.h"

namespace ryn {

/// Class path entries in order.
struct Classpath {
  std::vector<std::wstring> entries;
};

/// Every entry followed by ";", the last one included.
std::wstring joinClasspath(const Classpath& classpath);

/// What is known of a launch before a VM is.
struct LaunchFacts {
  const PropertyFile& properties;
  /// Full path of the property file; relative paths in it count from its folder.
  std::wstring propertiesPath;
  /// Path of the temporary properties file.
  std::wstring tempPropertiesPath;
  /// Full path of the launcher's executable.
  std::wstring programPath;
  /// The folder in which the launcher was started: the working folder when the properties name none.
  std::wstring defaultFolder;
  /// The launcher's whole command line, as it was given.
  std::wstring commandLine;
  /// The launcher's arguments; the first is its own path.
  std::vector<std::wstring> arguments;
  const EnvironmentMap& environment;
  /// The launcher has a console: the VM's console program is run.
  bool console = false;
  bool service = false;
  /// The VM's standard input is a pipe whose end asks the program to end.
  bool stopInput = false;
};

/// Everything that one VM start needs, whatever the kind of VM.
struct LaunchRequest {
  std::wstring mainClass;
  /// Only its emptiness matters.
  std::wstring gcExtent;
  /// Handed to the VM verbatim.
  std::wstring additionalOptions;
  /// Handed to the VM verbatim, behind those.
  UserOptions userOptions;
  /// "", "gc" or "class".
  std::wstring verbosityOption;
  /// "true" asks for the folder security check.
  std::wstring secureFolderCheck;
  /// Absolute, or empty for the launcher's current folder.
  std::wstring workingDirectory;
  Classpath classpath;
  /// What the user gave, without the program's own path.
  std::vector<std::wstring> applicationArguments;
  /// Path of the launcher's property file, path of the temporary properties file.
  std::vector<std::wstring> leadingArguments;
  int32_t microsoftMinBuild = 0;
  /// Bytes; 0 leaves the choice to the VM.
  int64_t heapInitial = 0;
  int64_t heapMax = 0;
  /// Read and carried for a VM that would know it; none of today's kinds turns it into an option.
  bool verifyMode = false;
  bool verbose = false;
  bool debugging = false;
  bool noAsyncGc = false;
  bool noJit = false;
  /// The VM is ended when this process ends, however that comes about.
  bool endsWithLauncher = false;

  /// What is to be told on standard error when the request is carried out; mostly nothing.
  std::wstring diagnostics;

  /// Sets every field of a fresh `request` from `facts`. An unknown verbosity is told in `diagnostics` and
  /// ignored.
  static void fillFromProperties(const LaunchFacts& facts, LaunchRequest& request);
};

/// True for "true", "on" or "t" in any letter case.
bool parseFlag(std::wstring_view text);

/// Bytes, with the suffixes "k" and "m".
int64_t parseHeapSize(std::wstring_view text);

}  // namespace ryn
