#include "vmlaunch/java_vm.h"

#include "platform/errors.h"
#include "platform/files.h"
#include "platform/output.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "platform/version_resource.h"
#include "resources/string_table.h"
#include "vmlaunch/vm_process.h"

namespace ryn {
namespace {

template <typename Vm>
JavaVmPtr make(const VmCandidate& candidate, const VmHost& host) {
  return JavaVmPtr(new Vm(candidate, host), [](JavaVM* vm) { delete static_cast<Vm*>(vm); });
}

int microsoftBuild(const std::wstring& executable) {
  const auto version = VersionReader().read(executable).fileVersion;
  return version ? (*version)[2] : 0;
}

}  // namespace

JavaVmPtr makeJavaVm(const VmCandidate& candidate, const VmHost& host) {
  switch (dialectOf(candidate)) {
    case VmDialect::kClassic:
      return make<ClassicJavaVM>(candidate, host);
    case VmDialect::kMicrosoft:
      return make<MicrosoftJavaVM>(candidate, host);
    case VmDialect::kModern:
      break;
  }
  return make<ModernJavaVM>(candidate, host);
}

JavaVM::JavaVM(const VmCandidate& candidate, const VmHost& host)
    : version_(candidate.version), home_(candidate.folder), vendor_(candidate.vendor), host_(host) {}

std::wstring ClassicJavaVM::executablePath() const {
  const std::wstring runtime = home() + (host().console ? L"\\bin\\jre.exe" : L"\\bin\\jrew.exe");
  if (pathExists(runtime)) return runtime;
  return home() + (host().console ? L"\\bin\\java.exe" : L"\\bin\\javaw.exe");
}

UniqueHandle ClassicJavaVM::launch(LaunchRequest request, bool wait) {
  return startVmProcess(request, classicCommandLine(request, executablePath(), home()), wait);
}

std::wstring ModernJavaVM::executablePath() const {
  const std::wstring folderName = lowerCase(fileName(home()));
  const bool systemFolder = folderName == L"system32" || folderName == L"syswow64";
  const std::wstring folder = home() + (systemFolder ? L"" : L"\\bin");
  const std::wstring consoleless = folder + L"\\javaw.exe";
  if (pathExists(consoleless)) {
    const std::wstring candidate = host().console ? folder + L"\\java.exe" : consoleless;
    if (pathExists(candidate)) return candidate;
  }
  // A VM that was found by its executable has the executable's own folder for its home.
  return home() + (host().console ? L"\\java.exe" : L"\\javaw.exe");
}

UniqueHandle ModernJavaVM::launch(LaunchRequest request, bool wait) {
  const std::wstring executable = executablePath();
  if (request.secureFolderCheck == L"true" && host().refusesFolder(folderPart(executable))) {
    writeOutput(
        concat({L"\nSecurity Error! The JVM ", executable,
                L" used for this installer seems to have been installed in a unsecured location "
                L"(non-admin user folder). Installer would now exit. Please reach out to your vendor for "
                L"more details.\n"}));
    host().prompt.showMessage(StringTable::get(IDS_UNSECURED_LOCATION),
                              StringTable::get(IDS_SECURITY_ERROR_TITLE));
    return UniqueHandle();
  }
  return startVmProcess(request, modernCommandLine(request, executable, version()), wait);
}

std::wstring MicrosoftJavaVM::executablePath() const {
  return home() + (host().console ? L"\\jview.exe" : L"\\wjview.exe");
}

UniqueHandle MicrosoftJavaVM::launch(LaunchRequest request, bool wait) {
  if (microsoftBuild(home() + L"\\jview.exe") < request.microsoftMinBuild) {
    throw NoValidVmError(StringTable::get(IDS_NO_VALID_VM));
  }
  SetEnvironmentVariableW(L"CLASSPATH", joinClasspath(request.classpath).c_str());
  return startVmProcess(request, microsoftCommandLine(request, executablePath()), wait);
}

}  // namespace ryn
