#include "ryn/ryn_file.h"

#include <charconv>

#include "text/text.h"

namespace ryn {
namespace {

/// More than that a 32-bit VM cannot have for sure.
constexpr uint64_t k32BitHeap = uint64_t{1} << 30;

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
  std::string classPath = file.jars.empty() ? ";lib/*" : file.start ? ";lib/ryn-start.jar" : "";
  for (const std::string& jar : file.jars) classPath += ";lib/" + jar;
  set("ryn.class.path", classPath.substr(1));
  if (file.start) {
    text += "# ryn-start.jar starts the program as it is, with the arguments as they were typed.\n";
    set("ryn.nl.java.launcher.main.class", "com.vantu.ryn.Start");
    if (file.mainClass.empty())
      set("ryn.start.jar", "lib/" + file.jars.front());
    else
      set("ryn.start.class", file.mainClass);
    set("ryn.launch.arguments", "exact");
  } else {
    set("ryn.nl.java.launcher.main.class", file.mainClass);
  }
  if (file.console) {
    comment("A console with all that the program says. To keep it open at the end:");
    text += "#ryn.win32.console.pause=true\n";
    set("ryn.stdout.redirect", "console");
  }

  comment("Which Java will do: kinds (JRE JDK), versions (17+ 11-21), blanks between them.");
  set("ryn.nl.valid.vm.list", file.validVms);
  text += "# Without 2 or 3 no installed Java is found.\n";
  set("ryn.nl.win32.java.launcher.platform", "2");
  if (!file.currentVm.empty()) {
    comment("The Java of this folder, before any that is installed. The list above must admit it.");
    set("ryn.nl.current.vm", file.currentVm);
  }
  if (file.heapMax > k32BitHeap) {
    comment("A 32-bit Java has no room for this heap.");
    set("ryn.win32.vm.bits", "64");
  }
  if (file.heapMax != 0) {
    comment("In bytes; k and m may stand behind the number, g may not.");
    set("ryn.nl.java.option.java.heap.size.max", std::to_string(file.heapMax));
  }
  std::string options;
  // Else windows are small or blurred on screens of high density.
  if (file.start) options = "-Dsun.java2d.uiScale.enabled=true";
  for (const std::string& option : file.options)
    options += (options.empty() ? "" : " ") + quotedArgument(option);
  if (!options.empty()) {
    comment("Options of the VM, as on a command line of Windows.");
    set("ryn.nl.java.option.additional", options);
  }
  if (file.start) {
    comment("Folders of any name; the VM ends with its launcher; a service has so many seconds to end.");
    set("ryn.win32.short.paths", "true");
    set("ryn.win32.job", "true");
    set("ryn.service.stop.seconds", "20");

    comment(
        "What some want, without the \"#\": this folder as the working folder, one process for each user,");
    text += "# a log, options of the user.\n";
    const auto suggest = [&](std::string_view key, const std::string& value) {
      text += "#";
      set(key, value);
    };
    suggest("ryn.user.dir", ".");
    suggest("ryn.start.single.instance", "true");
    suggest("ryn.stderr.redirect", "%LOCALAPPDATA%/" + file.name + "/log.txt");
    suggest("ryn.user.options", "%APPDATA%/" + file.name + "/" + file.name + ".vmoptions");
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
