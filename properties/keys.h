#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "properties/property_file.h"
#include "text/environment_map.h"

namespace ryn {

/// Key texts; each stands once in the program. Those that only the launcher reads have their accessor
/// below, with type and default.
namespace keys {

inline constexpr std::wstring_view kCurrentVm = L"ryn.nl.current.vm";
inline constexpr std::wstring_view kStdoutRedirect = L"ryn.stdout.redirect";
inline constexpr std::wstring_view kStderrRedirect = L"ryn.stderr.redirect";

/// Written for the Java side, never read here.
inline constexpr std::wstring_view kControlKey = L"ryn.control-key";
inline constexpr std::wstring_view kEnvironmentPrefix = L"ryn.nl.env.";
inline constexpr std::wstring_view kExactEnvironmentPrefix = L"ryn.nl.env.exact_case.";

inline constexpr std::wstring_view kLaunchService = L"ryn.launch.service";
inline constexpr std::wstring_view kLaunchConsole = L"ryn.launch.console";
inline constexpr std::wstring_view kLaunchFile = L"ryn.launch.file";
inline constexpr std::wstring_view kLaunchProgram = L"ryn.launch.program";
inline constexpr std::wstring_view kLaunchStartFolder = L"ryn.launch.start.folder";
inline constexpr std::wstring_view kLaunchCommandLine = L"ryn.launch.command.line";
inline constexpr std::wstring_view kLaunchStopInput = L"ryn.launch.stop.input";

/// Stands in the class path for the environment variable CLASSPATH.
inline constexpr std::wstring_view kClasspathPlaceholder = L"$ENV_CLASSPATH$";

}  // namespace keys

/// Of the property file, which has the launcher's own name.
inline constexpr wchar_t kPropertiesExtension[] = L".ryn";

/// True for "true", "yes" or "on" in any letter case.
bool parseBoolean(std::wstring_view text);

/// Decimal number with an optional last letter "k" (1024) or "m" (1048576) in any case. The digits are read
/// as the C library's `strtoull` reads them: behind blanks and a sign, up to the first character that is no
/// digit; nothing readable, also an empty text, gives 0. The product wraps on overflow.
uint64_t parseSize(std::wstring_view text);

// One accessor per key, named after it. None throws for a missing key.

/// Path of the VM to use first.
std::wstring currentVm(const PropertyFile& properties);
/// Acceptable VMs, tokens separated by blanks.
std::wstring validVmList(const PropertyFile& properties);
/// "0" takes the first acceptable VM, any other text the highest.
std::wstring jvmHigh(const PropertyFile& properties);
/// "true" switches the VM folder security check on.
std::wstring secureFolderCheck(const PropertyFile& properties);
std::wstring mainClass(const PropertyFile& properties);
/// With the first "$ENV_CLASSPATH$" replaced by the variable CLASSPATH of `environment`.
std::wstring classPath(const PropertyFile& properties, const EnvironmentMap& environment);
/// Working folder of the Java application.
std::wstring userDir(const PropertyFile& properties);
/// Title of the console window; default "Kestrune".
std::wstring applicationName(const PropertyFile& properties);
std::wstring stdoutRedirect(const PropertyFile& properties);
std::wstring stderrRedirect(const PropertyFile& properties);
std::wstring optionVerifyMode(const PropertyFile& properties);
std::wstring optionVerbose(const PropertyFile& properties);
std::wstring optionGcExtent(const PropertyFile& properties);
std::wstring optionGcBackgroundThread(const PropertyFile& properties);
std::wstring optionDebugging(const PropertyFile& properties);
std::wstring optionCompiler(const PropertyFile& properties);
/// Extra VM options, verbatim.
std::wstring optionAdditional(const PropertyFile& properties);
/// Bytes; 0 leaves the choice to the VM.
uint64_t optionHeapInitial(const PropertyFile& properties);
uint64_t optionHeapMax(const PropertyFile& properties);
/// Holds the console open at the end.
bool consolePause(const PropertyFile& properties);
/// Ends the VM with the launcher, whatever ends that.
bool win32Job(const PropertyFile& properties);
/// How long a service's program has to end by itself when the service stops; 0, also for negative numbers,
/// ends it at once.
uint32_t serviceStopSeconds(const PropertyFile& properties);
/// Some key asks something of the Java side, which is then told the facts of the launch.
bool tellsJavaSide(const PropertyFile& properties);
/// The Java side is told the whole command line.
bool exactArguments(const PropertyFile& properties);
/// Paths that the ANSI code page cannot write are handed to the VM by their short names.
bool win32ShortPaths(const PropertyFile& properties);
/// Path of a file with further VM options, with "%NAME%" for variables.
std::wstring userOptionsFile(const PropertyFile& properties);
/// Lowest acceptable build of the Microsoft VM.
int32_t microsoftVmMinVersion(const PropertyFile& properties);
/// Which bitness classes are acceptable; 1 when absent, which admits class 1 only.
uint64_t launcherPlatform(const PropertyFile& properties);
/// "64" or "32" admits only VMs whose image has that bitness; any other text all.
std::wstring vmBits(const PropertyFile& properties);
/// "SILENT" makes the launch silent.
std::wstring installerUi(const PropertyFile& properties);

/// The properties name what every launch needs: a class path, a main class, and a VM or the list of those
/// that will do.
bool isComplete(const PropertyFile& properties, const EnvironmentMap& environment);

}  // namespace ryn
