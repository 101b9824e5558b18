#pragma once

#include <string>
#include <string_view>

namespace ryn {

/// The one temporary properties file of the process: "ryn" + hexadecimal digits + ".tmp" in the user's
/// temporary folder. Lines for the Java side are appended to it; nothing in this program reads it. It
/// is left behind on purpose: the VM may read it at any time, also after this process has ended. Where no
/// file can be made the launch goes on without one.
class TempPropertiesFile {
 public:
  /// Creates the file on the first call, so that a changed TMP must be in place before.
  static TempPropertiesFile& instance();

  /// Empty when there is no file.
  const std::wstring& path() const { return path_; }

  /// Appends ready-made lines, each with its "\n". A file that cannot be opened swallows them.
  void append(std::wstring_view lines) const;

  /// Appends the path of the chosen VM's executable.
  void appendCurrentVm(std::wstring_view executablePath) const;

 private:
  TempPropertiesFile();

  std::wstring path_;
};

}  // namespace ryn
