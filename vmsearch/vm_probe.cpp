#include "vmsearch/vm_probe.h"

#include "platform/files.h"
#include "platform/registry_key.h"
#include "platform/text.h"
#include "vmsearch/registry_locations.h"

namespace ryn {

bool SystemVmProbe::exists(const std::wstring& path) const {
  return pathExists(path);
}

VersionResource SystemVmProbe::versionResource(const std::wstring& path) const {
  return versions_.read(path);
}

std::wstring SystemVmProbe::registeredRuntimeVersion() const {
  try {
    const RegistryKey runtimes(kJavaRuntimeEnvironmentKey, KEY_READ);
    const std::wstring current = runtimes.queryString(L"CurrentVersion");
    return concat({current, L".", RegistryKey(runtimes, current).queryString(kMicroVersionValue), L"_0"});
  } catch (const KeyException&) {
    return L"0.0.0.0";
  }
}

}  // namespace ryn
