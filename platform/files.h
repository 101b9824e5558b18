#pragma once

#include <cstdio>
#include <memory>
#include <string>

namespace ryn {

/// True when the path names a file or a folder; false for any error.
bool pathExists(const std::wstring& path);
bool folderExists(const std::wstring& path);
bool fileExists(const std::wstring& path);

struct CStreamCloser {
  void operator()(std::FILE* stream) const { std::fclose(stream); }
};

/// An owned C stream; null when the file could not be had.
using CStream = std::unique_ptr<std::FILE, CStreamCloser>;

/// Opens an existing file for reading as a text stream. A missing or locked file gives a null stream;
/// FileException "windows could not open the file specified" is thrown only when the system hands
/// out a null handle.
[[nodiscard]] CStream openForReading(const std::wstring& path);

/// All that is left in `stream`, each byte as one character.
std::wstring readLatin1(std::FILE* stream);

/// Opens a file for appending as a text stream positioned at its end, creating it when missing.
/// Fails as openForReading does.
[[nodiscard]] CStream openForAppending(const std::wstring& path);

/// Creates an empty file "ryn" + hexadecimal digits + ".tmp" in the user's temporary folder (TMP, then
/// TEMP) and returns its full path; empty when there is no such folder or it cannot take the file.
std::wstring createTemporaryFile();

/// The target of a symbolic link or junction; `path` itself when it is none or cannot be resolved.
std::wstring resolveReparsePoint(const std::wstring& path);

}  // namespace ryn
