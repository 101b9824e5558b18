#include "ryn/machine_record.h"

#include <algorithm>

#include "ryn/output.h"
#include "text/fold_case.h"
#include "text/path_text.h"
#include "text/text.h"

namespace ryn {
namespace {

using nlohmann::json;

constexpr std::pair<ValidatorAnswer, const char*> kAnswers[] = {
    {ValidatorAnswer::kAccepted, "accepted"},
    {ValidatorAnswer::kRejected, "rejected"},
    {ValidatorAnswer::kTimedOut, "timedOut"},
    {ValidatorAnswer::kNotStarted, "notStarted"},
};

const char* registrySection(RegistryView view) {
  return view == RegistryView::k64 ? "registry64" : "registry";
}

std::vector<std::wstring> textsFrom(const json& array) {
  std::vector<std::wstring> texts;
  for (const json& text : array) texts.push_back(fromUtf8(text.get<std::string>()));
  return texts;
}

bool isText(const json& value) {
  return value.is_string();
}
bool isFlag(const json& value) {
  return value.is_boolean();
}
bool isNumber(const json& value) {
  return value.is_number_integer();
}

template <auto isValid>
bool isArrayOf(const json& value) {
  return value.is_array() && std::all_of(value.begin(), value.end(), isValid);
}

template <auto isValid>
bool isMapOf(const json& value) {
  return value.is_object() && std::all_of(value.begin(), value.end(), isValid);
}

bool has(const json& object, const char* name, bool (*isValid)(const json&)) {
  return !object.contains(name) || isValid(object[name]);
}

bool isFourNumbers(const json& value) {
  return isArrayOf<isNumber>(value) && value.size() == 4;
}

bool isVersion(const json& value) {
  return value.is_object() && has(value, "file", isFourNumbers) && has(value, "product", isFourNumbers) &&
         has(value, "company", isText);
}

bool isKey(const json& value) {
  return value.is_object() && has(value, "subkeys", isArrayOf<isText>) &&
         has(value, "values", isMapOf<isText>);
}

struct SectionRule {
  const char* name;
  bool (*isValid)(const json&);
};

// Those that are objects are looked into by name.
constexpr SectionRule kSections[] = {
    {"paths", isMapOf<isText>},
    {"links", isMapOf<isText>},
    {"subfolders", isMapOf<isMapOf<isArrayOf<isText>>>},
    {"texts", isMapOf<isText>},
    {"versions", isMapOf<isVersion>},
    {"bits", isMapOf<isNumber>},
    {"registry", isMapOf<isKey>},
    {"registry64", isMapOf<isKey>},
    {"ansi", isMapOf<isFlag>},
    {"shortPaths", isMapOf<isText>},
    {"unsafeFolders", isMapOf<isFlag>},
    {"validator", isMapOf<isMapOf<isText>>},
    {"fixedDrives", isArrayOf<isText>},
    {"wow64SystemFolder", isText},
    {"wow64", isFlag},
    {"administrator", isFlag},
    {"elevated", isFlag},
};

std::optional<FourPartVersion> versionFrom(const json& version, const char* name) {
  if (!version.contains(name)) return std::nullopt;
  return version[name].get<FourPartVersion>();
}

}  // namespace

PathKind RecordingProbe::pathKind(const std::wstring& path) const {
  const PathKind kind = machine_.pathKind(path);
  if (kind != PathKind::kNone) record_["paths"][toUtf8(path)] = kind == PathKind::kFile ? "file" : "folder";
  return kind;
}

std::wstring RecordingProbe::resolveLink(const std::wstring& path) const {
  const std::wstring target = machine_.resolveLink(path);
  if (target != path) record_["links"][toUtf8(path)] = toUtf8(target);
  return target;
}

std::vector<Subfolder> RecordingProbe::subfolders(const std::wstring& folder,
                                                  const std::wstring& pattern) const {
  const std::vector<Subfolder> found = machine_.subfolders(folder, pattern);
  for (const Subfolder& subfolder : found) {
    record_["subfolders"][toUtf8(folder)][toUtf8(pattern)].push_back(toUtf8(subfolder.name));
    const std::wstring path = joinPath(folder, subfolder.name);
    if (subfolder.isLink) record_["links"][toUtf8(path)] = toUtf8(machine_.resolveLink(path));
  }
  return found;
}

std::optional<std::vector<std::wstring>> RecordingProbe::fixedDrives() const {
  const auto drives = machine_.fixedDrives();
  if (drives) record_["fixedDrives"] = utf8Of(*drives);
  return drives;
}

std::optional<std::wstring> RecordingProbe::readText(const std::wstring& path) const {
  const auto text = machine_.readText(path);
  if (text) record_["texts"][toUtf8(path)] = toUtf8(*text);
  return text;
}

VersionResource RecordingProbe::versionResource(const std::wstring& path) const {
  const VersionResource resource = machine_.versionResource(path);
  json version;
  if (resource.fileVersion) version["file"] = *resource.fileVersion;
  if (resource.productVersion) version["product"] = *resource.productVersion;
  if (!resource.companyName.empty()) version["company"] = toUtf8(resource.companyName);
  if (!version.is_null()) record_["versions"][toUtf8(path)] = version;
  return resource;
}

ImageBitness RecordingProbe::imageBitness(const std::wstring& path) const {
  const ImageBitness bitness = machine_.imageBitness(path);
  if (bitness != ImageBitness::kUnknown)
    record_["bits"][toUtf8(path)] = bitness == ImageBitness::k64 ? 64 : 32;
  return bitness;
}

bool RecordingProbe::underWow64() const {
  const bool answer = machine_.underWow64();
  record_["wow64"] = answer;
  return answer;
}

std::wstring RecordingProbe::wow64SystemFolder() const {
  std::wstring folder = machine_.wow64SystemFolder();
  record_["wow64SystemFolder"] = toUtf8(folder);
  return folder;
}

std::optional<std::vector<std::wstring>> RecordingProbe::subkeyNames(const std::wstring& key,
                                                                     RegistryView view) const {
  const auto names = machine_.subkeyNames(key, view);
  if (names) record_[registrySection(view)][toUtf8(key)]["subkeys"] = utf8Of(*names);
  return names;
}

std::optional<std::wstring> RecordingProbe::registryText(const std::wstring& key, RegistryView view,
                                                         const std::wstring& name) const {
  const auto text = machine_.registryText(key, view, name);
  if (text) record_[registrySection(view)][toUtf8(key)]["values"][toUtf8(name)] = toUtf8(*text);
  return text;
}

bool RecordingProbe::isAdministrator() const {
  const bool answer = machine_.isAdministrator();
  record_["administrator"] = answer;
  return answer;
}

bool RecordingProbe::isElevated() const {
  const bool answer = machine_.isElevated();
  record_["elevated"] = answer;
  return answer;
}

bool RecordingProbe::fitsAnsi(const std::wstring& text) const {
  const bool answer = machine_.fitsAnsi(text);
  // ASCII is part of every code page.
  if (std::any_of(text.begin(), text.end(), [](wchar_t c) { return c > 127; }))
    record_["ansi"][toUtf8(text)] = answer;
  return answer;
}

std::optional<std::wstring> RecordingProbe::shortPath(const std::wstring& path) const {
  const auto text = machine_.shortPath(path);
  if (text && *text != path) record_["shortPaths"][toUtf8(path)] = toUtf8(*text);
  return text;
}

bool RecordingProbe::refusesFolder(const std::wstring& folder) const {
  const bool answer = machine_.refusesFolder(folder);
  if (answer) record_["unsafeFolders"][toUtf8(folder)] = true;
  return answer;
}

ValidatorAnswer RecordingProbe::validate(const std::wstring& executable, const std::wstring& jar,
                                         const std::wstring& token) const {
  const ValidatorAnswer answer = machine_.validate(executable, jar, token);
  for (const auto& [value, name] : kAnswers) {
    if (value == answer) record_["validator"][toUtf8(executable)][toUtf8(token)] = name;
  }
  return answer;
}

ReplayProbe::ReplayProbe(const MachineRecord& record, std::wstring applicationFolder, const FolderProbe& here)
    : record_(record), folder_(std::move(applicationFolder)), here_(here) {
  for (const SectionRule& section : kSections) {
    if (!record.contains(section.name)) continue;
    const json& entries = record[section.name];
    if (!section.isValid(entries))
      throw CommandError(kUsage,
                         std::string("the record of a machine has no valid \"") + section.name + "\"");
    if (!entries.is_object()) continue;
    for (const auto& [name, value] : entries.items())
      entries_[section.name][foldCase(fromUtf8(name))] = &value;
  }
  for (const auto& [path, kind] : entries_["paths"]) {
    for (std::wstring folder = folderPart(path); folder != L"."; folder = folderPart(folder))
      folders_.insert(folder);
  }
}

const json* ReplayProbe::find(const char* section, const std::wstring& name) const {
  const auto entries = entries_.find(section);
  if (entries == entries_.end()) return nullptr;
  const auto found = entries->second.find(foldCase(name));
  return found == entries->second.end() ? nullptr : found->second;
}

std::optional<std::wstring> ReplayProbe::stringOf(const char* section, const std::wstring& name) const {
  const json* const found = find(section, name);
  return found == nullptr ? std::nullopt : std::optional(fromUtf8(found->get<std::string>()));
}

bool ReplayProbe::flag(const char* name) const {
  return record_.contains(name) && record_[name].get<bool>();
}

std::optional<std::wstring> ReplayProbe::local(const std::wstring& path) const {
  const std::wstring full = resolvePath(path, folder_);
  if (!equalIgnoringCase(full.substr(0, folder_.size()), folder_)) return std::nullopt;
  if (full.size() > folder_.size() && full[folder_.size()] != L'\\') return std::nullopt;
  std::wstring here = FolderProbe::kFolder + full.substr(folder_.size());
  return here_.exists(here) ? std::optional(here) : std::nullopt;
}

PathKind ReplayProbe::pathKind(const std::wstring& path) const {
  if (const auto here = local(path)) return here_.pathKind(*here);
  const auto kind = stringOf("paths", path);
  if (kind == L"file") return PathKind::kFile;
  return kind || folders_.contains(foldCase(path)) ? PathKind::kFolder : PathKind::kNone;
}

std::wstring ReplayProbe::resolveLink(const std::wstring& path) const {
  return stringOf("links", path).value_or(path);
}

std::vector<Subfolder> ReplayProbe::subfolders(const std::wstring& folder,
                                               const std::wstring& pattern) const {
  std::vector<Subfolder> result;
  const json* const patterns = find("subfolders", folder);
  if (patterns == nullptr || !patterns->contains(toUtf8(pattern))) return result;
  for (const std::wstring& name : textsFrom((*patterns)[toUtf8(pattern)]))
    result.push_back({name, find("links", joinPath(folder, name)) != nullptr});
  return result;
}

std::optional<std::vector<std::wstring>> ReplayProbe::fixedDrives() const {
  if (!record_.contains("fixedDrives")) return std::nullopt;
  return textsFrom(record_["fixedDrives"]);
}

std::optional<std::wstring> ReplayProbe::readText(const std::wstring& path) const {
  if (const auto here = local(path)) return here_.readText(*here);
  return stringOf("texts", path);
}

VersionResource ReplayProbe::versionResource(const std::wstring& path) const {
  if (const auto here = local(path)) return here_.versionResource(*here);
  VersionResource result;
  if (const json* const version = find("versions", path)) {
    result.fileVersion = versionFrom(*version, "file");
    result.productVersion = versionFrom(*version, "product");
    if (version->contains("company")) result.companyName = fromUtf8((*version)["company"].get<std::string>());
  }
  return result;
}

ImageBitness ReplayProbe::imageBitness(const std::wstring& path) const {
  if (const auto here = local(path)) return here_.imageBitness(*here);
  const json* const bits = find("bits", path);
  if (bits == nullptr) return ImageBitness::kUnknown;
  return *bits == 64 ? ImageBitness::k64 : ImageBitness::k32;
}

bool ReplayProbe::underWow64() const {
  return flag("wow64");
}

std::wstring ReplayProbe::wow64SystemFolder() const {
  return fromUtf8(record_.value("wow64SystemFolder", ""));
}

std::optional<std::vector<std::wstring>> ReplayProbe::subkeyNames(const std::wstring& key,
                                                                  RegistryView view) const {
  const json* const found = find(registrySection(view), key);
  if (found == nullptr || !found->contains("subkeys")) return std::nullopt;
  return textsFrom((*found)["subkeys"]);
}

std::optional<std::wstring> ReplayProbe::registryText(const std::wstring& key, RegistryView view,
                                                      const std::wstring& name) const {
  const json* const found = find(registrySection(view), key);
  const std::string value = toUtf8(name);
  if (found == nullptr || !found->contains("values") || !(*found)["values"].contains(value))
    return std::nullopt;
  return fromUtf8((*found)["values"][value].get<std::string>());
}

bool ReplayProbe::isAdministrator() const {
  return flag("administrator");
}

bool ReplayProbe::isElevated() const {
  return flag("elevated");
}

bool ReplayProbe::fitsAnsi(const std::wstring& text) const {
  if (const json* const answer = find("ansi", text)) return answer->get<bool>();
  // As on a Western Windows.
  return std::all_of(text.begin(), text.end(), [](wchar_t c) { return c < 256; });
}

std::optional<std::wstring> ReplayProbe::shortPath(const std::wstring& path) const {
  return stringOf("shortPaths", path);
}

bool ReplayProbe::refusesFolder(const std::wstring& folder) const {
  const json* const answer = find("unsafeFolders", folder);
  return answer != nullptr && answer->get<bool>();
}

ValidatorAnswer ReplayProbe::validate(const std::wstring& executable, const std::wstring& /*jar*/,
                                      const std::wstring& token) const {
  const json* const tokens = find("validator", executable);
  for (const auto& [value, name] : kAnswers) {
    if (tokens != nullptr && tokens->contains(toUtf8(token)) && (*tokens)[toUtf8(token)] == name)
      return value;
  }
  return ValidatorAnswer::kNotStarted;
}

namespace {

constexpr std::wstring_view kHiddenHome = L"C:\\Users\\user";
constexpr std::wstring_view kHiddenName = L"user";
constexpr std::wstring_view kBoundaries = L"\\/;:\"'=,%*<>|() \t\n";

struct User {
  std::wstring name;
  /// By its own name, and by the short one that temporary folders are often named with.
  std::vector<std::wstring> homes;
};

bool isBoundary(std::wstring_view text, size_t at) {
  return at >= text.size() || kBoundaries.find(text[at]) != std::wstring_view::npos;
}

bool standsAt(std::wstring_view text, size_t at, const std::wstring& word) {
  if (word.empty() || !isBoundary(text, at + word.size())) return false;
  return equalIgnoringCase(replaceAll(text.substr(at, word.size()), L"/", L"\\"), word);
}

std::wstring hidden(std::wstring_view text, const User& user) {
  std::wstring result;
  for (size_t at = 0; at < text.size();) {
    const bool begins = at == 0 || isBoundary(text, at - 1);
    const auto home = std::find_if(user.homes.begin(), user.homes.end(), [&](const std::wstring& each) {
      return begins && standsAt(text, at, each);
    });
    if (home != user.homes.end()) {
      result += text.substr(at, home->size()).find(L'/') == std::wstring_view::npos
                    ? std::wstring(kHiddenHome)
                    : replaceAll(kHiddenHome, L"\\", L"/");
      at += home->size();
    } else if (begins && standsAt(text, at, user.name)) {
      result += kHiddenName;
      at += user.name.size();
    } else {
      result.push_back(text[at++]);
    }
  }
  return result;
}

void hide(json& value, const User& user) {
  if (value.is_string()) value = toUtf8(hidden(fromUtf8(value.get<std::string>()), user));
  if (value.is_array()) {
    for (json& element : value) hide(element, user);
  }
  if (!value.is_object()) return;
  json renamed = json::object();
  for (auto& [name, member] : value.items()) {
    hide(member, user);
    renamed[toUtf8(hidden(fromUtf8(name), user))] = std::move(member);
  }
  value = std::move(renamed);
}

}  // namespace

void hideUser(MachineRecord& record, const EnvironmentMap& environment, std::wstring_view searched) {
  User user{variableIn(environment, L"USERNAME"),
            {withoutTrailingSeparators(variableIn(environment, L"USERPROFILE"))}};
  const std::wstring above = folderPart(user.homes.front()) + L"\\";
  for (const wchar_t* variable : {L"TMP", L"TEMP"}) {
    const std::wstring folder = variableIn(environment, variable);
    const std::wstring home = folder.substr(0, folder.find(L'\\', above.size()));
    if (home.find(L'~') != std::wstring::npos && equalIgnoringCase(home.substr(0, above.size()), above))
      user.homes.push_back(home);
  }
  for (size_t at = 0; at < searched.size(); ++at) {
    if ((at == 0 || isBoundary(searched, at - 1)) && standsAt(searched, at, user.name)) user.name.clear();
  }
  hide(record, user);
}

}  // namespace ryn
