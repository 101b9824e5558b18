#include "vmlaunch/fact_lines.h"

#include "properties/keys.h"
#include "text/text.h"

namespace ryn {
namespace {

void add(std::wstring& lines, std::wstring_view key, std::wstring_view value) {
  lines += concat({key, L"=", escapeAnyProperty(value), L"\n"});
}

const wchar_t* flagText(bool flag) {
  return flag ? L"true" : L"false";
}

}  // namespace

std::wstring factLines(const LaunchFacts& facts) {
  std::wstring lines;
  if (!tellsJavaSide(facts.properties)) return lines;
  add(lines, keys::kLaunchService, flagText(facts.service));
  add(lines, keys::kLaunchConsole, flagText(facts.console));
  add(lines, keys::kLaunchFile, facts.propertiesPath);
  add(lines, keys::kLaunchProgram, facts.programPath);
  add(lines, keys::kLaunchStartFolder, facts.defaultFolder);
  if (exactArguments(facts.properties)) add(lines, keys::kLaunchCommandLine, facts.commandLine);
  if (facts.stopInput) add(lines, keys::kLaunchStopInput, flagText(true));
  return lines;
}

}  // namespace ryn
