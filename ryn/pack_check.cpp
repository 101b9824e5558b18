#include "ryn/pack_check.h"

#include <unzip.h>
#include <zlib.h>

#include <algorithm>
#include <functional>
#include <map>
#include <memory>

#include "image/image_bitness.h"
#include "packs/pack_writer.h"
#include "provision/pack_entry.h"
#include "provision/pack_reader.h"
#include "provision/url_scheme.h"
#include "ryn/check_rules.h"
#include "ryn/zip_file.h"
#include "text/fold_case.h"
#include "text/path_text.h"
#include "text/text.h"

namespace ryn {
namespace {

/// A folder that no entry can name, and one as an ordinary installation has it, both with what packs add.
constexpr wchar_t kTarget[] = L"?:\\application\\Windows\\resource\\jre";
constexpr std::wstring_view kOrdinaryTarget =
    L"C:\\Program Files\\Name of the Vendor\\Name of the Application\\Windows\\resource\\jre\\";
/// MAX_PATH without its terminator.
constexpr size_t kLongestPath = 259;
constexpr uint32_t kOddAttributes = kReadOnlyAttribute | kHiddenAttribute | kSystemAttribute;

std::wstring withSlashes(std::wstring_view text) {
  return replaceAll(text, L"\\", L"/");
}

/// One archive, entry by entry.
class ArchiveCheck {
 public:
  /// Gets the unpacked name, folded and with "/", and the content of each file.
  using Visit = std::function<void(const std::wstring& name, const Bytes& content)>;

  ArchiveCheck(std::string file, PackCheck& result) : file_(std::move(file)), result_(result) {}

  void add(RuleRef rule, size_t line, std::initializer_list<std::wstring_view> text) {
    result_.findings.push_back(
        {.rule = rule.get(), .file = file_, .line = line, .text = toUtf8(concat(text))});
  }

  /// False for what is no archive.
  bool run(Bytes bytes, const Visit& visit) {
    visit_ = visit;
    archive_ = ZipFile::open(std::move(bytes));
    if (!archive_) return false;
    MemoryFile memory{.bytes = archive_->bytes()};
    zlib_filefunc64_def functions = memoryFunctions();
    // Times do not matter here.
    PackReader reader([](uint32_t) { return uint64_t{0}; });
    if (!reader.open(functions, &memory)) return false;
    PackEntry entry;
    reader.getEntry(-1, entry);
    const auto claimed = static_cast<size_t>(entry.index);
    for (size_t index = 0; index < archive_->entries().size(); ++index) checkEntry(reader, index);
    if (claimed > archive_->entries().size()) {
      add("entry-damaged", archive_->entries().size() + 1,
          {L"the archive claims ", decimal(static_cast<long long>(claimed)),
           L" entries, and nothing can be reached from here on"});
    }
    if (oddEntries_ > 0) {
      add("entry-attributes", firstOdd_ + 1,
          {L"\"", shown(firstOdd_), L"\"", oddEntries_ > 1 ? L" and " : L"",
           oddEntries_ > 1 ? decimal(static_cast<long long>(oddEntries_ - 1)) + L" more" : L"",
           oddEntries_ > 1 ? L" become" : L" becomes",
           L" read-only, hidden or a system file, which uninstallers leave behind"});
    }
    return true;
  }

  /// Where all entries lie below one folder, that folder with "/"; else empty.
  std::wstring commonFolder() const {
    std::wstring folder;
    for (const auto& [name, what] : seen_) {
      const std::wstring first = name.substr(0, name.find(L'/'));
      if (!folder.empty() && first != folder) return {};
      folder = first;
    }
    return folder.empty() ? folder : folder + L"/";
  }

  bool hasFile(const std::wstring& folded) const {
    const auto found = seen_.find(folded);
    return found != seen_.end() && !found->second.isFolder;
  }
  bool has(const std::wstring& folded) const { return seen_.contains(folded); }

 private:
  struct Seen {
    std::wstring name;
    bool isFolder = false;
  };

  std::wstring shown(size_t index) const { return fromUtf8(archive_->entries()[index].name); }

  void checkEntry(PackReader& reader, size_t index) {
    const size_t line = index + 1;
    const std::wstring stored = shown(index);
    PackEntry entry;
    if (reader.getEntry(static_cast<int32_t>(index), entry) != PackResult::kOk) {
      add("entry-damaged", line,
          {L"\"", stored,
           L"\" is passed over: its header is damaged or its method is neither stored nor deflated"});
      return;
    }
    const bool isFolder = (entry.attributes & kFolderAttribute) != 0;
    if (withSlashes(stored) != withSlashes(entry.name) || toUtf8(stored) != archive_->entries()[index].name) {
      add("entry-changed", line, {L"\"", stored, L"\" is unpacked as \"", entry.name, L"\""});
    }
    const std::wstring folded = checkName(line, entry, isFolder);
    if (!isFolder && (entry.attributes & kOddAttributes) != 0) {
      if (oddEntries_++ == 0) firstOdd_ = index;
    }
    const Bytes content = checkData(reader, index);
    const bool looksLikeFolder = entry.name.ends_with(L'/') || entry.name.ends_with(L'\\');
    if (isFolder != looksLikeFolder && !content.empty()) {
      add("entry-folder", line,
          {L"\"", entry.name, L"\" is a folder by its ", isFolder ? L"attributes" : L"name",
           L" alone, and its content is lost"});
    }
    result_.entries.push_back({.entry = toUtf8(stored),
                               .name = toUtf8(withSlashes(entry.name)),
                               .isFolder = isFolder,
                               .size = content.size(),
                               .attributes = entry.attributes});
    if (!isFolder && !folded.empty()) visit_(folded, content);
  }

  // The name as Windows compares it, below the target; empty for one elsewhere.
  std::wstring checkName(size_t line, const PackEntry& entry, bool isFolder) {
    const std::wstring path = resolvePath(entry.name, kTarget);
    const std::wstring base = std::wstring(kTarget) + L"\\";
    if (!equalIgnoringCase(path.substr(0, base.size()), base)) {
      if (!equalIgnoringCase(path + L"\\", base))
        add("entry-leaves", line, {L"\"", entry.name, L"\" is unpacked outside the folder of the runtime"});
      return {};
    }
    if (entry.name.find(L':') != entry.name.npos) {
      add("entry-stream", line, {L"\"", entry.name, L"\" is written into a stream of another file"});
      return {};
    }
    if (const std::string fault = packNameFault(toUtf8(withSlashes(entry.name))); !fault.empty()) {
      add("entry-name", line, {L"\"", entry.name, L"\" ", fromUtf8(fault)});
    }
    const std::wstring name = withoutTrailingSeparators(path).substr(base.size());
    if (kOrdinaryTarget.size() + name.size() > kLongestPath) {
      add("entry-long", line,
          {L"\"", entry.name, L"\" makes a path of more than 259 characters below ", kOrdinaryTarget});
    }
    const std::wstring plain = withSlashes(name);
    for (size_t at = plain.find(L'/'); at != plain.npos; at = plain.find(L'/', at + 1))
      place(line, plain.substr(0, at), true);
    place(line, plain, isFolder || entry.name.ends_with(L'/') || entry.name.ends_with(L'\\'));
    return foldCase(plain);
  }

  void place(size_t line, const std::wstring& name, bool isFolder) {
    const auto [other, isNew] = seen_.try_emplace(foldCase(name), Seen{name, isFolder});
    if (isNew || (isFolder && other->second.isFolder)) return;
    add("entry-twice", line,
        {L"\"", name, L"\" is also there as \"", other->second.name,
         other->second.isFolder ? L"/\"" : L"\""});
  }

  Bytes checkData(PackReader& reader, size_t index) {
    const size_t line = index + 1;
    Bytes content;
    switch (reader.openData()) {
      case PackResult::kOk:
        break;
      case PackResult::kEncrypted:
        add("entry-encrypted", line, {L"\"", shown(index), L"\" is encrypted and becomes an empty file"});
        return content;
      default:
        add("entry-damaged", line, {L"\"", shown(index), L"\" cannot be read"});
        return content;
    }
    std::string_view piece;
    PackResult result = PackResult::kOk;
    do {
      result = reader.readData(piece);
      append(content, {reinterpret_cast<const uint8_t*>(piece.data()), piece.size()});
    } while (result == PackResult::kOk && !piece.empty());
    reader.closeData();
    const auto crc = static_cast<uint32_t>(crc32_z(crc32_z(0, nullptr, 0), content.data(), content.size()));
    if (result != PackResult::kOk) {
      add("entry-damaged", line, {L"the data of \"", shown(index), L"\" end early or cannot be inflated"});
    } else if (crc != archive_->entries()[index].crc) {
      add("entry-damaged", line,
          {L"\"", shown(index), L"\" does not have its checksum, which nobody notices"});
    }
    return content;
  }

  std::string file_;
  PackCheck& result_;
  Visit visit_;
  std::unique_ptr<ZipFile> archive_;
  std::map<std::wstring, Seen> seen_;
  size_t oddEntries_ = 0;
  size_t firstOdd_ = 0;
};

void checkRuntime(ArchiveCheck& inner, const std::map<std::wstring, ImageBitness>& programs) {
  // The launcher looks for the folder and not for the program in it.
  const std::wstring bin = inner.has(foldCase(L"bin")) ? L"bin/" : L"jre/bin/";
  for (const wchar_t* program : {L"java.exe", L"javaw.exe"}) {
    const std::wstring name = bin + program;
    const auto found = programs.find(foldCase(name));
    if (found == programs.end()) {
      const std::wstring folder = inner.commonFolder();
      const bool isBelow = !folder.empty() && inner.has(foldCase(folder + L"bin/java.exe"));
      inner.add("pack-java", 1,
                {L"there is no ", name, isBelow ? L": everything lies below one folder" : L""});
    } else if (found->second == ImageBitness::kUnknown) {
      inner.add("runtime-image", 1, {name, L" is no program for x86 or x86-64 Windows"});
    }
  }
}

}  // namespace

PackCheck checkPack(const std::string& file, Bytes pack) {
  PackCheck result;
  ArchiveCheck outer(file, result);
  if (!namesPack(fromUtf8(file)))
    outer.add("pack-name", 1,
              {L"the launcher fetches nothing whose address does not end in .vm, in small letters"});
  Bytes runtime;
  bool hasRuntime = false;
  const bool isArchive = outer.run(std::move(pack), [&](const std::wstring& name, const Bytes& content) {
    if (name == foldCase(L"vm.zip")) {
      runtime = content;
      hasRuntime = true;
    } else if (name != foldCase(L"vm.properties")) {
      outer.add("pack-extra", 1, {L"\"", name, L"\" stays behind in the folder downloadIntermediary"});
    }
  });
  if (!isArchive || !hasRuntime) {
    // What follows from a wrong archive is of no use.
    result.findings.erase(
        std::remove_if(result.findings.begin(), result.findings.end(),
                       [](const Finding& finding) { return finding.rule->id != "pack-name"; }),
        result.findings.end());
    outer.add(
        "pack-archive", 1,
        {!isArchive ? L"is no zip archive"
                    : L"there is no vm.zip in it: the runtime goes into an archive of its own, or the pack "
                      L"has lost its end"});
    result.entries.clear();
    return result;
  }
  result.entries.clear();
  ArchiveCheck inner(file + "/vm.zip", result);
  std::map<std::wstring, ImageBitness> programs;
  const bool isInner =
      inner.run(std::move(runtime), [&programs](const std::wstring& name, const Bytes& content) {
        if (name.ends_with(foldCase(L".exe"))) programs[name] = bitnessOfImage(content);
      });
  if (!isInner)
    inner.add("pack-archive", 1, {L"is no zip archive"});
  else
    checkRuntime(inner, programs);
  sortFindings(result.findings);
  return result;
}

}  // namespace ryn
