#pragma once

#include <string>

#include "properties/property_file.h"

namespace ryn {

/// A VM pack and how to tell that it arrived whole.
struct VmPack {
  std::wstring url;
  bool verify = false;
  /// Expected MD5 digest, 32 lower-case hexadecimal digits.
  std::wstring digest;
};

/// What jvmspecs.properties records about how the application was built. Words are kept as written: all
/// comparisons are exact.
struct BuildOptions {
  /// "withvm" or "withoutvm".
  std::wstring option;
  /// 20 or 21 of a build with a VM.
  int withVmSearchOption = 0;
  /// 10, 11 or 12 of a build without one.
  int withoutVmSearchOption = 0;
  bool jvmspecApplicable = false;
  int jvmspecCount = 0;
  /// The pack of option 11, fetched when a search found nothing.
  VmPack notFoundPack;
  /// The pack of option 12, fetched without a search.
  VmPack directPack;

  /// Whether searches follow the jvmspec entries; else they are the ordinary ones.
  bool usesJvmspecs() const { return jvmspecApplicable && jvmspecCount >= 1; }
};

BuildOptions readBuildOptions(const PropertyFile& jvmspecs);

}  // namespace ryn
