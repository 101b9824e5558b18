#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>

#include "ryn/local_folder.h"
#include "vmsearch/vm_probe.h"

namespace ryn {

/// A machine that has nothing but an application's folder. The folder is at a place that no path of an
/// application can mean, so that what leads out of it is told apart; names are compared as Windows does.
class FolderProbe final : public VmProbe {
 public:
  /// Where the folder is, as a path of Windows.
  static constexpr wchar_t kFolder[] = L"?:\\application";

  explicit FolderProbe(std::filesystem::path folder) : folder_(std::move(folder)) {}

  /// `path`, taken from the application's folder when it is relative, in full.
  static std::wstring resolved(const std::wstring& path);
  /// The part of a full path behind the application's folder, "" for this; nothing for a path elsewhere.
  static std::optional<std::wstring> inside(const std::wstring& path);
  /// The file or folder with this full path on the system that we run on; nothing when there is none.
  std::optional<std::filesystem::path> find(const std::wstring& path) const;
  /// Names of what is in a folder, sorted as Windows does; none for a folder that is not there.
  std::map<std::wstring, std::filesystem::path> list(const std::wstring& path) const;

  PathKind pathKind(const std::wstring& path) const override;
  std::wstring resolveLink(const std::wstring& path) const override { return path; }
  std::vector<Subfolder> subfolders(const std::wstring& folder, const std::wstring& pattern) const override;
  std::optional<std::vector<std::wstring>> fixedDrives() const override { return std::nullopt; }
  std::optional<std::wstring> readText(const std::wstring& path) const override;
  VersionResource versionResource(const std::wstring& path) const override;
  ImageBitness imageBitness(const std::wstring& path) const override;
  bool underWow64() const override { return false; }
  std::wstring wow64SystemFolder() const override { return {}; }
  std::optional<std::vector<std::wstring>> subkeyNames(const std::wstring&, RegistryView) const override {
    return std::nullopt;
  }
  std::optional<std::wstring> registryText(const std::wstring&, RegistryView,
                                           const std::wstring&) const override {
    return std::nullopt;
  }
  bool isAdministrator() const override { return false; }
  bool isElevated() const override { return false; }
  bool fitsAnsi(const std::wstring&) const override { return true; }
  std::optional<std::wstring> shortPath(const std::wstring&) const override { return std::nullopt; }
  bool refusesFolder(const std::wstring&) const override { return false; }
  /// Nobody can be asked here: the benefit of the doubt.
  ValidatorAnswer validate(const std::wstring&, const std::wstring&, const std::wstring&) const override {
    return ValidatorAnswer::kAccepted;
  }

 private:
  LocalFolder folder_;
};

/// The property file of an application, by itself, by the program of its name, or by the folder that has no
/// other one. Throws CommandError (kUsage) for anything else.
std::filesystem::path propertyFileOf(const std::filesystem::path& application);

}  // namespace ryn
