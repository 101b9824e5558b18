#include "vmlaunch/vm_command_line.h"

#include <algorithm>

#include "fuzz/input.h"
#include "launcher/command_line.h"

using namespace ryn;

namespace {

// What the program reads from an application argument; nothing where the rules promise nothing.
bool comesBack(const std::wstring& argument, std::vector<std::wstring>& words) {
  const bool blank = argument.find(L' ') != std::wstring::npos;
  if (argument.find(L'"') != std::wstring::npos) return false;
  if (!blank && argument.find(L'\t') != std::wstring::npos) return false;
  if (argument.empty()) return true;
  std::wstring word = replaceAll(argument, L"\\", L"\\\\");
  // Before the closing quote two are one again.
  const size_t last = argument.find_last_not_of(L'\\');
  if (blank) word.resize(word.size() - (argument.size() - (last == std::wstring::npos ? 0 : last + 1)));
  words.push_back(word);
  return true;
}

}  // namespace

// A script: generation, kind and parts of a launch.
int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  VmCandidate vm;
  LaunchRequest request;
  std::wstring executable = L"C:\\a b\\java.exe";
  bool unpromised = false;
  std::vector<std::wstring> expected;
  for (const auto& [letter, text] : fuzz::statements(data, size)) {
    const bool hasQuote = text.find(L'"') != std::wstring::npos;
    switch (letter) {
      case L'a':
        request.applicationArguments.push_back(text);
        unpromised = !comesBack(text, expected) || unpromised;
        continue;
      case L'c':
        request.classpath.entries.push_back(text);
        break;
      case L'e':
        executable = text;
        break;
      case L'g':
        vm.version = parseVmVersion(text);
        continue;
      case L'h':
        vm.folder = text;
        break;
      case L'k':
        vm.kind = static_cast<VmKind>(std::clamp(parseInteger(text), 0, 2));
        continue;
      case L'l':
        request.leadingArguments.push_back(text);
        break;
      case L'm':
        request.mainClass = text;
        break;
      case L'o':
        request.additionalOptions = text;
        break;
      case L's':
        request.heapInitial = request.heapMax = parseHeapSize(text);
        continue;
      case L'v':
        request.verbose = request.debugging = request.noAsyncGc = request.noJit = parseFlag(text);
        request.gcExtent = text;
        continue;
      default:
        continue;
    }
    unpromised = unpromised || hasQuote;
  }
  const std::wstring line = vmCommandLine(vm, request, executable);
  if (unpromised) return 0;
  const std::vector<std::wstring> words = splitAsWindows(line);
  fuzz::require(words.front() == executable, "the program is the first word");
  fuzz::require(
      words.size() > expected.size() && std::equal(expected.rbegin(), expected.rend(), words.rbegin()),
      "the application's arguments are the last words");
  return 0;
}
