#include "ryn/machine.h"
#include "ryn/output.h"

namespace ryn {

void withThisMachine(const std::filesystem::path& /*program*/, const std::vector<std::string>& /*arguments*/,
                     const std::function<void(const Situation&, const VmProbe&)>& /*use*/) {
  throw CommandError(kUsage,
                     "applications are launched on Windows: name the record of a machine, --machine F");
}

bool hasOwnConsole() {
  return false;
}

std::filesystem::path programFolder() {
  return {};
}

std::filesystem::path desktopFolder() {
  return {};
}

}  // namespace ryn
