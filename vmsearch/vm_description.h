#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "properties/property_file.h"

namespace ryn {

/// What one description file says about a kind of VM. Every text is empty until its key is read.
struct VmDescription {
  std::wstring description;
  /// Name of the VM's executable.
  std::wstring executable;
  std::wstring classpath;
  std::wstring classpathSeparator;
  std::wstring systemProperty;
  std::wstring systemPropertySeparator;
  std::vector<std::wstring> jvmProperties;
  /// Systems that the description is for.
  std::vector<std::wstring> platformHints;
  /// Folders and registry keys where such VMs are found.
  std::vector<std::wstring> pathHints;
  std::wstring verbose;
  std::wstring verboseGc;
  std::wstring verboseClass;
  std::wstring verboseJni;
  std::wstring version;
  std::wstring bootClasspath;
  std::wstring noClassGc;
  std::wstring initialHeap;
  std::wstring maximumHeap;
  std::wstring reduceOsSignals;
  std::wstring checkJni;
  std::wstring profilerHelp;
  std::wstring profilerOption;
  std::wstring debug;
  std::wstring future;

  /// Reads the content of a file: one character for each byte, line ends as "\n".
  static VmDescription parse(std::wstring_view text);

  /// True when nothing was read: no file, or none of the keys in it.
  bool empty() const;
};

/// A key of a description file: it sets a text or opens a block that fills a list. The mark that ends a block
/// has neither.
struct DescriptionKey {
  using Text = std::wstring VmDescription::*;
  using Block = std::vector<std::wstring> VmDescription::*;

  std::wstring_view name;
  Text text = nullptr;
  Block block = nullptr;
};

inline constexpr std::wstring_view kEndOfBlock = L"/:";

/// All keys in their fixed order.
inline constexpr DescriptionKey kDescriptionKeys[] = {
    {.name = L"DESC:", .text = &VmDescription::description},
    {.name = L"JVM_EXE:", .text = &VmDescription::executable},
    {.name = L"CLASSPATH:", .text = &VmDescription::classpath},
    {.name = L"CLASSPATH_SEPARATOR:", .text = &VmDescription::classpathSeparator},
    {.name = L"SYSTEM:", .text = &VmDescription::systemProperty},
    {.name = L"SYSTEM_SEPARATOR:", .text = &VmDescription::systemPropertySeparator},
    {.name = L"JVM_PROPERTIES", .block = &VmDescription::jvmProperties},
    {.name = kEndOfBlock},
    {.name = L"PLATFORM_HINT:", .block = &VmDescription::platformHints},
    {.name = L"PATH_HINT:", .block = &VmDescription::pathHints},
    {.name = L"VERBOSE:", .text = &VmDescription::verbose},
    {.name = L"VERBOSE_GC:", .text = &VmDescription::verboseGc},
    {.name = L"VERBOSE_CLASS:", .text = &VmDescription::verboseClass},
    {.name = L"VERBOSE_JNI:", .text = &VmDescription::verboseJni},
    {.name = L"VERSION:", .text = &VmDescription::version},
    {.name = L"BOOT_CLASSPATH:", .text = &VmDescription::bootClasspath},
    {.name = L"NO_CLASS_GC:", .text = &VmDescription::noClassGc},
    {.name = L"INIT_JAVA_HEAP:", .text = &VmDescription::initialHeap},
    {.name = L"MAX_JAVA_HEAP:", .text = &VmDescription::maximumHeap},
    {.name = L"REDUCE_OS_SIGNALS:", .text = &VmDescription::reduceOsSignals},
    {.name = L"CHECK_JNI:", .text = &VmDescription::checkJni},
    {.name = L"RUNHPROF_HELP:", .text = &VmDescription::profilerHelp},
    {.name = L"RUNHPROF_OPTION:", .text = &VmDescription::profilerOption},
    {.name = L"DEBUG:", .text = &VmDescription::debug},
    {.name = L"FUTURE:", .text = &VmDescription::future},
};

/// The path of the description file that jvmspecs.properties names under this index (from 0), relative to the
/// application's folder.
std::wstring descriptionPath(const PropertyFile& jvmspecs, int index);

/// The paths of those that it names under indexes below `count`, in their order. The others lead to no file.
std::vector<std::wstring> descriptionPaths(const PropertyFile& jvmspecs, int count);

}  // namespace ryn
