#pragma once

#include <string>
#include <vector>

#include "platform/version_resource.h"
#include "vmsearch/vm_probe.h"
#include "vmsearch/vm_validator.h"

namespace ryn {

/// The machine itself, as this process sees it.
class SystemVmProbe final : public VmProbe {
 public:
  PathKind pathKind(const std::wstring& path) const override;
  std::wstring resolveLink(const std::wstring& path) const override;
  std::vector<Subfolder> subfolders(const std::wstring& folder, const std::wstring& pattern) const override;
  std::optional<std::vector<std::wstring>> fixedDrives() const override;
  std::optional<std::wstring> readText(const std::wstring& path) const override;
  VersionResource versionResource(const std::wstring& path) const override;
  ImageBitness imageBitness(const std::wstring& path) const override;
  bool underWow64() const override;
  std::wstring wow64SystemFolder() const override;
  std::optional<std::vector<std::wstring>> subkeyNames(const std::wstring& key,
                                                       RegistryView view) const override;
  std::optional<std::wstring> registryText(const std::wstring& key, RegistryView view,
                                           const std::wstring& name) const override;
  bool isAdministrator() const override;
  bool isElevated() const override;
  bool fitsAnsi(const std::wstring& text) const override;
  std::optional<std::wstring> shortPath(const std::wstring& path) const override;
  bool refusesFolder(const std::wstring& folder) const override;
  ValidatorAnswer validate(const std::wstring& executable, const std::wstring& jar,
                           const std::wstring& token) const override;

 private:
  VersionReader versions_;
  // Remembers its answers.
  mutable VmValidator validator_;
};

}  // namespace ryn
