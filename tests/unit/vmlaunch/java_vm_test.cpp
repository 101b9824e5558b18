#include "vmlaunch/java_vm.h"

#include <gtest/gtest.h>

#include "platform/environment.h"
#include "platform/errors.h"
#include "resources/string_table.h"
#include "tests/unit/support/process_state.h"
#include "tests/unit/support/temp_folder.h"

namespace ryn {
namespace {

struct RecordingPrompt final : UserPrompt {
  std::wstring shown;
  void showError(const std::wstring& text, const std::wstring& title) override {
    shown += L"error " + title + L": " + text;
  }
  void showMessage(const std::wstring& text, const std::wstring& title) override {
    shown += title + L": " + text;
  }
};

bool refusesAll(const std::wstring&) {
  return true;
}
bool refusesNone(const std::wstring&) {
  return false;
}

VmCandidate candidate(VmKind kind, int16_t generation, const std::wstring& folder) {
  VmCandidate vm;
  vm.kind = kind;
  vm.version = VmVersion(generation, 0, 0);
  vm.folder = folder;
  return vm;
}

/// What the launch throws, which is all that can be seen of the start of a program that is not there.
std::wstring launchError(const JavaVmPtr& vm, const LaunchRequest& request) {
  try {
    return vm->launchDefault(request) ? L"started" : L"refused";
  } catch (const TerminalError& error) {
    return error.message();
  }
}

TEST(JavaVmTest, FindsItsProgram) {
  // Files, folder of the VM, and its windowless and its console program.
  const std::tuple<VmKind, int16_t, std::vector<const wchar_t*>, const wchar_t*, const wchar_t*,
                   const wchar_t*>
      rows[] = {
          {VmKind::kJre,
           1,
           {L"j\\bin\\jre.exe", L"j\\bin\\jrew.exe"},
           L"j",
           L"bin\\jrew.exe",
           L"bin\\jre.exe"},
          {VmKind::kJre, 1, {L"j\\bin\\jre.exe"}, L"j", L"bin\\javaw.exe", L"bin\\jre.exe"},
          {VmKind::kJdk, 0, {}, L"j", L"bin\\javaw.exe", L"bin\\java.exe"},
          {VmKind::kJre,
           8,
           {L"j\\bin\\java.exe", L"j\\bin\\javaw.exe"},
           L"j",
           L"bin\\javaw.exe",
           L"bin\\java.exe"},
          // The windowless program decides, and the last resort is never in bin.
          {VmKind::kJre, 8, {L"j\\bin\\java.exe"}, L"j", L"javaw.exe", L"java.exe"},
          {VmKind::kJre, 8, {L"j\\bin\\javaw.exe"}, L"j", L"bin\\javaw.exe", L"java.exe"},
          {VmKind::kJre, 17, {L"bin\\java.exe", L"bin\\javaw.exe"}, L"bin", L"javaw.exe", L"java.exe"},
          {VmKind::kJre,
           17,
           {L"System32\\javaw.exe", L"System32\\bin\\javaw.exe"},
           L"System32",
           L"javaw.exe",
           L"java.exe"},
          {VmKind::kJdk, 17, {L"syswow64\\bin\\javaw.exe"}, L"syswow64", L"javaw.exe", L"java.exe"},
          {VmKind::kMsj, 1, {}, L"j", L"wjview.exe", L"jview.exe"},
      };
  RecordingPrompt prompt;
  for (const auto& [kind, generation, files, place, windowless, console] : rows) {
    const test::TempFolder folder;
    for (const wchar_t* file : files) folder.write(file);
    const std::wstring home = folder.at(place);
    const VmCandidate vm = candidate(kind, generation, home);
    EXPECT_EQ(makeJavaVm(vm, {false, prompt, refusesNone})->executablePath(), joinPath(home, windowless));
    EXPECT_EQ(makeJavaVm(vm, {true, prompt, refusesNone})->executablePath(), joinPath(home, console));
  }
}

TEST(JavaVmTest, ModernVmRefusesUnsafeFoldersWhenAsked) {
  const test::TempFolder folder;
  const std::wstring missing = L"Windows error 2 occured while loading the Java VM";
  const std::tuple<int16_t, const wchar_t*, bool (*)(const std::wstring&), std::wstring> rows[] = {
      {17, L"true", refusesAll, L"refused"}, {17, L"true", refusesNone, missing},
      {17, L"TRUE", refusesAll, missing},    {17, L"", refusesAll, missing},
      {1, L"true", refusesAll, missing},
  };
  folder.makeFolder(L"bin");
  for (const auto& [generation, check, refuses, result] : rows) {
    RecordingPrompt prompt;
    LaunchRequest request;
    request.secureFolderCheck = check;
    const VmCandidate vm = candidate(VmKind::kJre, generation, folder.path());
    EXPECT_EQ(launchError(makeJavaVm(vm, {false, prompt, refuses}), request), result);
    EXPECT_EQ(prompt.shown,
              result == missing ? L"" : L"Security Error: " + StringTable::get(IDS_UNSECURED_LOCATION));
  }
}

TEST(JavaVmTest, MicrosoftVmNeedsItsBuildAndSetsTheClassPath) {
  const test::TempFolder folder;
  const test::ScopedVariable variable(L"CLASSPATH", L"before");
  RecordingPrompt prompt;
  const JavaVmPtr vm = makeJavaVm(candidate(VmKind::kMsj, 1, folder.path()), {true, prompt, refusesAll});
  LaunchRequest request;
  request.classpath.entries = {L"a.jar", L"b.jar"};
  request.microsoftMinBuild = 1;
  EXPECT_EQ(launchError(vm, request), StringTable::get(IDS_NO_VALID_VM));
  EXPECT_EQ(environmentVariable(L"CLASSPATH"), L"before");
  request.microsoftMinBuild = 0;
  EXPECT_EQ(launchError(vm, request), L"Windows error 2 occured while loading the Java VM");
  EXPECT_EQ(environmentVariable(L"CLASSPATH"), L"a.jar;b.jar;");
}

}  // namespace
}  // namespace ryn
