#include "launcher/command_line.h"

#include "fuzz/input.h"

using namespace ryn;

namespace {

// As Windows documents it for programs that start others.
std::wstring quoted(const std::wstring& word) {
  std::wstring text = L"\"";
  size_t backslashes = 0;
  for (const wchar_t c : word) {
    if (c == L'"') text.append(backslashes + 1, L'\\');
    backslashes = c == L'\\' ? backslashes + 1 : 0;
    text.push_back(c);
  }
  return text.append(backslashes, L'\\') + L"\"";
}

bool isPlain(const std::wstring& word) {
  return !word.empty() && word.find_first_of(L" \"") == std::wstring::npos && word[0] != L'-';
}

}  // namespace

// The text of a command line; its lines are also words to be put on one.
int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  // Every path with an "e" in it exists, every one with an "o" is a folder.
  constexpr PathLookup kPaths = {
      .exists = [](const std::wstring& path) { return path.find(L'e') != std::wstring::npos; },
      .folderExists = [](const std::wstring& path) { return path.find(L'o') != std::wstring::npos; },
      .normalise = [](const std::wstring& path) { return L"C:\\" + path; },
      .expand = [](const std::wstring& path) { return L"C:\\" + path; }};
  constexpr PathLookup kNoPaths = {.exists = [](const std::wstring&) { return false; },
                                   .folderExists = [](const std::wstring&) { return false; },
                                   .normalise = [](const std::wstring& path) { return path; },
                                   .expand = [](const std::wstring& path) { return path; }};
  const std::wstring text = fromUtf8(fuzz::bytesAsText(data, size));
  const CommandLine parsed = parseCommandLine(text, kPaths);
  fuzz::require(parsed.service || parsed.serviceName.empty(), "a service's name is a service's");
  fuzz::require(silentArgument(text).has_value() == (splitAsWindows(text).size() > 1),
                "silent is an argument");

  const std::vector<std::wstring> words = split(text, L'\n');
  std::wstring windows = L"x.exe", plain = L"x.exe";
  std::vector<std::wstring> expected = {L"x.exe"}, expectedPlain = {L"x.exe"};
  for (const std::wstring& word : words) {
    windows += L" " + quoted(word);
    expected.push_back(word);
    if (!isPlain(word)) continue;
    plain += L" " + word;
    expectedPlain.push_back(word);
  }
  fuzz::require(splitAsWindows(windows) == expected, "what is quoted as Windows wants comes back");
  fuzz::require(parseCommandLine(plain, kNoPaths).arguments == expectedPlain, "plain words come back");
  return 0;
}
