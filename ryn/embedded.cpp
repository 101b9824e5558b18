#include "ryn/embedded.h"

// In the assembler source that cmake/Embed.cmake writes.
#define RYN_EMBEDDED(name)           \
  extern const uint8_t ryn_##name[]; \
  extern const uint8_t ryn_##name##_end[]
extern "C" {
RYN_EMBEDDED(launcher);
RYN_EMBEDDED(start_jar);
RYN_EMBEDDED(vendors);
RYN_EMBEDDED(vendors_options);
}

namespace ryn {

ByteView embeddedLauncher() {
  return {ryn_launcher, ryn_launcher_end};
}

ByteView embeddedStartJar() {
  return {ryn_start_jar, ryn_start_jar_end};
}

ByteView embeddedVendors() {
  return {ryn_vendors, ryn_vendors_end};
}

ByteView embeddedVendorsOptions() {
  return {ryn_vendors_options, ryn_vendors_options_end};
}

}  // namespace ryn
