#pragma once

#include "text/little_endian.h"

namespace ryn {

// What the program carries, so that it is the whole kit.

/// launcher.exe; empty when the build had no compiler for Windows.
ByteView embeddedLauncher();
/// ryn-start.jar; empty when the build had no JDK.
ByteView embeddedStartJar();
/// samples/vendors: the description of where vendors leave their VMs, and its jvmspecs.properties.
ByteView embeddedVendors();
ByteView embeddedVendorsOptions();

}  // namespace ryn
