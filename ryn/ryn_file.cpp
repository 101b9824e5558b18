#include "ryn/ryn_file.h"

#include <charconv>

#include "text/text.h"

namespace ryn {
namespace {

/// As the launcher reads a value: it knows no escape but "\u", which "C:\users" would be as well, and cuts
/// blanks and a backslash from the end.
std::string escaped(std::string_view value) {
  std::string result;
  const std::wstring wide = fromUtf8(value);
  for (size_t i = 0; i < wide.size(); ++i) {
    const wchar_t c = wide[i];
    const bool atEdge = i == 0 || i + 1 == wide.size();
    if (c > L' ' && c < 127 && c != L'\\')
      result.push_back(static_cast<char>(c));
    else if (c == L' ' && !atEdge)
      result.push_back(' ');
    else {
      constexpr std::string_view kDigits = "0123456789abcdef";
      result += "\\u";
      for (int shift = 12; shift >= 0; shift -= 4) result.push_back(kDigits[(c >> shift) & 0xF]);
    }
  }
  return result;
}

}  // namespace

std::string rynFileText(const RynFile& file) {
  std::string text;
  const auto comment = [&](std::string_view line) { text.append("\n# ").append(line).append("\n"); };
  const auto set = [&](std::string_view key, std::string_view value) {
    text.append(key).append("=").append(escaped(value)).append("\n");
  };
  text =
      "# Read by the program of the same name in this folder. Plain ASCII: other characters are \\uXXXX, a\n"
      "# backslash is \\u005c. Paths count from this folder and take \"/\".\n";
  set("ryn.application.name", file.name);

  comment("What is started. Entries of the class path have \";\" between them.");
  std::string classPath;
  for (const std::string& jar : file.jars) classPath += (classPath.empty() ? "lib/" : ";lib/") + jar;
  set("ryn.class.path", classPath.empty() ? "lib/*" : classPath);
  set("ryn.nl.java.launcher.main.class", file.mainClass);

  comment("Which Java will do: kinds (JRE JDK), versions (17+ 11-21), blanks between them.");
  set("ryn.nl.valid.vm.list", file.validVms);
  text += "# Without 2 or 3 no installed Java is found.\n";
  set("ryn.nl.win32.java.launcher.platform", "2");
  if (file.hasRuntime) {
    comment("The Java of this folder, before any that is installed. The list above must admit it.");
    set("ryn.nl.current.vm", "jre/bin/java.exe");
  }
  if (file.heapMax != 0) {
    comment("In bytes; k and m may stand behind the number, g may not.");
    set("ryn.nl.java.option.java.heap.size.max", std::to_string(file.heapMax));
  }
  if (!file.options.empty()) {
    comment("Options of the VM, as on a command line of Windows.");
    std::string line;
    for (const std::string& option : file.options) line += (line.empty() ? "" : " ") + quotedArgument(option);
    set("ryn.nl.java.option.additional", line);
  }
  return text;
}

std::optional<uint64_t> parseSize(std::string_view text) {
  uint64_t number = 0;
  const auto [next, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const std::wstring unit =
      lowerCase(widenBytes({next, static_cast<size_t>(text.data() + text.size() - next)}));
  const int shift = unit.empty() ? 0 : unit == L"k" ? 10 : unit == L"m" ? 20 : unit == L"g" ? 30 : -1;
  // Beyond that no heap can be, and the launcher's number ends.
  constexpr uint64_t kLargest = uint64_t{1} << 47;
  if (error != std::errc() || shift < 0 || number == 0 || number > kLargest >> shift) return {};
  return number << shift;
}

std::string quotedArgument(std::string_view text) {
  if (!text.empty() && text.find_first_of(" \t\"") == std::string_view::npos) return std::string(text);
  std::string result = "\"";
  size_t backslashes = 0;
  for (const char c : text) {
    // Backslashes count as such, unless a quotation mark follows.
    if (c == '"') result.append(backslashes + 1, '\\');
    backslashes = c == '\\' ? backslashes + 1 : 0;
    result.push_back(c);
  }
  return result.append(backslashes, '\\') + "\"";
}

}  // namespace ryn
