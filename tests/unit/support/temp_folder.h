#pragma once

#include <windows.h>

#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>

#include "platform/files.h"
#include "platform/paths.h"
#include "platform/unique_handle.h"

namespace ryn::test {

/// The bytes of a file; throws when it cannot be read, so that a missing file never passes for an empty one.
inline std::string readBytes(const std::wstring& path) {
  const CStream stream(_wfopen(path.c_str(), L"rb"));
  if (!stream) throw std::runtime_error("test file cannot be read");
  std::string bytes(static_cast<size_t>(std::filesystem::file_size(path)), '\0');
  bytes.resize(std::fread(bytes.data(), 1, bytes.size(), stream.get()));
  return bytes;
}

/// A fresh folder in the temporary folder, removed with all that is in it, whatever the test did. Links in it
/// are removed, not followed. Making something that cannot be made throws and so fails the test.
class TempFolder {
 public:
  enum class Name { kPlain, kNonAscii };

  explicit TempFolder(Name name = Name::kPlain) {
    // Letters of Latin-1, of no common ANSI code page, and of two UTF-16 units.
    const std::wstring suffix = name == Name::kNonAscii ? L" \u00e9\u00df \u4e2d\u6587 \U0001f600" : L"";
    const std::wstring stem = std::filesystem::temp_directory_path().wstring() + L"ryntest" +
                              std::to_wstring(GetCurrentProcessId());
    // Process ids come round again, and a program that crashed has left its folders behind.
    int count = 0;
    do {
      path_ = stem + L"-" + std::to_wstring(++count) + suffix;
    } while (!std::filesystem::create_directory(path_));
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;
  ~TempFolder() { removeTree(path_); }

  /// Without a trailing separator.
  const std::wstring& path() const { return path_; }

  /// The full path of `name` (which may have folders in it) below the folder; nothing is made.
  std::wstring at(std::wstring_view name) const { return joinPath(path_, name); }

  /// Makes the folder `name` with those above it and returns its full path.
  std::wstring makeFolder(std::wstring_view name) const {
    std::filesystem::create_directories(at(name));
    return at(name);
  }

  /// Makes or replaces the file `name` with the folders above it and returns its full path.
  std::wstring write(std::wstring_view name, std::string_view bytes = "") const {
    std::filesystem::create_directories(folderPart(at(name)));
    const CStream stream(_wfopen(at(name).c_str(), L"wb"));
    if (!stream || std::fwrite(bytes.data(), 1, bytes.size(), stream.get()) != bytes.size())
      throw std::runtime_error("test file cannot be written");
    return at(name);
  }

 private:
  static void removeTree(const std::wstring& folder) {
    WIN32_FIND_DATAW entry;
    UniqueFind find(FindFirstFileW(joinPath(folder, L"*").c_str(), &entry));
    for (BOOL more = static_cast<bool>(find); more; more = FindNextFileW(find.get(), &entry)) {
      const std::wstring path = joinPath(folder, entry.cFileName);
      if (path.ends_with(L"\\.") || path.ends_with(L"\\..")) continue;
      SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
      if (!DeleteFileW(path.c_str()) && !RemoveDirectoryW(path.c_str())) removeTree(path);
    }
    find.reset();
    RemoveDirectoryW(folder.c_str());
  }

  std::wstring path_;
};

}  // namespace ryn::test
