#pragma once

#include <string>

#include "platform/user_prompt.h"
#include "provision/build_options.h"
#include "provision/download.h"

namespace ryn {

/// Downloads, verifies and unpacks the VM pack `pack` for the application of the launcher in
/// `launcherFolder`, and returns the path of its java.exe. Empty when a step failed; the user has been told.
/// The VM stays unpacked; the pack itself stays only when its digest is wrong, for which the user sees
/// `digestFailureText`. While another start of the application fetches, this one waits, and takes over what
/// that one unpacked; when that one failed or ended, this one fetches.
[[nodiscard]] std::wstring fetchPack(const VmPack& pack, std::wstring_view digestFailureText,
                                     const std::wstring& launcherFolder, const DownloadSettings& settings,
                                     UserPrompt& prompt);

}  // namespace ryn
