#include "properties/keys.h"

#include <algorithm>

#include "text/text.h"

namespace ryn {
namespace {

constexpr wchar_t kServiceStopSeconds[] = L"ryn.service.stop.seconds";

// Pointers, because views at every call are twice the code.
std::wstring text(const PropertyFile& properties, const wchar_t* key, const wchar_t* defaultValue = L"") {
  return properties.get(key, defaultValue);
}

}  // namespace

bool parseBoolean(std::wstring_view text) {
  const std::wstring lower = lowerCase(text);
  return lower == L"true" || lower == L"yes" || lower == L"on";
}

uint64_t parseSize(std::wstring_view text) {
  const std::wstring digits = lowerCase(text);
  uint64_t multiplier = 1;
  if (digits.ends_with(L'k')) multiplier = 1024;
  if (digits.ends_with(L'm')) multiplier = uint64_t{1024} * 1024;
  return parseUnsigned(digits) * multiplier;
}

std::wstring currentVm(const PropertyFile& properties) {
  return text(properties, keys::kCurrentVm.data());
}

std::wstring validVmList(const PropertyFile& properties) {
  return text(properties, L"ryn.nl.valid.vm.list");
}

std::wstring jvmHigh(const PropertyFile& properties) {
  return text(properties, L"ryn.nl.jvm.high");
}

std::wstring secureFolderCheck(const PropertyFile& properties) {
  return text(properties, L"ryn.nl.designer.jvm.securefolder.check");
}

std::wstring mainClass(const PropertyFile& properties) {
  return text(properties, L"ryn.nl.java.launcher.main.class");
}

std::wstring classPath(const PropertyFile& properties, const EnvironmentMap& environment) {
  return replaceFirst(text(properties, L"ryn.class.path"), keys::kClasspathPlaceholder,
                      variableIn(environment, L"CLASSPATH"));
}

std::wstring userDir(const PropertyFile& properties) {
  return text(properties, L"ryn.user.dir");
}

std::wstring applicationName(const PropertyFile& properties) {
  return text(properties, L"ryn.application.name", L"Kestrune");
}

std::wstring stdoutRedirect(const PropertyFile& properties) {
  return text(properties, keys::kStdoutRedirect.data());
}

std::wstring stderrRedirect(const PropertyFile& properties) {
  return text(properties, keys::kStderrRedirect.data());
}

std::wstring optionVerifyMode(const PropertyFile& properties) {
  return text(properties, L"ryn.nl.java.option.verify.mode");
}

std::wstring optionVerbose(const PropertyFile& properties) {
  return text(properties, L"ryn.nl.java.option.verbose");
}

std::wstring optionGcExtent(const PropertyFile& properties) {
  return text(properties, L"ryn.nl.java.option.garbage.collection.extent");
}

std::wstring optionGcBackgroundThread(const PropertyFile& properties) {
  return text(properties, L"ryn.nl.java.option.garbage.collection.background.thread");
}

std::wstring optionDebugging(const PropertyFile& properties) {
  return text(properties, L"ryn.nl.java.option.debugging");
}

std::wstring optionCompiler(const PropertyFile& properties) {
  return text(properties, L"ryn.nl.java.option.compiler");
}

std::wstring optionAdditional(const PropertyFile& properties) {
  return text(properties, L"ryn.nl.java.option.additional");
}

uint64_t optionHeapInitial(const PropertyFile& properties) {
  return parseSize(text(properties, L"ryn.nl.java.option.java.heap.size.initial", L"0"));
}

uint64_t optionHeapMax(const PropertyFile& properties) {
  return parseSize(text(properties, L"ryn.nl.java.option.java.heap.size.max", L"0"));
}

bool consolePause(const PropertyFile& properties) {
  return parseBoolean(text(properties, L"ryn.win32.console.pause"));
}

bool win32Job(const PropertyFile& properties) {
  return parseBoolean(text(properties, L"ryn.win32.job"));
}

uint32_t serviceStopSeconds(const PropertyFile& properties) {
  return static_cast<uint32_t>(std::max(0, parseInteger(text(properties, kServiceStopSeconds))));
}

bool tellsJavaSide(const PropertyFile& properties) {
  return properties.hasKeyWithPrefix(L"ryn.start.") || properties.hasKeyWithPrefix(L"ryn.launch.") ||
         properties.hasKeyWithPrefix(kServiceStopSeconds);
}

bool exactArguments(const PropertyFile& properties) {
  return text(properties, L"ryn.launch.arguments") == L"exact";
}

bool win32ShortPaths(const PropertyFile& properties) {
  return parseBoolean(properties.get(L"ryn.win32.short.paths"));
}

std::wstring userOptionsFile(const PropertyFile& properties) {
  return properties.get(L"ryn.user.options");
}

int32_t microsoftVmMinVersion(const PropertyFile& properties) {
  return parseInteger(text(properties, L"ryn.nl.win32.microsoftvm.min.version", L"0"));
}

uint64_t launcherPlatform(const PropertyFile& properties) {
  return parseSize(text(properties, L"ryn.nl.win32.java.launcher.platform", L"1"));
}

std::wstring vmBits(const PropertyFile& properties) {
  return text(properties, L"ryn.win32.vm.bits");
}

std::wstring installerUi(const PropertyFile& properties) {
  return text(properties, L"ryn.installer.windows.ui.default");
}

bool isComplete(const PropertyFile& properties, const EnvironmentMap& environment) {
  return !classPath(properties, environment).empty() && !mainClass(properties).empty() &&
         !(currentVm(properties).empty() && validVmList(properties).empty());
}

}  // namespace ryn
