#include "vmlaunch/vm_command_line.h"

#include "text/path_text.h"
#include "text/text.h"

namespace ryn {
namespace {

// First generations that know an option.
constexpr int kFirstModular = 9;
constexpr int kFirstRestrictedNative = 25;

std::wstring quoted(const std::wstring& text) {
  return concat({L"\"", text, L"\""});
}

/// A command line in the making: every option is one blank and its text.
class CommandLineText {
 public:
  explicit CommandLineText(const std::wstring& executable) : text_(quoted(executable)) {}

  void option(const std::wstring& text) { text_.append(L" ").append(text); }
  void options(const std::vector<VmOption>& options) {
    for (const VmOption& each : options) option(each.text);
  }
  std::wstring finish(const LaunchRequest& request) {
    option(request.mainClass);
    option(applicationArgumentText(request));
    return std::move(text_);
  }

 private:
  std::wstring text_;
};

/// Collects options with those who asked for them.
class OptionList {
 public:
  void own(const wchar_t* text) { options_.push_back({OptionOrigin::kLauncher, text}); }
  void add(std::wstring text) { options_.push_back({OptionOrigin::kProperties, std::move(text)}); }
  void addIf(bool condition, const wchar_t* text) {
    if (condition) add(text);
  }
  void heap(const wchar_t* text, int64_t bytes) {
    if (bytes > 0) add(text + decimal(bytes));
  }
  std::vector<VmOption> finish(const LaunchRequest& request) {
    if (!request.additionalOptions.empty()) add(request.additionalOptions);
    for (const std::wstring& line : request.userOptions.lines)
      options_.push_back({OptionOrigin::kUser, line});
    return std::move(options_);
  }

 private:
  std::vector<VmOption> options_;
};

std::vector<VmOption> classicOptions(const LaunchRequest& request) {
  OptionList list;
  list.heap(L"-ms", request.heapInitial);
  list.heap(L"-mx", request.heapMax);
  list.addIf(request.verbose, L"-verbose");
  list.addIf(request.debugging, L"-debug");
  list.addIf(request.noAsyncGc, L"-noasyncgc");
  list.addIf(request.noJit, L"-nojit");
  list.addIf(!request.gcExtent.empty(), L"-noclassgc");
  return list.finish(request);
}

std::vector<VmOption> modernOptions(const LaunchRequest& request, JavaVersion version) {
  const int major = version.generation();
  OptionList list;
  if (major >= kFirstModular) {
    list.own(L"--add-opens java.base/jdk.internal.loader=ALL-UNNAMED");
    if (major >= kFirstRestrictedNative) list.own(L"--enable-native-access=ALL-UNNAMED");
    list.own(L"-Dsun.java2d.uiScale.enabled=false");
    list.own(L"-Djava.locale.useOldISOCodes=true");
  }
  list.heap(L"-Xms", request.heapInitial);
  list.heap(L"-Xmx", request.heapMax);
  if (request.verbose) {
    list.add(concat({L"-verbose", request.verbosityOption.empty() ? L"" : L":", request.verbosityOption}));
  }
  list.addIf(request.debugging, L"-Xdebug");
  list.addIf(request.noAsyncGc, L"-Xnoasyncgc");
  list.addIf(request.noJit, L"-Djava.compiler=off");
  list.addIf(!request.gcExtent.empty(), L"-Xnoclassgc");
  return list.finish(request);
}

}  // namespace

std::vector<VmOption> vmOptions(const VmCandidate& vm, const LaunchRequest& request) {
  switch (dialectOf(vm)) {
    case VmDialect::kClassic:
      return classicOptions(request);
    case VmDialect::kMicrosoft:
      return {};
    case VmDialect::kModern:
      break;
  }
  return modernOptions(request, vm.version);
}

std::wstring applicationArgumentText(const LaunchRequest& request) {
  std::wstring text;
  for (const std::wstring& argument : request.leadingArguments) {
    text += quoted(replaceAll(argument, L"\\", L"/")) + L" ";
  }
  bool first = true;
  for (const std::wstring& argument : request.applicationArguments) {
    if (!first) text += L" ";
    first = false;
    const std::wstring doubled = replaceAll(argument, L"\\", L"\\\\");
    text += doubled.find(L' ') == std::wstring::npos ? doubled : quoted(doubled);
  }
  return text;
}

std::wstring classicCommandLine(const LaunchRequest& request, const std::wstring& executable,
                                const std::wstring& home) {
  Classpath classpath = request.classpath;
  classpath.entries.push_back(home + L"\\lib\\classes.zip");
  const std::wstring name = lowerCase(fileName(executable));
  const bool runtime = name == L"jre.exe" || name == L"jrew.exe";

  CommandLineText line(executable);
  line.options(classicOptions(request));
  // The old runtime's -classpath would replace its own classes.
  line.option(runtime ? L"-cp" : L"-classpath");
  line.option(quoted(joinClasspath(classpath)));
  return line.finish(request);
}

std::wstring modernCommandLine(const LaunchRequest& request, const std::wstring& executable,
                               JavaVersion version) {
  CommandLineText line(executable);
  line.options(modernOptions(request, version));
  line.option(L"-classpath");
  line.option(quoted(joinClasspath(request.classpath)));
  return line.finish(request);
}

std::wstring microsoftCommandLine(const LaunchRequest& request, const std::wstring& executable) {
  CommandLineText line(executable);
  line.option(L"/cp");
  line.option(quoted(joinClasspath(request.classpath)));
  return line.finish(request);
}

std::wstring vmCommandLine(const VmCandidate& vm, const LaunchRequest& request,
                           const std::wstring& executable) {
  switch (dialectOf(vm)) {
    case VmDialect::kClassic:
      return classicCommandLine(request, executable, vm.folder);
    case VmDialect::kMicrosoft:
      return microsoftCommandLine(request, executable);
    case VmDialect::kModern:
      break;
  }
  return modernCommandLine(request, executable, vm.version);
}

}  // namespace ryn
