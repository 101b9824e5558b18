#include "launcher/command_line.h"

#include <algorithm>

#include "launcher/switches.h"
#include "text/fold_case.h"
#include "text/text.h"

namespace ryn {
namespace {

std::vector<std::wstring> splitTokens(std::wstring_view text) {
  std::vector<std::wstring> tokens = split(text, L' ');
  std::erase(tokens, std::wstring());
  return tokens;
}

std::wstring tempFolderFrom(const std::wstring& token, const PathLookup& paths) {
  if (!token.starts_with(L'"')) return {};
  std::wstring folder = token.substr(1);
  if (!folder.empty()) folder.pop_back();
  // Here, because the current folder changes before the folder is used.
  return paths.folderExists(folder) ? paths.normalise(folder) : std::wstring();
}

void readSwitches(const std::vector<std::wstring>& tokens, const PathLookup& paths, CommandLine& result) {
  for (size_t i = 0; i < tokens.size(); ++i) {
    if (tokens[i] == switches::kService) {
      if (++i == tokens.size()) return;
      result.service = true;
      result.serviceName = tokens[i];
      continue;
    }
    if (tokens[i] == switches::kInterface) {
      result.arguments.push_back(tokens[i]);
      if (++i == tokens.size()) return;
      if (tokens[i] == switches::kConsole) result.console = true;
      // What follows is read on as the current token.
    }
    if (tokens[i] == switches::kTempFolder) {
      result.arguments.push_back(tokens[i]);
      if (++i == tokens.size()) return;
      result.tempFolder = tempFolderFrom(tokens[i], paths);
    }
    result.arguments.push_back(tokens[i]);
  }
}

std::vector<std::wstring> rejoinQuoted(const std::vector<std::wstring>& pieces) {
  std::vector<std::wstring> joined;
  for (size_t i = 0; i < pieces.size(); ++i) {
    std::wstring argument = pieces[i];
    // A quoted wildcard keeps its quotes, so that nobody behind us expands it.
    if (argument.starts_with(L'"') && argument.find(L'*') == std::wstring::npos) {
      while (!argument.ends_with(L'"') && i + 1 < pieces.size()) argument += L" " + pieces[++i];
      argument.erase(0, 1);
      if (argument.ends_with(L'"')) argument.pop_back();
    }
    joined.push_back(std::move(argument));
  }
  return joined;
}

}  // namespace

CommandLine parseCommandLine(const std::wstring& text, const PathLookup& paths) {
  CommandLine result;
  result.text = text;
  std::wstring_view rest = text;
  if (rest.starts_with(L'"')) {
    const size_t end = rest.find(L'"', 1);
    if (end != std::wstring_view::npos) {
      result.arguments.emplace_back(rest.substr(0, end + 1));
      rest.remove_prefix(end + 1);
    }
  }
  readSwitches(splitTokens(rest), paths, result);
  result.arguments = rejoinQuoted(result.arguments);
  for (std::wstring& argument : result.arguments) {
    if (!argument.starts_with(L'/') && paths.exists(argument)) argument = paths.expand(argument);
  }
  return result;
}

std::optional<bool> silentArgument(std::wstring_view text) {
  const std::vector<std::wstring> words = splitAsWindows(text);
  if (words.size() < 2) return std::nullopt;
  return equalIgnoringCase(words.back(), switches::kSilent);
}

std::vector<std::wstring> splitAsWindows(std::wstring_view text) {
  // The program ends at the next quote or blank, whatever stands before it.
  const size_t quoted = text.starts_with(L'"') ? 1 : 0;
  const size_t programEnd = std::min(quoted ? text.find(L'"', 1) : text.find_first_of(L" \t"), text.size());
  std::vector<std::wstring> words = {std::wstring(text.substr(quoted, programEnd - quoted))};
  text.remove_prefix(std::min(programEnd + 1, text.size()));

  bool inWord = false;
  // 1 within quotes. The third of a row, the one that opened the quotes included, is an ordinary character.
  int quotes = 0;
  for (size_t i = 0; i < text.size();) {
    if (quotes == 0 && (text[i] == L' ' || text[i] == L'\t')) {
      inWord = false;
      ++i;
      continue;
    }
    if (!inWord) words.emplace_back();
    inWord = true;
    std::wstring& word = words.back();

    const size_t start = i;
    while (i < text.size() && text[i] == L'\\') ++i;
    const size_t backslashes = i - start;
    if (i == text.size() || text[i] != L'"') {
      word.append(backslashes, L'\\');
      if (backslashes == 0) word += text[i++];
      continue;
    }
    // Before a quote two backslashes are one, and one that is left over makes the quote an ordinary
    // character.
    word.append(backslashes / 2, L'\\');
    if (backslashes % 2 == 1) {
      word += L'"';
    } else {
      ++quotes;
    }
    while (++i < text.size() && text[i] == L'"') {
      if (++quotes < 3) continue;
      word += L'"';
      quotes = 0;
    }
    if (quotes == 2) quotes = 0;
  }
  return words;
}

}  // namespace ryn
