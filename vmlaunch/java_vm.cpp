#include "vmlaunch/java_vm.h"

#include "platform/errors.h"
#include "platform/output.h"
#include "platform/text.h"
#include "resources/string_table.h"
#include "vmlaunch/vm_process.h"

namespace ryn {
namespace {

template <typename Vm>
JavaVmPtr make(const LaunchPlan& plan, UserPrompt& prompt) {
  return JavaVmPtr(new Vm(plan, prompt), [](JavaVM* vm) { delete static_cast<Vm*>(vm); });
}

void refuseLostPath(const LaunchPlan& plan) {
  if (plan.refusal != LaunchRefusal::kLostPath) return;
  throw TerminalError(
      concat({L"Java cannot be told of\n", plan.lostPath,
              L"\nThe system's code page lacks characters of this path, and its drive keeps no short names "
              L"(fsutil 8dot3name query). Please move it to a folder with a plain name."}));
}

}  // namespace

JavaVmPtr makeJavaVm(const LaunchPlan& plan, UserPrompt& prompt) {
  switch (dialectOf(plan.vm)) {
    case VmDialect::kClassic:
      return make<ClassicJavaVM>(plan, prompt);
    case VmDialect::kMicrosoft:
      return make<MicrosoftJavaVM>(plan, prompt);
    case VmDialect::kModern:
      break;
  }
  return make<ModernJavaVM>(plan, prompt);
}

UniqueHandle ClassicJavaVM::launch(LaunchRequest request, bool wait) {
  refuseLostPath(plan());
  return startVmProcess(request, plan().commandLine, wait);
}

UniqueHandle ModernJavaVM::launch(LaunchRequest request, bool wait) {
  if (plan().refusal == LaunchRefusal::kUnsafeFolder) {
    writeOutput(
        concat({L"\nSecurity Error! The JVM ", executablePath(),
                L" used for this installer seems to have been installed in a unsecured location "
                L"(non-admin user folder). Installer would now exit. Please reach out to your vendor for "
                L"more details.\n"}));
    prompt().showMessage(StringTable::get(IDS_UNSECURED_LOCATION),
                         StringTable::get(IDS_SECURITY_ERROR_TITLE));
    return UniqueHandle();
  }
  refuseLostPath(plan());
  return startVmProcess(request, plan().commandLine, wait);
}

UniqueHandle MicrosoftJavaVM::launch(LaunchRequest request, bool wait) {
  if (plan().refusal == LaunchRefusal::kVmTooOld) throw NoValidVmError(StringTable::get(IDS_NO_VALID_VM));
  refuseLostPath(plan());
  SetEnvironmentVariableW(L"CLASSPATH", joinClasspath(request.classpath).c_str());
  return startVmProcess(request, plan().commandLine, wait);
}

}  // namespace ryn
