#include "ryn/check_application.h"
#include "provision/application_paths.h"
#include "ryn/application_check.h"
#include "ryn/output.h"
#include "text/path_text.h"
#include "text/text.h"

namespace ryn {
namespace {
namespace fs = std::filesystem;

void checkProgram(ApplicationCheck& check, const fs::path& file) {
  const std::wstring name = fromUtf8(textOf(file.stem())) + L".exe";
  if (check.probe.fileExists(FolderProbe::resolved(name))) return;
  check.add("no-launcher", check.ryn.file(), 1,
            concat({L"there is no ", name, L" beside it, which would read it"}));
}

}  // namespace

void ApplicationCheck::add(RuleRef rule, const std::string& file, size_t line, std::wstring_view text) {
  std::wstring shown(text);
  // What traps of the syntax leave in a value.
  for (wchar_t& c : shown) {
    if (c < L' ' || c == 0xFFFF) c = L'?';
  }
  findings.push_back({.rule = rule.get(), .file = file, .line = line, .text = toUtf8(shown)});
}

std::string ApplicationCheck::nameOf(const std::wstring& fullPath) const {
  const std::optional<fs::path> found = probe.find(fullPath);
  if (!found) {
    return prefix + toUtf8(replaceAll(FolderProbe::inside(fullPath).value_or(fullPath), L"\\", L"/"));
  }
  return textOf(found->lexically_normal());
}

Findings checkApplication(const fs::path& folderOrFile) {
  const fs::path file = propertyFileOf(folderOrFile).lexically_normal();
  const fs::path folder = file.parent_path();
  ApplicationCheck check{.probe = FolderProbe(folder.empty() ? "." : folder),
                         .prefix = folder.empty() ? "" : textOf(folder / ""),
                         .ryn = PropertyLines(textOf(file), textFile(file)),
                         .jvmspecs = {},
                         .options = {},
                         .plan = {},
                         .environment = {},
                         .javas = {},
                         .findings = {}};
  for (const std::wstring& path : jvmspecsPaths(FolderProbe::kFolder)) {
    if (!check.probe.fileExists(path)) continue;
    check.jvmspecs.emplace(check.nameOf(path), textFile(*check.probe.find(path)));
    check.options = readBuildOptions(check.jvmspecs->properties());
    check.plan = planVm(check.options);
    break;
  }
  checkProgram(check, file);
  checkProperties(check, check.ryn, true);
  if (check.jvmspecs) checkProperties(check, *check.jvmspecs, false);
  checkVms(check);
  checkStart(check);
  checkOptions(check);
  sortFindings(check.findings);
  return std::move(check.findings);
}

}  // namespace ryn
