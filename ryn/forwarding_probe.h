#pragma once

#include <string>
#include <vector>

#include "vmsearch/vm_probe.h"

namespace ryn {

/// A machine behind another one, to be changed where a subclass says so.
class ForwardingProbe : public VmProbe {
 public:
  /// `machine` must outlive the object.
  explicit ForwardingProbe(const VmProbe& machine) : machine_(machine) {}

  PathKind pathKind(const std::wstring& path) const override { return machine_.pathKind(path); }
  std::wstring resolveLink(const std::wstring& path) const override { return machine_.resolveLink(path); }
  std::vector<Subfolder> subfolders(const std::wstring& folder, const std::wstring& pattern) const override {
    return machine_.subfolders(folder, pattern);
  }
  std::optional<std::vector<std::wstring>> fixedDrives() const override { return machine_.fixedDrives(); }
  std::optional<std::wstring> readText(const std::wstring& path) const override {
    return machine_.readText(path);
  }
  VersionResource versionResource(const std::wstring& path) const override {
    return machine_.versionResource(path);
  }
  ImageBitness imageBitness(const std::wstring& path) const override { return machine_.imageBitness(path); }
  bool underWow64() const override { return machine_.underWow64(); }
  std::wstring wow64SystemFolder() const override { return machine_.wow64SystemFolder(); }
  std::optional<std::vector<std::wstring>> subkeyNames(const std::wstring& key,
                                                       RegistryView view) const override {
    return machine_.subkeyNames(key, view);
  }
  std::optional<std::wstring> registryText(const std::wstring& key, RegistryView view,
                                           const std::wstring& name) const override {
    return machine_.registryText(key, view, name);
  }
  bool isAdministrator() const override { return machine_.isAdministrator(); }
  bool isElevated() const override { return machine_.isElevated(); }
  bool fitsAnsi(const std::wstring& text) const override { return machine_.fitsAnsi(text); }
  std::optional<std::wstring> shortPath(const std::wstring& path) const override {
    return machine_.shortPath(path);
  }
  bool refusesFolder(const std::wstring& folder) const override { return machine_.refusesFolder(folder); }
  ValidatorAnswer validate(const std::wstring& executable, const std::wstring& jar,
                           const std::wstring& token) const override {
    return machine_.validate(executable, jar, token);
  }

 private:
  const VmProbe& machine_;
};

}  // namespace ryn
