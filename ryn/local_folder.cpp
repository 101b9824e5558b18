#include "ryn/local_folder.h"

#include <algorithm>

#include "image/image_error.h"
#include "image/resources.h"
#include "image/version_info.h"
#include "ryn/output.h"
#include "text/fold_case.h"
#include "text/text.h"

namespace ryn {
namespace fs = std::filesystem;

fs::path LocalFolder::find(std::wstring_view relative) const {
  fs::path at = folder_;
  for (const std::wstring& part : split(relative, L'\\')) {
    std::error_code error;
    fs::path next;
    for (const fs::directory_entry& entry : fs::directory_iterator(at, error)) {
      if (equalIgnoringCase(fromUtf8(textOf(entry.path().filename())), part)) next = entry.path();
    }
    if (next.empty()) return {};
    at = std::move(next);
  }
  return at;
}

std::wstring textFile(const fs::path& path) {
  return textOfBytes(readFile(path));
}

std::wstring textOfBytes(ByteView bytes) {
  const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  return replaceAll(widenBytes(text.substr(0, text.find('\x1A'))), L"\r\n", L"\n");
}

VersionResource versionResourceOf(ByteView program) {
  VersionResource result;
  try {
    const Resources resources = readResources(PeImage(Bytes(program.begin(), program.end())));
    const auto language = firstLanguage(resources, kRtVersion, 1);
    if (!language) return result;
    const VersionInfo info = readVersionInfo(resources.at({kRtVersion, 1, *language}).data);
    result.fileVersion = info.fileVersion;
    result.productVersion = info.productVersion;
    for (const VersionInfo::StringTable& table : info.tables) {
      if (lowerCase(table.key) != L"040904b0") continue;
      for (const auto& [name, text] : table.strings) {
        if (name == L"CompanyName") result.companyName = text;
      }
    }
  } catch (const ImageError&) {
    // No program, or one that Windows tells nothing of.
  }
  return result;
}

}  // namespace ryn
