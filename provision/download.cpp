#include "provision/download.h"

#include <wininet.h>

// Behind the header that it takes its types from.
#include <commctrl.h>
#include <share.h>

#include <memory>

#include "platform/files.h"
#include "platform/output.h"
#include "platform/paths.h"
#include "platform/system_library.h"
#include "platform/text.h"
#include "provision/download_window.h"
#include "resources/string_table.h"

namespace ryn {
namespace {

constexpr DWORD kChunkBytes = 1024;
/// WinInet documents a limit of 2083 and does not keep to it; of a longer one it may take minutes to make
/// something, and no server takes it.
constexpr size_t kLongestUrl = 16'384;
constexpr uint64_t kChunksPerMark = 500;
constexpr uint64_t kMarksPerGroup = 5;
constexpr UINT_PTR kStartTimer = 1;
constexpr UINT kStartTimerMs = 100;
constexpr ULONGLONG kUpdateIntervalMs = 50;

/// The progress bar within the dialog, in pixels at kBarDpi.
constexpr RECT kBar = {.left = 25, .top = 40, .right = 25 + 220, .bottom = 40 + 17};
constexpr int kBarDpi = 96;

/// Dots per inch that `window` is drawn for.
int dpiOf(HWND window) {
  // Since Windows 10 1607, whose function the headers for older systems lack, it can be another one than the
  // system's.
  const auto dpiForWindow =
      reinterpret_cast<UINT(WINAPI*)(HWND)>(findFunction(GetModuleHandleW(L"user32"), "GetDpiForWindow"));
  if (dpiForWindow != nullptr) {
    if (const UINT dpi = dpiForWindow(window); dpi != 0) return static_cast<int>(dpi);
  }
  const HDC context = GetDC(window);
  if (context == nullptr) return kBarDpi;
  const int dpi = GetDeviceCaps(context, LOGPIXELSX);
  ReleaseDC(window, context);
  return dpi;
}

/// Upper end of the progress bar for a file of `sizeBytes`, in steps of 1 KiB. The bar's range has 16 bits,
/// so that it is full before a file of 64 MiB or more is complete.
uint16_t progressRange(uint32_t sizeBytes) {
  return static_cast<uint16_t>(sizeBytes / 1024);
}

/// What the console shows once `chunkCount` chunks have been written; mostly nothing.
std::wstring_view progressMark(uint64_t chunkCount) {
  if (chunkCount == 0 || chunkCount % kChunksPerMark != 0) return {};
  return chunkCount % (kChunksPerMark * kMarksPerGroup) == 0 ? L"= " : L"=";
}

using InternetHandle = std::unique_ptr<void, decltype(&InternetCloseHandle)>;

/// The functions of wininet.dll, which most launches never need.
struct WinInet {
  RYN_FUNCTION(InternetOpenW) open;
  RYN_FUNCTION(InternetOpenUrlW) openUrl;
  RYN_FUNCTION(InternetConnectW) connect;
  RYN_FUNCTION(FtpOpenFileW) ftpOpenFile;
  RYN_FUNCTION(HttpQueryInfoW) httpQueryInfo;
  RYN_FUNCTION(InternetReadFile) readFile;
  RYN_FUNCTION(InternetCloseHandle) closeHandle;
  RYN_FUNCTION(InternetCrackUrlW) crackUrl;
  RYN_FUNCTION(FtpGetFileSize) ftpGetFileSize;

  /// False when the library or one of the functions cannot be had.
  bool load() {
    UniqueModule library = loadSystemLibrary(L"wininet.dll");
    if (!bindAll(library.get(), open, openUrl, connect, ftpOpenFile, httpQueryInfo, readFile, closeHandle,
                 crackUrl, ftpGetFileSize)) {
      return false;
    }
    // It stays for the rest of the process: its own threads may outlive a transfer.
    library.release();
    return true;
  }
};

/// One download with all it holds.
class Download {
 public:
  Download(const WinInet& internet, const DownloadSettings& settings, const std::wstring& url,
           const std::wstring& destination, UserPrompt& prompt)
      : internet_(internet),
        settings_(settings),
        url_(url),
        destination_(destination),
        prompt_(prompt),
        session_(nullptr, internet.closeHandle),
        source_(nullptr, internet.closeHandle) {}

  bool run() {
    session_.reset(internet_.open(L"InetURL/1.0", INTERNET_OPEN_TYPE_PRECONFIG, nullptr, nullptr, 0));
    if (!session_) {
      const DWORD error = GetLastError();
      sayFailure(L"\nAttempt to connect to internet failed.");
      sayNumber(L"\nWininet Error code: ", error);
      if (showsWindows()) showConnectionError();
      return false;
    }

    const UrlScheme scheme = url_.size() > kLongestUrl ? UrlScheme::kOther : urlScheme(url_);
    if (scheme == UrlScheme::kHttp && !openHttp()) return false;
    if (scheme == UrlScheme::kFtp && !openFtp()) return false;
    // Any other URL leaves no source, which the transfer reports.
    if (!showsWindows()) return transfer();

    registerDownloadWindowClass(settings_.owner);
    shown_ = this;
    DialogBoxParamW(settings_.owner, MAKEINTRESOURCEW(IDD_DOWNLOAD), nullptr, dialogProcedure, 0);
    shown_ = nullptr;
    return succeeded_;
  }

  /// What the console was told of a failure.
  const std::wstring& failure() const { return failure_; }

 private:
  bool showsWindows() const { return settings_.showProgress && !settings_.quiet; }

  void say(std::wstring_view text) const {
    if (!settings_.quiet) writeOutput(text);
  }

  void sayFailure(std::wstring_view text) {
    if (!settings_.quiet) failure_ += text;
    say(text);
  }

  void sayNumber(std::wstring_view label, DWORD number) {
    sayFailure(concat({label, decimal(static_cast<int>(number)), L"\n"}));
  }

  void showConnectionError() const {
    prompt_.showMessage(StringTable::get(IDS_CONNECT_FAILED), StringTable::get(IDS_CONNECT_ERROR_TITLE));
  }

  void reportNoConnection(std::wstring_view label, DWORD number) {
    if (showsWindows()) return showConnectionError();
    sayFailure(L"\nCould not connect to the specified URL\n");
    sayNumber(label, number);
  }

  /// 0 when the answer has no such number.
  DWORD queryHttp(DWORD what) const {
    DWORD number = 0;
    DWORD size = sizeof(number);
    internet_.httpQueryInfo(source_.get(), what | HTTP_QUERY_FLAG_NUMBER, &number, &size, nullptr);
    return number;
  }

  // Below the last error decides, not the handle. It is cleared first, so that no older one counts.

  bool openHttp() {
    SetLastError(ERROR_SUCCESS);
    source_.reset(internet_.openUrl(session_.get(), url_.c_str(), nullptr, 0, 0, 0));
    if (const DWORD error = GetLastError(); error != ERROR_SUCCESS) {
      // Not the end: the status tells whether there is an answer.
      sayFailure(L"\nError in opening internet connection with URL\n");
      sayNumber(L"\nWininet Error code: ", error);
    }
    if (const DWORD status = queryHttp(HTTP_QUERY_STATUS_CODE); status != HTTP_STATUS_OK) {
      reportNoConnection(L"HTTP Status code: ", status);
      return false;
    }
    sizeBytes_ = queryHttp(HTTP_QUERY_CONTENT_LENGTH);
    return true;
  }

  bool openFtp() {
    wchar_t scheme[32] = {};
    wchar_t host[256] = {};
    wchar_t path[2048] = {};
    URL_COMPONENTSW parts = {};
    parts.dwStructSize = sizeof(parts);
    parts.lpszScheme = scheme;
    parts.dwSchemeLength = ARRAYSIZE(scheme);
    parts.lpszHostName = host;
    parts.dwHostNameLength = ARRAYSIZE(host);
    parts.lpszUrlPath = path;
    parts.dwUrlPathLength = ARRAYSIZE(path);
    // A URL that cannot be split leaves an empty host, to which no connection can be made.
    internet_.crackUrl(url_.c_str(), 0, ICU_ESCAPE, &parts);

    SetLastError(ERROR_SUCCESS);
    // Closed with its session. A port in the URL does not count.
    const HINTERNET connection =
        internet_.connect(session_.get(), host, INTERNET_DEFAULT_FTP_PORT, L"anonymous", nullptr,
                          INTERNET_SERVICE_FTP, INTERNET_FLAG_PASSIVE | INTERNET_FLAG_NO_CACHE_WRITE, 1);
    DWORD error = GetLastError();
    if (error == ERROR_SUCCESS) {
      source_.reset(internet_.ftpOpenFile(connection, path, GENERIC_READ, FTP_TRANSFER_TYPE_BINARY, 1));
      error = GetLastError();
    }
    if (error != ERROR_SUCCESS) {
      reportNoConnection(L"Wininet Error code: ", error);
      return false;
    }
    if (source_) {
      DWORD high = 0;
      const DWORD low = internet_.ftpGetFileSize(source_.get(), &high);
      sizeBytes_ = ftpFileSize(low, high);
    }
    return true;
  }

  bool transfer() {
    CStream file(source_ && !namesDevice(destination_) ? _wfsopen(destination_.c_str(), L"wb", _SH_DENYWR)
                                                       : nullptr);
    if (!file) {
      reportFailure();
      return false;
    }
    char chunk[kChunkBytes];
    DWORD size = 0;
    uint64_t count = 0;
    bool written = true;
    while (written && !cancelled_ && internet_.readFile(source_.get(), chunk, kChunkBytes, &size) &&
           size > 0) {
      written = std::fwrite(chunk, 1, size, file.get()) == size;
      if (const std::wstring_view mark = progressMark(++count); !mark.empty()) say(mark);
      if (dialog_ != nullptr) updateDialog(count);
    }
    written = std::fflush(file.get()) == 0 && written;
    source_.reset();
    file.reset();
    session_.reset();
    if (written && !cancelled_) return true;
    DeleteFileW(destination_.c_str());
    if (!cancelled_) reportFailure();
    return false;
  }

  void reportFailure() {
    sayFailure(L"\nAttempt to download VM failed");
    if (!showsWindows()) return;
    prompt_.showMessage(StringTable::get(IDS_DOWNLOAD_FAILED), StringTable::get(IDS_DOWNLOAD_ERROR_TITLE));
  }

  /// Moves the bar by the chunks since the last time and answers messages. Not for every chunk: drawing the
  /// bar takes longer than fetching a chunk.
  void updateDialog(uint64_t chunkCount) {
    const ULONGLONG now = GetTickCount64();
    if (now - lastUpdate_ < kUpdateIntervalMs) return;
    lastUpdate_ = now;
    SendMessageW(progressBar_, PBM_DELTAPOS, static_cast<WPARAM>(chunkCount - shownChunks_), 0);
    shownChunks_ = chunkCount;

    // The transfer keeps the dialog's thread busy; without this the dialog would not be drawn, and Windows
    // would mark it as not responding.
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
      if (message.message == WM_QUIT) {
        PostQuitMessage(static_cast<int>(message.wParam));
        cancelled_ = true;
        return;
      }
      if (IsDialogMessageW(dialog_, &message)) continue;
      TranslateMessage(&message);
      DispatchMessageW(&message);
    }
  }

  static INT_PTR CALLBACK dialogProcedure(HWND dialog, UINT message, WPARAM wParam, LPARAM /*lParam*/) {
    // Any program of the desktop can send these messages, at any time and more than once.
    Download* const self = shown_;
    if (message == WM_INITDIALOG && self->dialog_ == nullptr) {
      self->prepareDialog(dialog);
      return TRUE;
    }
    if (self->dialog_ == nullptr) return FALSE;
    if (message == WM_COMMAND && (LOWORD(wParam) == IDOK || LOWORD(wParam) == IDCANCEL)) {
      self->onButton(LOWORD(wParam));
      return TRUE;
    }
    if (message == WM_TIMER && wParam == kStartTimer && !self->transferring_) {
      KillTimer(dialog, kStartTimer);
      self->transferring_ = true;
      self->succeeded_ = self->transfer();
      EndDialog(dialog, 0);
      return TRUE;
    }
    return FALSE;
  }

  /// There are no buttons; Esc and Enter count as Cancel and OK. While the transfer runs only Cancel
  /// counts: Enter may still be held down from starting the program. It takes effect when the next data
  /// arrive: until then the dialog's thread waits for them.
  void onButton(WORD button) {
    if (!transferring_) {
      EndDialog(dialog_, 0);
    } else if (button == IDCANCEL) {
      cancelled_ = true;
    }
  }

  void prepareDialog(HWND dialog) {
    dialog_ = dialog;
    commonControls_ = loadSystemLibrary(L"comctl32.dll");
    const RYN_FUNCTION(InitCommonControlsEx) initialise(commonControls_.get());
    const INITCOMMONCONTROLSEX classes = {sizeof(classes), ICC_PROGRESS_CLASS};
    if (initialise != nullptr) initialise(&classes);

    // Before it is seen: the template has an English title.
    SetWindowTextW(dialog, text(IDS_DOWNLOADING_TITLE).c_str());
    SetDlgItemTextW(dialog, IDC_DOWNLOAD_TEXT, text(IDS_DOWNLOADING_TEXT).c_str());
    ShowWindow(dialog, SW_SHOW);
    // The transfer starts when the dialog is on the screen.
    SetTimer(dialog, kStartTimer, kStartTimerMs, nullptr);
    const int dpi = dpiOf(dialog);
    const auto scaled = [dpi](LONG pixels) { return MulDiv(pixels, dpi, kBarDpi); };
    progressBar_ = CreateWindowExW(0, PROGRESS_CLASSW, nullptr, WS_CHILD | WS_VISIBLE, scaled(kBar.left),
                                   scaled(kBar.top), scaled(kBar.right - kBar.left),
                                   scaled(kBar.bottom - kBar.top), dialog, nullptr, settings_.owner, nullptr);
    if (source_) SendMessageW(progressBar_, PBM_SETRANGE, 0, MAKELPARAM(0, progressRange(sizeBytes_)));
    // One step is one chunk.
    SendMessageW(progressBar_, PBM_SETSTEP, 1, 0);
    SetForegroundWindow(dialog);
    SetActiveWindow(dialog);
  }

  /// From the owner, and empty when missing: nothing may be thrown through the dialog procedure.
  std::wstring text(UINT id) const {
    wchar_t buffer[510];
    const int length = LoadStringW(settings_.owner, id, buffer, ARRAYSIZE(buffer));
    return std::wstring(buffer, static_cast<size_t>(length));
  }

  /// Whose dialog is on the screen. Not carried by a message or the window, where others could replace it.
  static inline Download* shown_ = nullptr;

  const WinInet& internet_;
  const DownloadSettings& settings_;
  const std::wstring& url_;
  const std::wstring& destination_;
  UserPrompt& prompt_;
  InternetHandle session_;
  InternetHandle source_;
  uint32_t sizeBytes_ = 0;
  std::wstring failure_;

  UniqueModule commonControls_;
  HWND dialog_ = nullptr;
  HWND progressBar_ = nullptr;
  ULONGLONG lastUpdate_ = 0;
  uint64_t shownChunks_ = 0;
  bool transferring_ = false;
  bool cancelled_ = false;
  bool succeeded_ = false;
};

}  // namespace

bool download(const DownloadSettings& settings, const std::wstring& url, const std::wstring& destination,
              UserPrompt& prompt) {
  WinInet internet;
  if (!internet.load()) {
    if (settings.quiet) return false;
    constexpr wchar_t kFailure[] = L"Failed to initialize secure WinINet functions\n";
    writeOutput(kFailure);
    prompt.noteFailure(kFailure);
    return false;
  }
  if (!settings.quiet) writeOutput(L"\nDownloading VM Pack - Please Wait!!!\n");
  Download attempt(internet, settings, url, destination, prompt);
  const bool succeeded = attempt.run();
  if (!succeeded && !attempt.failure().empty()) prompt.noteFailure(attempt.failure());
  return succeeded;
}

uint32_t ftpFileSize(uint32_t low, uint32_t high) {
  return low + 260 * high;
}

}  // namespace ryn
