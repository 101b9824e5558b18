#pragma once

#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <string>

#include "ryn/folder_probe.h"
#include "text/environment_map.h"
#include "vmsearch/vm_probe.h"

namespace ryn {

/// What a choice of a VM asked of a machine and was told, as JSON (docs/ryn.md names its members). Answers
/// that say "there is none" are left out.
using MachineRecord = nlohmann::json;

/// Another machine, whose answers go into a record.
class RecordingProbe final : public VmProbe {
 public:
  /// Both must outlive the object.
  RecordingProbe(const VmProbe& machine, MachineRecord& record) : machine_(machine), record_(record) {}

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
  const VmProbe& machine_;
  MachineRecord& record_;
};

/// The machine of a record. What the record does not tell is not there; names count in any letter case. Files
/// of the application's folder come from the folder here, where it has them: the question is what today's
/// files do on that machine.
class ReplayProbe final : public VmProbe {
 public:
  /// `applicationFolder` is the place on that machine of what is in `here`. All must outlive the object.
  /// Throws CommandError (kUsage) for what is no such record.
  ReplayProbe(const MachineRecord& record, std::wstring applicationFolder, const FolderProbe& here);

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
  /// Null when the record does not say. Does not throw.
  const MachineRecord* find(const char* section, const std::wstring& name) const;
  std::optional<std::wstring> stringOf(const char* section, const std::wstring& name) const;
  bool flag(const char* name) const;
  /// Where `path` is here, for `here_`; nothing when it is not.
  std::optional<std::wstring> local(const std::wstring& path) const;

  const MachineRecord& record_;
  const std::wstring folder_;
  const FolderProbe& here_;
  // By section and folded name.
  std::map<std::string, std::map<std::wstring, const MachineRecord*>> entries_;
  // Folded; those that a path of the record lies in.
  std::set<std::wstring> folders_;
};

/// Takes the user's name and the place of his home, as `environment` (his whole one) tells them, out of every
/// text of the record. The name stays when it is also a word of `searched`, the texts that say where VMs are
/// looked for: "java".
void hideUser(MachineRecord& record, const EnvironmentMap& environment, std::wstring_view searched);

}  // namespace ryn
