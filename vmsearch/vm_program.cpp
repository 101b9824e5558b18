#include "vmsearch/vm_program.h"

#include "text/path_text.h"
#include "text/text.h"

namespace ryn {
namespace {

std::wstring classicProgram(const std::wstring& home, bool console, const VmProbe& probe) {
  std::wstring runtime = home + (console ? L"\\bin\\jre.exe" : L"\\bin\\jrew.exe");
  if (probe.exists(runtime)) return runtime;
  return home + (console ? L"\\bin\\java.exe" : L"\\bin\\javaw.exe");
}

std::wstring modernProgram(const std::wstring& home, bool console, const VmProbe& probe) {
  const std::wstring folderName = lowerCase(fileName(home));
  const bool systemFolder = folderName == L"system32" || folderName == L"syswow64";
  const std::wstring folder = home + (systemFolder ? L"" : L"\\bin");
  std::wstring windowless = folder + L"\\javaw.exe";
  if (probe.exists(windowless)) {
    std::wstring program = console ? folder + L"\\java.exe" : std::move(windowless);
    if (!console || probe.exists(program)) return program;
  }
  // A VM that was found by its executable has the executable's own folder for its home.
  return home + (console ? L"\\java.exe" : L"\\javaw.exe");
}

}  // namespace

std::wstring vmProgram(const VmCandidate& candidate, bool console, const VmProbe& probe) {
  switch (dialectOf(candidate)) {
    case VmDialect::kClassic:
      return classicProgram(candidate.folder, console, probe);
    case VmDialect::kMicrosoft:
      return candidate.folder + (console ? L"\\jview.exe" : L"\\wjview.exe");
    case VmDialect::kModern:
      break;
  }
  return modernProgram(candidate.folder, console, probe);
}

}  // namespace ryn
