#include "vmlaunch/launch_request.h"

#include "platform/output.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "properties/keys.h"

namespace ryn {
namespace {

std::wstring resolve(const std::wstring& path, const std::wstring& folder) {
  return isAbsolutePath(path) ? path : joinPath(folder, path);
}

void setVerbosity(const std::wstring& text, LaunchRequest& request) {
  request.verbose = !text.empty();
  request.verbosityOption.clear();
  if (!request.verbose) return;

  const std::wstring choice = lowerCase(text);
  if (choice == L"normal" || choice == L"all") return;
  if (choice == L"gc" || choice == L"class") {
    request.verbosityOption = choice;
    return;
  }
  if (choice != L"none") {
    writeError(concat({L"invalid verbosity selection '", choice, L"', disabling verbosity.\n"}));
  }
  request.verbose = false;
}

Classpath splitClasspath(const std::wstring& text, const std::wstring& folder) {
  Classpath classpath;
  for (const std::wstring& entry : split(text, L';')) {
    // An empty piece, such as CLASSPATH leaves when it is unset, is no entry: it would put the whole
    // application folder on the class path.
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

void LaunchRequest::fillFromProperties(const Source& source, LaunchRequest& request) {
  const PropertyFile& properties = source.properties;
  const std::wstring folder = folderPart(source.propertiesPath);

  const std::wstring directory = userDir(properties);
  if (directory.empty()) {
    request.workingDirectory = source.defaultFolder;
  } else if (isAbsolutePath(directory)) {
    request.workingDirectory = directory;
  } else {
    request.workingDirectory = normalisePath(joinPath(folder, directory));
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
  request.leadingArguments = {source.propertiesPath, source.tempPropertiesPath};
  setVerbosity(optionVerbose(properties), request);
  // A service must survive the log-off of whoever is at the screen.
  if (source.service) request.additionalOptions += L" -Xrs";
  request.classpath = splitClasspath(classPath(properties), folder);

  request.applicationArguments.clear();
  for (size_t i = 1; i < source.arguments.size(); ++i) {
    request.applicationArguments.push_back(source.arguments[i]);
  }
}

}  // namespace ryn
