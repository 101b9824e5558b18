#include "vmlaunch/short_paths.h"

#include "text/path_text.h"
#include "text/text.h"

namespace ryn {

WritablePath writablePath(const std::wstring& path, const VmProbe& probe) {
  if (probe.fitsAnsi(path)) return {path};
  std::wstring existing = replaceAll(path, L"/", L"\\");
  std::wstring rest;
  while (!probe.exists(existing)) {
    if (existing.find(L'\\') == std::wstring::npos) return {path};
    rest = concat({L"\\", fileName(existing), rest});
    existing = folderPart(existing);
  }
  WritablePath result = {concat({probe.shortPath(existing).value_or(existing), rest})};
  // What is not there is missed under any name.
  result.isLost = (rest.empty() || rest == L"\\*") && !probe.fitsAnsi(result.text);
  return result;
}

}  // namespace ryn
