#include "vmlaunch/user_options.h"

#include "properties/keys.h"
#include "text/path_text.h"
#include "text/text.h"
#include "vmlaunch/launch_request.h"

namespace ryn {
namespace {

constexpr wchar_t kByteOrderMark = 0xFEFF;

// From text whose characters are the bytes of a file.
std::wstring decodeUtf8(const std::wstring& characters) {
  std::string bytes;
  bytes.reserve(characters.size());
  for (const wchar_t c : characters) bytes.push_back(static_cast<char>(c));
  std::wstring text = fromUtf8(bytes);
  if (text.starts_with(kByteOrderMark)) text.erase(0, 1);
  return text;
}

}  // namespace

UserOptions readUserOptions(const LaunchFacts& facts, const VmProbe& probe) {
  UserOptions options;
  const auto named = expandVariables(userOptionsFile(facts.properties), facts.environment);
  if (!named || named->empty()) return options;
  options.path = resolvePath(*named, folderPart(facts.propertiesPath));
  options.isRefused = facts.service || probe.isElevated();
  if (options.isRefused) return options;
  const auto content = probe.readText(options.path);
  if (!content) return options;
  for (const std::wstring& line : split(decodeUtf8(*content), L'\n')) {
    const std::wstring_view option = trim(line);
    if (!option.empty() && !option.starts_with(L'#')) options.lines.emplace_back(option);
  }
  return options;
}

}  // namespace ryn
