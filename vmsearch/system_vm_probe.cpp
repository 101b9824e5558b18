#include "vmsearch/system_vm_probe.h"

#include <windows.h>

#include "platform/elevation.h"
#include "platform/files.h"
#include "platform/image_bitness.h"
#include "platform/output.h"
#include "platform/paths.h"
#include "platform/registry_key.h"
#include "platform/short_path.h"
#include "platform/unique_handle.h"
#include "platform/wow64.h"
#include "vmsearch/folder_security.h"

namespace ryn {
namespace {

/// `key` begins with a root. Nothing when it cannot be opened.
std::optional<RegistryKey> openKey(const std::wstring& key, RegistryView view) {
  const HKEY root = rootKeyFromPath(key);
  const size_t separator = key.find(L'\\', 1);
  if (root == nullptr || separator == std::wstring::npos || separator + 1 == key.size()) return std::nullopt;
  return RegistryKey::tryOpen(root, key.substr(separator + 1),
                              view == RegistryView::k64 ? KEY_READ | KEY_WOW64_64KEY : KEY_READ);
}

}  // namespace

PathKind SystemVmProbe::pathKind(const std::wstring& path) const {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES) return PathKind::kNone;
  if ((attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) return PathKind::kFolder;
  return namesDevice(path) ? PathKind::kNone : PathKind::kFile;
}

std::wstring SystemVmProbe::resolveLink(const std::wstring& path) const {
  return resolveReparsePoint(path);
}

std::vector<Subfolder> SystemVmProbe::subfolders(const std::wstring& folder,
                                                 const std::wstring& pattern) const {
  std::vector<Subfolder> found;
  WIN32_FIND_DATAW entry;
  const UniqueFind find(FindFirstFileExW(joinPath(folder, pattern).c_str(), FindExInfoBasic, &entry,
                                         FindExSearchLimitToDirectories, nullptr, 0));
  for (BOOL more = static_cast<bool>(find); more; more = FindNextFileW(find.get(), &entry)) {
    const std::wstring_view name = entry.cFileName;
    if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0 || name == L"." || name == L"..") continue;
    found.push_back({std::wstring(name), (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0});
  }
  return found;
}

std::optional<std::vector<std::wstring>> SystemVmProbe::fixedDrives() const {
  const DWORD drives = GetLogicalDrives();
  if (drives == 0) {
    writeError(L"Could not get the logical drives for the windows system\n");
    return std::nullopt;
  }
  std::vector<std::wstring> roots;
  for (wchar_t letter = L'A'; letter <= L'Z'; ++letter) {
    std::wstring root = std::wstring(1, letter) + L":\\";
    if ((drives >> (letter - L'A') & 1) != 0 && GetDriveTypeW(root.c_str()) == DRIVE_FIXED) {
      roots.push_back(std::move(root));
    }
  }
  return roots;
}

std::optional<std::wstring> SystemVmProbe::readText(const std::wstring& path) const {
  if (namesDevice(path)) return std::nullopt;
  const CStream stream = openForReading(path);
  if (!stream) return std::nullopt;
  return readLatin1(stream.get());
}

VersionResource SystemVmProbe::versionResource(const std::wstring& path) const {
  return versions_.read(path);
}

ImageBitness SystemVmProbe::imageBitness(const std::wstring& path) const {
  return ryn::imageBitness(path);
}

bool SystemVmProbe::underWow64() const {
  return runsUnderWow64();
}

std::wstring SystemVmProbe::wow64SystemFolder() const {
  return ryn::wow64SystemFolder();
}

std::optional<std::vector<std::wstring>> SystemVmProbe::subkeyNames(const std::wstring& key,
                                                                    RegistryView view) const {
  const std::optional<RegistryKey> opened = openKey(key, view);
  if (!opened) return std::nullopt;
  return listSubkeys(opened->handle(), &RegEnumKeyExW);
}

std::optional<std::wstring> SystemVmProbe::registryText(const std::wstring& key, RegistryView view,
                                                        const std::wstring& name) const {
  const std::optional<RegistryKey> opened = openKey(key, view);
  return opened ? opened->tryQueryString(name) : std::nullopt;
}

bool SystemVmProbe::isAdministrator() const {
  return isCurrentUserAdministrator();
}

bool SystemVmProbe::isElevated() const {
  return isElevatedProcess();
}

bool SystemVmProbe::fitsAnsi(const std::wstring& text) const {
  return ryn::fitsAnsi(text);
}

std::optional<std::wstring> SystemVmProbe::shortPath(const std::wstring& path) const {
  return ryn::shortPath(path);
}

bool SystemVmProbe::refusesFolder(const std::wstring& folder) const {
  return refusesVmFolder(folder);
}

ValidatorAnswer SystemVmProbe::validate(const std::wstring& executable, const std::wstring& jar,
                                        const std::wstring& token) const {
  return validator_.ask(executable, jar, token);
}

}  // namespace ryn
