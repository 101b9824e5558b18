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
  void optionIf(bool condition, const wchar_t* text) {
    if (condition) option(text);
  }
  void suffix(const std::wstring& text) { text_ += text; }
  void heap(const wchar_t* text, int64_t bytes) {
    if (bytes > 0) option(text + decimal(bytes));
  }
  void additional(const std::wstring& options) {
    if (!options.empty()) option(options);
  }
  std::wstring finish(const LaunchRequest& request) {
    option(request.mainClass);
    option(applicationArgumentText(request));
    return std::move(text_);
  }

 private:
  std::wstring text_;
};

}  // namespace

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
  line.heap(L"-ms", request.heapInitial);
  line.heap(L"-mx", request.heapMax);
  line.optionIf(request.verbose, L"-verbose");
  line.optionIf(request.debugging, L"-debug");
  line.optionIf(request.noAsyncGc, L"-noasyncgc");
  line.optionIf(request.noJit, L"-nojit");
  line.optionIf(!request.gcExtent.empty(), L"-noclassgc");
  line.additional(request.additionalOptions);
  // The old runtime's -classpath would replace its own classes.
  line.option(runtime ? L"-cp" : L"-classpath");
  line.option(quoted(joinClasspath(classpath)));
  return line.finish(request);
}

std::wstring modernCommandLine(const LaunchRequest& request, const std::wstring& executable,
                               JavaVersion version) {
  const int major = version.generation();

  CommandLineText line(executable);
  if (major >= kFirstModular) {
    line.option(L"--add-opens java.base/jdk.internal.loader=ALL-UNNAMED");
    line.optionIf(major >= kFirstRestrictedNative, L"--enable-native-access=ALL-UNNAMED");
    line.option(L"-Dsun.java2d.uiScale.enabled=false");
    line.option(L"-Djava.locale.useOldISOCodes=true");
  }
  line.heap(L"-Xms", request.heapInitial);
  line.heap(L"-Xmx", request.heapMax);
  line.optionIf(request.verbose, L"-verbose");
  if (!request.verbosityOption.empty()) line.suffix(L":" + request.verbosityOption);
  line.optionIf(request.debugging, L"-Xdebug");
  line.optionIf(request.noAsyncGc, L"-Xnoasyncgc");
  line.optionIf(request.noJit, L"-Djava.compiler=off");
  line.optionIf(!request.gcExtent.empty(), L"-Xnoclassgc");
  line.additional(request.additionalOptions);
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
