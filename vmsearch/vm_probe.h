#pragma once

#include <string>

#include "platform/version_resource.h"

namespace ryn {

/// What classification asks of the machine.
class VmProbe {
 public:
  /// True when the path names a file or a folder.
  virtual bool exists(const std::wstring& path) const = 0;

  virtual VersionResource versionResource(const std::wstring& path) const = 0;

  /// Version text of the runtime that the registry calls the current one; "0.0.0.0" when it names none.
  virtual std::wstring registeredRuntimeVersion() const = 0;

 protected:
  ~VmProbe() = default;
};

/// The machine itself.
class SystemVmProbe final : public VmProbe {
 public:
  bool exists(const std::wstring& path) const override;
  VersionResource versionResource(const std::wstring& path) const override;
  std::wstring registeredRuntimeVersion() const override;

 private:
  VersionReader versions_;
};

}  // namespace ryn
