#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/user_prompt.h"
#include "provision/url_scheme.h"

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
/// that failed or the user cancelled; the user has been told, and no part of the file is left. Nobody else
/// can write into the file meanwhile. A transfer that breaks off counts as complete: servers close
/// connections in ways that cannot be told from an end, and what is missing shows when the pack is verified
/// or unpacked.
[[nodiscard]] bool download(const DownloadSettings& settings, const std::wstring& url,
                            const std::wstring& destination, UserPrompt& prompt);

/// File size from the two words that the FTP library gives. Above 4 GiB the result is not the size: the
/// high word counts 260 bytes, kept for compatibility.
uint32_t ftpFileSize(uint32_t low, uint32_t high);

}  // namespace ryn
