#include "vmlaunch/launch_plan.h"

#include "properties/keys.h"
#include "text/path_text.h"
#include "vmlaunch/fact_lines.h"
#include "vmlaunch/vm_command_line.h"
#include "vmsearch/vm_program.h"

namespace ryn {
namespace {

constexpr wchar_t kPropertiesVariable[] = L"RYN_LAUNCH_PROPERTIES";

int microsoftBuild(const std::wstring& home, const VmProbe& probe) {
  const auto version = probe.versionResource(home + L"\\jview.exe").fileVersion;
  return version ? (*version)[2] : 0;
}

LaunchRefusal refusalOf(const LaunchPlan& plan, const VmProbe& probe) {
  const VmDialect dialect = dialectOf(plan.vm);
  if (dialect == VmDialect::kModern && plan.request.secureFolderCheck == L"true" &&
      probe.refusesFolder(folderPart(plan.program))) {
    return LaunchRefusal::kUnsafeFolder;
  }
  if (dialect == VmDialect::kMicrosoft &&
      microsoftBuild(plan.vm.folder, probe) < plan.request.microsoftMinBuild) {
    return LaunchRefusal::kVmTooOld;
  }
  return LaunchRefusal::kNone;
}

}  // namespace

LaunchPlan planLaunch(const VmChoice& choice, const LaunchFacts& facts, const VmProbe& probe) {
  LaunchPlan plan;
  plan.considered = choice.considered;
  plan.vm = *choice.chosen;
  LaunchRequest::fillFromProperties(facts, plan.request);
  plan.program = vmProgram(plan.vm, facts.console, probe);
  plan.commandLine = vmCommandLine(plan.vm, plan.request, plan.program);
  plan.facts = factLines(facts);
  // A VM reads its environment in Unicode, its command line in the ANSI code page.
  if (exactArguments(facts.properties) && !facts.tempPropertiesPath.empty()) {
    plan.variables[kPropertiesVariable] = facts.tempPropertiesPath;
  }
  plan.refusal = refusalOf(plan, probe);
  return plan;
}

}  // namespace ryn
