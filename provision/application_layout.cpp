#include "provision/application_layout.h"

#include "platform/files.h"
#include "platform/text.h"

namespace ryn {
namespace {

constexpr const wchar_t* kWindowsFolders[] = {L"\\Windows", L"\\Windows_Pure_64_Bit"};

/// `base` and the first of its two Windows folders in which `name` exists; empty when none has it.
std::wstring findWindowsFolder(const std::wstring& base, const wchar_t* name) {
  for (const wchar_t* folder : kWindowsFolders) {
    if (folderExists(base + folder + name)) return base + folder;
  }
  return {};
}

}  // namespace

std::wstring findJvmspecs(const std::wstring& launcherFolder) {
  for (const wchar_t* folder : {L"", kWindowsFolders[0], kWindowsFolders[1]}) {
    std::wstring path = concat({launcherFolder, folder, L"\\jvmspecs\\jvmspecs.properties"});
    if (fileExists(path)) return path;
  }
  return {};
}

std::vector<std::wstring> shippedVmPaths(const std::wstring& launcherFolder) {
  std::vector<std::wstring> paths;
  for (const wchar_t* folder : kWindowsFolders) {
    for (const wchar_t* home : {L"\\resource\\jre", L"\\resource\\jre\\jre"}) {
      paths.push_back(concat({launcherFolder, folder, home, L"\\bin\\java.exe"}));
    }
  }
  return paths;
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
