#pragma once

#include <windows.h>

#include <cstdio>
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
  std::string bytes;
  char buffer[4096];
  while (const size_t count = std::fread(buffer, 1, sizeof(buffer), stream.get()))
    bytes.append(buffer, count);
  return bytes;
}

/// A fresh folder in the temporary folder, removed with all that is in it, whatever the test did. Links in it
/// are removed, not followed. Making something that cannot be made throws and so fails the test.
class TempFolder {
 public:
  enum class Name { kPlain, kNonAscii };

  explicit TempFolder(Name name = Name::kPlain) {
    wchar_t base[MAX_PATH];
    check(GetTempPathW(MAX_PATH, base) != 0);
    // Letters of Latin-1, of no common ANSI code page, and of two UTF-16 units.
    const std::wstring suffix = name == Name::kNonAscii ? L" \u00e9\u00df \u4e2d\u6587 \U0001f600" : L"";
    const std::wstring stem = base + (L"ryntest" + std::to_wstring(GetCurrentProcessId())) + L"-";
    // Process ids come round again, and a program that crashed has left its folders behind.
    int count = 0;
    do {
      path_ = stem + std::to_wstring(++count) + suffix;
    } while (!CreateDirectoryW(path_.c_str(), nullptr) && GetLastError() == ERROR_ALREADY_EXISTS);
    check(folderExists(path_));
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
    const std::wstring target = at(name);
    for (size_t end = path_.size(); end != std::wstring::npos;) {
      end = target.find(L'\\', end + 1);
      const std::wstring part = target.substr(0, end);
      check(CreateDirectoryW(part.c_str(), nullptr) || GetLastError() == ERROR_ALREADY_EXISTS);
    }
    return target;
  }

  /// Makes or replaces the file `name` with the folders above it and returns its full path.
  std::wstring write(std::wstring_view name, std::string_view bytes = {}) const {
    if (const size_t separator = name.rfind(L'\\'); separator != std::wstring_view::npos) {
      makeFolder(name.substr(0, separator));
    }
    const std::wstring target = at(name);
    const CStream stream(_wfopen(target.c_str(), L"wb"));
    check(stream && std::fwrite(bytes.data(), 1, bytes.size(), stream.get()) == bytes.size());
    return target;
  }

 private:
  static void check(bool done) {
    if (!done) throw std::runtime_error("test folder: Windows error " + std::to_string(GetLastError()));
  }

  static void removeTree(const std::wstring& folder) {
    WIN32_FIND_DATAW entry;
    UniqueFind find(FindFirstFileW(joinPath(folder, L"*").c_str(), &entry));
    for (BOOL more = static_cast<bool>(find); more; more = FindNextFileW(find.get(), &entry)) {
      const std::wstring_view name = entry.cFileName;
      if (name == L"." || name == L"..") continue;
      const std::wstring path = joinPath(folder, name);
      const bool isFolder = (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
      const bool isLink = (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
      SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
      if (isFolder && !isLink) {
        removeTree(path);
      } else if (isFolder) {
        RemoveDirectoryW(path.c_str());
      } else {
        DeleteFileW(path.c_str());
      }
    }
    find.reset();
    RemoveDirectoryW(folder.c_str());
  }

  std::wstring path_;
};

}  // namespace ryn::test
