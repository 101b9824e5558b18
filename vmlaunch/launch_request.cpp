#include "vmlaunch/launch_request.h"

#include "properties/keys.h"
#include "text/path_text.h"
#include "text/text.h"

namespace ryn {
namespace {

std::wstring resolve(const std::wstring& path, const std::wstring& folder) {
  return isAbsolutePath(path) ? path : joinPath(folder, path);
}

void setVerbosity(const std::wstring& text, LaunchRequest& request) {
  request.verbose = !text.empty();
  if (!request.verbose) return;

  const std::wstring choice = lowerCase(text);
  if (choice == L"normal" || choice == L"all") return;
  if (choice == L"gc" || choice == L"class") {
    request.verbosityOption = choice;
    return;
  }
  if (choice != L"none") {
    request.diagnostics = concat({L"invalid verbosity selection '", choice, L"', disabling verbosity.\n"});
  }
  request.verbose = false;
}

Classpath splitClasspath(const std::wstring& text, const std::wstring& folder) {
  Classpath classpath;
  for (const std::wstring& entry : split(text, L';')) {
    // An empty piece is what an unset CLASSPATH or a stray ";" leaves. Nobody meant the application folder by
    // it, whose classes would then come before those of the jars behind it.
    if (!entry.empty()) classpath.entries.push_back(resolve(entry, folder));
  }
  return classpath;
}

}  // namespace

bool parseFlag(std::wstring_view text) {
  const std::wstring lower = lowerCase(text);
  return lower == L"true" || lower == L"on" || lower == L"t";
}

int64_t parseHeapSize(std::wstring_view text) {
  return static_cast<int64_t>(parseSize(text));
}

std::wstring joinClasspath(const Classpath& classpath) {
  std::wstring joined;
  for (const std::wstring& entry : classpath.entries) joined += entry + L";";
  return joined;
}

void LaunchRequest::fillFromProperties(const LaunchFacts& facts, LaunchRequest& request) {
  const PropertyFile& properties = facts.properties;
  const std::wstring folder = folderPart(facts.propertiesPath);

  const std::wstring directory = userDir(properties);
  if (directory.empty()) {
    request.workingDirectory = facts.defaultFolder;
  } else if (isAbsolutePath(directory)) {
    request.workingDirectory = directory;
  } else {
    request.workingDirectory = resolvePath(directory, folder);
  }

  request.mainClass = ryn::mainClass(properties);
  request.additionalOptions = optionAdditional(properties);
  request.heapInitial = static_cast<int64_t>(optionHeapInitial(properties));
  request.heapMax = static_cast<int64_t>(optionHeapMax(properties));
  request.gcExtent = optionGcExtent(properties);

  request.verifyMode = parseFlag(optionVerifyMode(properties));
  request.noAsyncGc = parseFlag(optionGcBackgroundThread(properties));
  request.debugging = parseFlag(optionDebugging(properties));
  request.noJit = parseFlag(optionCompiler(properties));

  request.endsWithLauncher = win32Job(properties);
  request.microsoftMinBuild = microsoftVmMinVersion(properties);
  request.secureFolderCheck = ryn::secureFolderCheck(properties);
  request.leadingArguments = {facts.propertiesPath, facts.tempPropertiesPath};
  setVerbosity(optionVerbose(properties), request);
  // A service must survive the log-off of whoever is at the screen.
  if (facts.service) request.additionalOptions += L" -Xrs";
  request.classpath = splitClasspath(classPath(properties, facts.environment), folder);

  for (size_t i = 1; i < facts.arguments.size(); ++i) {
    request.applicationArguments.push_back(facts.arguments[i]);
  }
}

}  // namespace ryn
