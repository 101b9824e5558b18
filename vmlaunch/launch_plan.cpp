#include "vmlaunch/launch_plan.h"

#include "properties/keys.h"
#include "text/path_text.h"
#include "vmlaunch/fact_lines.h"
#include "vmlaunch/short_paths.h"
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
  return plan.lostPath.empty() ? LaunchRefusal::kNone : LaunchRefusal::kLostPath;
}

void makeWritable(std::wstring& path, LaunchPlan& plan, const VmProbe& probe) {
  WritablePath writable = writablePath(path, probe);
  if (writable.isLost && plan.lostPath.empty()) plan.lostPath = path;
  path = std::move(writable.text);
}

}  // namespace

LaunchPlan planLaunch(const VmChoice& choice, const LaunchFacts& facts, const VmProbe& probe) {
  LaunchPlan plan;
  plan.considered = choice.considered;
  plan.vm = *choice.chosen;
  LaunchRequest::fillFromProperties(facts, plan.request);
  plan.program = vmProgram(plan.vm, facts.console, probe);
  plan.request.userOptions = readUserOptions(facts, probe);
  VmCandidate vm = plan.vm;
  std::wstring program = plan.program;
  if (win32ShortPaths(facts.properties)) {
    makeWritable(program, plan, probe);
    // Only these have a part of their class path there.
    if (dialectOf(vm) == VmDialect::kClassic) makeWritable(vm.folder, plan, probe);
    for (std::wstring& path : plan.request.classpath.entries) makeWritable(path, plan, probe);
    for (std::wstring& path : plan.request.leadingArguments) makeWritable(path, plan, probe);
  }
  plan.options = vmOptions(vm, plan.request);
  plan.commandLine = vmCommandLine(vm, plan.request, program);
  plan.facts = factLines(facts);
  // A VM reads its environment in Unicode, its command line in the ANSI code page.
  if (exactArguments(facts.properties) && !facts.tempPropertiesPath.empty()) {
    plan.variables[kPropertiesVariable] = facts.tempPropertiesPath;
  }
  plan.refusal = refusalOf(plan, probe);
  return plan;
}

}  // namespace ryn
