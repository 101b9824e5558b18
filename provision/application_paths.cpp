#include "provision/application_paths.h"

#include "text/path_text.h"
#include "text/text.h"

namespace ryn {
namespace {

// In the folder, not beside it: who replaces a half VM by a whole one takes the marker away, too.
constexpr std::wstring_view kMarker = L"ryn.unpacking";

/// From "jre\jre\bin" to the folder that packs are unpacked into.
constexpr int kFoldersAbove = 2;

}  // namespace

std::vector<std::wstring> jvmspecsPaths(const std::wstring& launcherFolder) {
  std::vector<std::wstring> paths;
  for (const std::wstring_view folder : {std::wstring_view(), kWindowsFolders[0], kWindowsFolders[1]}) {
    paths.push_back(concat({launcherFolder, folder, L"\\jvmspecs\\jvmspecs.properties"}));
  }
  return paths;
}

std::vector<std::wstring> shippedVmPaths(const std::wstring& launcherFolder) {
  std::vector<std::wstring> paths;
  for (const std::wstring_view folder : kWindowsFolders) {
    for (const wchar_t* home : {L"\\resource\\jre", L"\\resource\\jre\\jre"}) {
      paths.push_back(concat({launcherFolder, folder, home, L"\\bin\\java.exe"}));
    }
  }
  return paths;
}

std::vector<std::wstring> unpackMarkers(const std::wstring& folder) {
  std::vector<std::wstring> markers;
  std::wstring_view at = folder;
  for (int above = 0; above <= kFoldersAbove; ++above) {
    at = at.substr(0, at.find_last_not_of(L'\\') + 1);
    if (at.empty()) break;
    markers.push_back(joinPath(at, kMarker));
    at = at.substr(0, at.rfind(L'\\') + 1);
  }
  return markers;
}

}  // namespace ryn
