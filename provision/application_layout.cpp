#include "provision/application_layout.h"

#include <utility>

#include "platform/files.h"
#include "provision/application_paths.h"
#include "text/text.h"

namespace ryn {
namespace {

/// `base` and the first of its two Windows folders in which `name` exists; empty when none has it.
std::wstring findWindowsFolder(const std::wstring& base, const wchar_t* name) {
  for (const std::wstring_view folder : kWindowsFolders) {
    if (folderExists(concat({base, folder, name}))) return concat({base, folder});
  }
  return {};
}

}  // namespace

std::wstring findJvmspecs(const std::wstring& launcherFolder) {
  for (std::wstring& path : jvmspecsPaths(launcherFolder)) {
    if (fileExists(path)) return std::move(path);
  }
  return {};
}

std::wstring packDestination(const std::wstring& launcherFolder, const std::wstring& url) {
  const std::wstring folder = findWindowsFolder(launcherFolder, L"\\jvmspecs");
  if (folder.empty()) return {};
  const std::wstring_view name = trim(std::wstring_view(url).substr(url.rfind(L'/') + 1));
  return folder + L"\\jvmspecs" + std::wstring(name);
}

std::wstring extractionFolder(const std::wstring& launcherFolder) {
  const std::wstring folder = findWindowsFolder(launcherFolder, L"");
  return folder.empty() ? folder : folder + L"\\resource\\jre\\";
}

std::wstring unpackedVm(const std::wstring& extractionFolder) {
  for (const wchar_t* bin : {L"\\bin", L"\\jre\\bin"}) {
    if (pathExists(extractionFolder + bin)) return concat({extractionFolder, bin, L"\\java.exe"});
  }
  return {};
}

}  // namespace ryn
