#include "platform/files.h"

#include <fcntl.h>
#include <io.h>

#include "platform/errors.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "platform/unique_handle.h"

namespace ryn {
namespace {

CStream wrapAsTextStream(UniqueFile file, const std::wstring& path, int flags, const char* mode) {
  if (file.get() == nullptr) throw FileException(L"windows could not open the file specified", path);
  if (!file) return nullptr;
  const int descriptor = _open_osfhandle(reinterpret_cast<intptr_t>(file.get()), flags);
  if (descriptor == -1) return nullptr;
  // The descriptor owns the handle from here on, and the stream the descriptor.
  file.release();
  CStream stream(_fdopen(descriptor, mode));
  if (!stream) _close(descriptor);
  return stream;
}

}  // namespace

bool pathExists(const std::wstring& path) {
  return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool folderExists(const std::wstring& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

bool fileExists(const std::wstring& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
}

CStream openForReading(const std::wstring& path) {
  UniqueFile file(
      CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
  return wrapAsTextStream(std::move(file), path, _O_RDONLY | _O_TEXT, "r");
}

std::wstring readLatin1(std::FILE* stream) {
  std::wstring text;
  char buffer[4096];
  while (const size_t count = std::fread(buffer, 1, sizeof(buffer), stream)) {
    text += widenBytes(std::string_view(buffer, count));
  }
  return text;
}

CStream openForAppending(const std::wstring& path) {
  UniqueFile file(
      CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_WRITE, nullptr, OPEN_ALWAYS, 0, nullptr));
  CStream stream = wrapAsTextStream(std::move(file), path, _O_APPEND | _O_TEXT, "at");
  if (stream) std::fseek(stream.get(), 0, SEEK_END);
  return stream;
}

std::wstring createTemporaryFile() {
  static constexpr DWORD kFolderSize = 246;
  wchar_t folder[kFolderSize];
  const DWORD length = GetTempPathW(kFolderSize, folder);
  if (length == 0 || length >= kFolderSize) return {};
  wchar_t path[kPathBufferSize];
  return GetTempFileNameW(folder, L"ryn", 0, path) == 0 ? std::wstring() : path;
}

std::wstring resolveReparsePoint(const std::wstring& path) {
  const DWORD attributes = GetFileAttributesW(path.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES || (attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) return path;

  const UniqueFile file(CreateFileW(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                    nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
  if (!file) return path;
  const DWORD size = GetFinalPathNameByHandleW(file.get(), nullptr, 0, FILE_NAME_NORMALIZED);
  std::wstring target(size, L'\0');
  const DWORD length = GetFinalPathNameByHandleW(file.get(), target.data(), size, FILE_NAME_NORMALIZED);
  if (length == 0 || length >= size) return path;
  target.resize(length);

  // The call answers in the \\?\ form; nothing downstream expects it.
  static constexpr std::wstring_view kUncPrefix = L"\\\\?\\UNC\\";
  static constexpr std::wstring_view kPrefix = L"\\\\?\\";
  if (target.starts_with(kUncPrefix)) return L"\\\\" + target.substr(kUncPrefix.size());
  if (target.starts_with(kPrefix)) return target.substr(kPrefix.size());
  return target;
}

}  // namespace ryn
