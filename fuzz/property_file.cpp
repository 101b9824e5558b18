#include <algorithm>

#include "fuzz/input.h"
#include "properties/environment_lines.h"
#include "properties/keys.h"
#include "provision/vm_plan.h"
#include "vmlaunch/launch_request.h"

using namespace ryn;

// A property file, and everything that is read from one.
int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::wstring text = widenBytes(fuzz::bytesAsText(data, size));
  PropertyFile properties;
  properties.parse(text);

  const EnvironmentMap environment = {{L"CLASSPATH", text}};
  LaunchRequest request;
  LaunchRequest::fillFromProperties({.properties = properties,
                                     .propertiesPath = L"C:\\app\\app.ryn",
                                     .tempPropertiesPath = L"C:\\t.tmp",
                                     .defaultFolder = L"C:\\app",
                                     .arguments = {L"app.exe"},
                                     .environment = environment},
                                    request);
  fuzz::require(request.verbosityOption.empty() || request.verbose, "a verbosity is one of a verbose launch");
  const BuildOptions options = readBuildOptions(properties);
  const VmPlan plan = planVm(options);
  fuzz::require(plan.search != VmSearch::kDescribed || options.usesJvmspecs(), "descriptions are counted");
  currentVm(properties), validVmList(properties), jvmHigh(properties), applicationName(properties);
  stdoutRedirect(properties), stderrRedirect(properties), consolePause(properties);
  serviceStopSeconds(properties), launcherPlatform(properties), vmBits(properties), installerUi(properties);

  const std::wstring lines = environmentLines(environment);
  fuzz::require(std::all_of(lines.begin(), lines.end(), [](wchar_t c) { return c > 0 && c < 128; }) ||
                    text.find(L'\0') != std::wstring::npos,
                "what Java reads is ASCII");
  return 0;
}
