#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "image/image_bitness.h"
#include "image/version_resource.h"

namespace ryn {

enum class PathKind { kNone, kFile, kFolder };

/// A folder directly below another.
struct Subfolder {
  std::wstring name;
  /// A symbolic link or junction.
  bool isLink = false;
};

/// Which half of the registry a 32-bit process means; kNative is its own.
enum class RegistryView { kNative, k64 };

/// What a validator said of a VM.
enum class ValidatorAnswer {
  kAccepted,
  kRejected,    ///< it ended with another exit code than 0
  kTimedOut,    ///< it was ended because it took too long
  kNotStarted,  ///< the VM could not be started
};

/// Everything that a choice of a VM asks of the machine. Nothing here throws, and every answer is the same
/// when the question is asked again in the same process. Paths are absolute.
class VmProbe {
 public:
  virtual PathKind pathKind(const std::wstring& path) const = 0;

  /// The target of a symbolic link or junction; `path` itself when it is none or cannot be resolved.
  virtual std::wstring resolveLink(const std::wstring& path) const = 0;

  /// The folders in `folder` whose names match `pattern` ("*" stands for any text), in the system's order;
  /// none when it cannot be listed.
  virtual std::vector<Subfolder> subfolders(const std::wstring& folder,
                                            const std::wstring& pattern) const = 0;

  /// Root folders of the fixed drives, others being slow, or not there when the application starts next time;
  /// nothing when the system does not tell its drives, which it has then said itself.
  virtual std::optional<std::vector<std::wstring>> fixedDrives() const = 0;

  /// The content of a text file, one character for each byte, line ends as "\n"; nothing when it cannot be
  /// opened.
  virtual std::optional<std::wstring> readText(const std::wstring& path) const = 0;

  virtual VersionResource versionResource(const std::wstring& path) const = 0;
  virtual ImageBitness imageBitness(const std::wstring& path) const = 0;

  /// The process that asks is a 32-bit one on a 64-bit Windows.
  virtual bool underWow64() const = 0;
  /// The system folder of 32-bit programs on a 64-bit Windows; empty where there is none.
  virtual std::wstring wow64SystemFolder() const = 0;

  /// Registry keys are texts that begin with a root: "\HKEY_LOCAL_MACHINE\SOFTWARE\JavaSoft\JDK".
  ///@{
  /// Names of the direct subkeys in the system's order; nothing when the key cannot be opened.
  virtual std::optional<std::vector<std::wstring>> subkeyNames(const std::wstring& key,
                                                               RegistryView view) const = 0;
  /// The text of the value `name` (empty for the key's default value); nothing when the key cannot be opened
  /// or has no such text.
  virtual std::optional<std::wstring> registryText(const std::wstring& key, RegistryView view,
                                                   const std::wstring& name) const = 0;
  ///@}

  virtual bool isAdministrator() const = 0;
  /// This process has rights that its user's other programs lack.
  virtual bool isElevated() const = 0;

  /// The ANSI code page has every character of the text.
  virtual bool fitsAnsi(const std::wstring& text) const = 0;
  /// The path by the short names of its volume, which may be the path itself; nothing when it does not exist.
  virtual std::optional<std::wstring> shortPath(const std::wstring& path) const = 0;

  /// True when the current user is an administrator and must not start a VM from `folder`.
  virtual bool refusesFolder(const std::wstring& folder) const = 0;

  /// Runs the validator class of `jar` with the VM's program `executable` and the list's `token`.
  virtual ValidatorAnswer validate(const std::wstring& executable, const std::wstring& jar,
                                   const std::wstring& token) const = 0;

  bool exists(const std::wstring& path) const { return pathKind(path) != PathKind::kNone; }
  bool fileExists(const std::wstring& path) const { return pathKind(path) == PathKind::kFile; }
  bool folderExists(const std::wstring& path) const { return pathKind(path) == PathKind::kFolder; }

 protected:
  ~VmProbe() = default;
};

}  // namespace ryn
