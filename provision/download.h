#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/user_prompt.h"

namespace ryn {

/// How a download presents itself.
struct DownloadSettings {
  /// The module whose resources hold the progress dialog and its texts.
  HINSTANCE owner = nullptr;
  /// A progress dialog, and failures in message boxes instead of the console.
  bool showProgress = false;
  /// Nothing is shown or written at all.
  bool quiet = false;
};

/// Fetches `url` ("http" or "ftp" in small letters) into the file `destination`, replacing it. False when
/// that failed or the user cancelled; the user has been told, and no part of the file is left. A transfer
/// that breaks off counts as complete: servers close connections in ways that cannot be told from an end,
/// and what is missing shows when the pack is verified or unpacked.
bool download(const DownloadSettings& settings, const std::wstring& url, const std::wstring& destination,
              UserPrompt& prompt);

enum class UrlScheme { kOther, kHttp, kFtp };

/// By the first letters of the URL; "https" is kHttp too.
UrlScheme urlScheme(std::wstring_view url);

/// File size from the two words that the FTP library gives. Above 4 GiB the result is not the size: the
/// high word counts 260 bytes, which the progress bars in the field show.
uint32_t ftpFileSize(uint32_t low, uint32_t high);

/// Upper end of the progress bar for a file of `sizeBytes`, in steps of 1 KiB. The bar's range has 16 bits,
/// so that it is full before a file of 64 MiB or more is complete.
uint16_t progressRange(uint32_t sizeBytes);

/// What the console shows once `chunkCount` chunks have been written; mostly nothing.
std::wstring_view progressMark(uint64_t chunkCount);

}  // namespace ryn
