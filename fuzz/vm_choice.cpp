#include <algorithm>

#include "fuzz/input.h"
#include "properties/keys.h"
#include "resolve/resolve_vm.h"
#include "tests/unit/support/fake_probe.h"
#include "vmlaunch/launch_plan.h"

using namespace ryn;

namespace {

constexpr wchar_t kApplication[] = L"C:\\app";

/// A machine and an application, as a script tells them.
struct Case {
  test::FakeProbe machine;
  PropertyFile properties, jvmspecs;
  bool hasJvmspecs = false;
  bool console = false;
  bool exhaustive = false;
  EnvironmentMap environment;

  Case(const uint8_t* data, size_t size) {
    for (const auto& [letter, text] : fuzz::statements(data, size)) take(letter, split(text, L'|'), text);
  }

  void take(wchar_t letter, std::vector<std::wstring> parts, const std::wstring& text) {
    parts.resize(3);
    switch (letter) {
      case L'p':
        return properties.parse(text + L"\n");
      case L's':
        hasJvmspecs = true;
        return jvmspecs.parse(text + L"\n");
      case L'f':
        return machine.file(text);
      case L'v': {
        const VmVersion version = parseVmVersion(parts[1]);
        const auto word = [](int16_t component) { return static_cast<uint16_t>(component); };
        return machine.vm(parts[0],
                          {word(version.generation()), word(version.minor()), word(version.micro()), 0},
                          parts[2] == L"jdk");
      }
      case L'r':
        return machine.value(parts[0], parts[1], parts[2]);
      case L'd':
        machine.texts[concat({kApplication, L"\\jvmspecs\\", parts[0]})] = replaceAll(parts[1], L";", L"\n");
        return;
      case L'l':
        machine.links[parts[0]] = parts[1];
        return;
      case L'b':
        machine.images32.insert(text);
        return;
      case L'u':
        machine.unsafe.insert(text);
        return;
      case L'y':
        machine.answers[text] = ValidatorAnswer::kAccepted;
        return;
      case L'e':
        environment[parts[0]] = parts[1];
        return;
      case L'!':
        console = text.find(L'c') != text.npos;
        exhaustive = text.find(L'x') != text.npos;
        machine.wow64 = text.find(L'w') != text.npos;
        machine.administrator = text.find(L'a') != text.npos;
        return;
      default:
        return;
    }
  }
};

bool isListed(const ConsideredVm& vm, const PropertyFile& properties) {
  const std::vector<std::wstring> tokens = validVmTokens(validVmList(properties));
  // Without a list the current VM is taken as it is.
  if (tokens.empty()) return vm.source == VmSource::kCurrentVm;
  return std::any_of(tokens.begin(), tokens.end(), [&](const std::wstring& token) {
    return matchesToken(vm.candidate, token).value_or(false);
  });
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Case input(data, size);
  const VmChoice choice = resolveVm({.properties = input.properties,
                                     .jvmspecs = input.hasJvmspecs ? &input.jvmspecs : nullptr,
                                     .applicationFolder = kApplication,
                                     .environment = input.environment,
                                     .console = input.console,
                                     .exhaustive = input.exhaustive},
                                    input.machine, nullptr);
  const uint64_t platform = launcherPlatform(input.properties);
  size_t chosen = 0;
  for (const ConsideredVm& vm : choice.considered) {
    if (vm.outcome == VmOutcome::kOutranked) {
      fuzz::require(choice.chosen && !ranksBelow(*choice.chosen, vm.candidate, platform), "the highest wins");
    }
    if (vm.outcome != VmOutcome::kChosen) continue;
    ++chosen;
    const bool asked = input.machine.files.contains(L"C:\\app\\jvmspecs\\Verify.jar");
    const bool searched = vm.source == VmSource::kRegistry || vm.source == VmSource::kPath ||
                          vm.source == VmSource::kDescription || vm.source == VmSource::kCurrentVm;
    fuzz::require(!searched || asked || isListed(vm, input.properties), "the list admits the VM");
    fuzz::require(vm.candidate.folder == choice.chosen->folder, "the record names the VM");
  }
  fuzz::require(chosen == (choice.chosen ? 1U : 0U), "the record has one chosen VM, or none");
  if (!choice.chosen) return 0;
  const LaunchPlan plan = planLaunch(choice,
                                     {.properties = input.properties,
                                      .propertiesPath = L"C:\\app\\app.ryn",
                                      .tempPropertiesPath = L"C:\\t.tmp",
                                      .defaultFolder = kApplication,
                                      .arguments = {L"app.exe", L"a"},
                                      .environment = input.environment,
                                      .console = input.console},
                                     input.machine);
  fuzz::require(plan.commandLine.starts_with(concat({L"\"", plan.program, L"\" "})),
                "a plan starts its program");
  return 0;
}
