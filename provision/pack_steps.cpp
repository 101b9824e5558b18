#include "provision/pack_steps.h"

#include <windows.h>

#include "platform/files.h"
#include "platform/output.h"
#include "provision/application_layout.h"
#include "provision/digest.h"
#include "provision/fetch_lock.h"
#include "provision/unpack.h"
#include "provision/unpack_marker.h"
#include "provision/url_scheme.h"
#include "resources/string_table.h"

namespace ryn {
namespace {

class Messages {
 public:
  Messages(const DownloadSettings& settings, UserPrompt& prompt) : settings_(settings), prompt_(prompt) {}

  void say(std::wstring_view text) const {
    if (!settings_.quiet) writeOutput(text);
  }

  /// In a box where there are windows, else on the console.
  void tell(const std::wstring& boxText, const std::wstring& caption, std::wstring_view consoleText) const {
    if (settings_.quiet) return;
    if (settings_.showProgress) {
      prompt_.showMessage(boxText, caption);
    } else {
      writeOutput(consoleText);
      prompt_.noteFailure(consoleText);
    }
  }

 private:
  const DownloadSettings& settings_;
  UserPrompt& prompt_;
};

/// Tells of a failure, after which a fetch does nothing more. The box stands until somebody closes it; other
/// starts need not wait for that.
class UnlockingPrompt final : public UserPrompt {
 public:
  UnlockingPrompt(FetchLock& lock, UserPrompt& prompt) : lock_(lock), prompt_(prompt) {}

  void showError(const std::wstring& text, const std::wstring& title) override {
    lock_.release();
    prompt_.showError(text, title);
  }
  void showMessage(const std::wstring& text, const std::wstring& title) override {
    lock_.release();
    prompt_.showMessage(text, title);
  }
  void noteFailure(std::wstring_view text) override { prompt_.noteFailure(text); }

 private:
  FetchLock& lock_;
  UserPrompt& prompt_;
};

/// When this process began.
FILETIME processStart() {
  FILETIME start = {};
  FILETIME ignored;
  GetProcessTimes(GetCurrentProcess(), &start, &ignored, &ignored, &ignored);
  return start;
}

bool isIntact(const VmPack& pack, const std::wstring& path, std::wstring_view digestFailureText,
              const Messages& messages) {
  messages.say(L"\nVerifying the downloaded JVM with MD5 checksum specified\n");
  if (md5OfFile(path) != pack.digest) {
    messages.tell(std::wstring(digestFailureText), L"MD5 Checksum Verification",
                  L"Warning!! MD5 checksum verification for downloaded JVM failed. Installer exiting...");
    return false;
  }
  messages.say(L"MD5 checksum verification for downloaded JVM passed");
  return true;
}

}  // namespace

std::wstring fetchPack(const VmPack& pack, std::wstring_view digestFailureText,
                       const std::wstring& launcherFolder, const DownloadSettings& settings,
                       UserPrompt& userPrompt) {
  FetchLock lock(launcherFolder);
  UnlockingPrompt prompt(lock, userPrompt);
  const Messages messages(settings, prompt);
  if (!namesPack(pack.url)) {
    messages.tell(L"The file specified for download is not a valid VM pack", L"Invalid VM Pack",
                  L"\nThe file specified is not a valid VM pack\n");
    return {};
  }

  if (!lock.tryTake()) {
    messages.say(L"\nWaiting for another start to fetch the VM pack\n");
    lock.take();
  }
  const std::wstring folder = extractionFolder(launcherFolder);
  // What another start has fetched since this one began is what this one would fetch.
  if (wasUnpackedSince(folder, processStart())) {
    if (std::wstring vm = unpackedVm(folder); !vm.empty()) return vm;
  }

  const std::wstring packPath = packDestination(launcherFolder, pack.url);
  if (!download(settings, pack.url, packPath, prompt)) return {};
  if (pack.verify && !isIntact(pack, packPath, digestFailureText, messages)) return {};

  messages.say(L"\nExtracting VM Pack. Please wait!!!\n");
  const bool extracted = extractPack(packPath, folder);
  DeleteFileW(packPath.c_str());
  if (extracted) {
    messages.say(L"\nExtracted the JVM pack successfully!!\n");
  } else {
    messages.tell(StringTable::get(IDS_EXTRACTION_FAILED), StringTable::get(IDS_EXTRACTION_ERROR_TITLE),
                  L"\nCould not extract the downloaded VM pack. Installer exiting...");
  }
  // A pack without "bin" has no VM: better found out here than when the launcher starts an empty path.
  return extracted ? unpackedVm(folder) : std::wstring();
}

}  // namespace ryn
