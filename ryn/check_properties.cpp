#include <algorithm>
#include <numeric>

#include "properties/keys.h"
#include "ryn/application_check.h"
#include "text/text.h"
#include "vmlaunch/launch_request.h"

namespace ryn {
namespace {

enum class ValueKind {
  kText,
  kSize,
  kNumber,
  kBoolean,
  kFlag,
  kWords,    ///< one of `words`, in their letter case
  kCaseful,  ///< any text, but a word in another letter case is a mistake
};

struct KnownKey {
  std::wstring_view name;
  ValueKind kind = ValueKind::kText;
  /// With blanks between them.
  std::wstring_view words = {};
};

// Those of docs/properties.md and docs/java-side.md; a test compares them with the launcher's sources.
constexpr KnownKey kRynKeys[] = {
    {L"ryn.application.name"},
    {L"ryn.class.path"},
    {L"ryn.installer.windows.ui.default", ValueKind::kCaseful, L"SILENT"},
    {L"ryn.launch.arguments", ValueKind::kWords, L"exact"},
    {L"ryn.nl.current.vm"},
    {L"ryn.nl.designer.jvm.securefolder.check", ValueKind::kWords, L"true false no off"},
    {L"ryn.nl.java.launcher.main.class"},
    {L"ryn.nl.java.option.additional"},
    {L"ryn.nl.java.option.compiler", ValueKind::kFlag},
    {L"ryn.nl.java.option.debugging", ValueKind::kFlag},
    {L"ryn.nl.java.option.garbage.collection.background.thread", ValueKind::kFlag},
    {L"ryn.nl.java.option.garbage.collection.extent"},
    {L"ryn.nl.java.option.java.heap.size.initial", ValueKind::kSize},
    {L"ryn.nl.java.option.java.heap.size.max", ValueKind::kSize},
    {L"ryn.nl.java.option.verbose"},
    {L"ryn.nl.java.option.verify.mode", ValueKind::kFlag},
    {L"ryn.nl.jvm.high", ValueKind::kWords, L"0 1 true yes on"},
    {L"ryn.nl.valid.vm.list"},
    {L"ryn.nl.win32.java.launcher.platform", ValueKind::kNumber},
    {L"ryn.nl.win32.microsoftvm.min.version", ValueKind::kNumber},
    {L"ryn.service.stop.seconds", ValueKind::kNumber},
    {L"ryn.start.class"},
    {L"ryn.start.jar"},
    {L"ryn.start.log.keep", ValueKind::kNumber},
    {L"ryn.start.log.size", ValueKind::kSize},
    {L"ryn.start.module"},
    {L"ryn.start.single.instance", ValueKind::kBoolean},
    {L"ryn.stderr.redirect"},
    {L"ryn.stdout.redirect"},
    {L"ryn.user.dir"},
    {L"ryn.user.options"},
    {L"ryn.win32.console.pause", ValueKind::kBoolean},
    {L"ryn.win32.job", ValueKind::kBoolean},
    {L"ryn.win32.short.paths", ValueKind::kBoolean},
    {L"ryn.win32.vm.bits", ValueKind::kWords, L"64 32"},
};

// Those of docs/build-options.md.
constexpr KnownKey kBuildKeys[] = {
    {L"build.jvmspec.applicable", ValueKind::kWords, L"true false no off"},
    {L"build.jvmspec.total.num", ValueKind::kNumber},
    {L"build.option"},
    {L"build.with.vm"},
    {L"build.with.vm.search.option", ValueKind::kNumber},
    {L"build.without.vm"},
    {L"build.without.vm.direct.download.url"},
    {L"build.without.vm.dont.search.download.url.md5Checksum.applicable", ValueKind::kWords,
     L"true false no off"},
    {L"build.without.vm.dont.search.download.url.md5Checksum.value"},
    {L"build.without.vm.not.found.download.url"},
    {L"build.without.vm.not.found.download.url.md5Checksum.applicable", ValueKind::kWords,
     L"true false no off"},
    {L"build.without.vm.not.found.download.url.md5Checksum.value"},
    {L"build.without.vm.search.option", ValueKind::kNumber},
};
constexpr std::wstring_view kDescriptionPrefix = L"build.jvmspec.";

constexpr wchar_t kVerbose[] = L"ryn.nl.java.option.verbose";
constexpr wchar_t kGcExtent[] = L"ryn.nl.java.option.garbage.collection.extent";

bool isDigits(std::wstring_view text) {
  return !text.empty() && text.find_first_not_of(L"0123456789") == std::wstring_view::npos;
}

bool isUnit(wchar_t c) {
  return c == L'k' || c == L'K' || c == L'm' || c == L'M';
}

size_t distance(std::wstring_view a, std::wstring_view b) {
  std::vector<size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), size_t{0});
  for (size_t i = 0; i < a.size(); ++i) {
    size_t diagonal = row[0]++;
    for (size_t j = 0; j < b.size(); ++j) {
      const size_t replaced = diagonal + (a[i] == b[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({replaced, row[j] + 1, diagonal + 1});
    }
  }
  return row.back();
}

class PropertiesChecker {
 public:
  PropertiesChecker(ApplicationCheck& check, const PropertyLines& file, bool isRyn)
      : check_(check), file_(file), isRyn_(isRyn) {
    if (isRyn)
      keys_.assign(std::begin(kRynKeys), std::end(kRynKeys));
    else
      keys_.assign(std::begin(kBuildKeys), std::end(kBuildKeys));
  }

  void run() {
    if (isOtherEncoding()) return;
    for (const PropertyLines::Line& line : file_.lines()) {
      line_ = &line;
      if (line.text.starts_with(L'#')) continue;
      if (line.isEntry)
        checkEntry();
      else
        checkSkipped();
    }
  }

 private:
  void add(RuleRef rule, std::initializer_list<std::wstring_view> text) {
    check_.add(rule, file_.file(), line_->number, concat(text));
  }

  // Of such a file nothing is read that anybody wrote.
  bool isOtherEncoding() {
    if (file_.lines().empty()) return false;
    line_ = &file_.lines().front();
    const std::wstring& text = line_->text;
    if (text.starts_with(L"\u00FF\u00FE") || text.starts_with(L"\u00FE\u00FF")) {
      add("not-latin1", {L"the file is UTF-16, in which the launcher reads nothing; save it as ASCII"});
      return true;
    }
    if (text.starts_with(L"\u00EF\u00BB\u00BF") && line_->isEntry) {
      add("not-latin1",
          {L"the byte-order mark becomes part of the key in this line; save the file without one"});
    }
    return false;
  }

  void checkSkipped() {
    const std::wstring_view text = trim(line_->text);
    if (text.empty() || text[0] == L'#' || text[0] == L'!') return;
    add("ignored-line", {L"the line has no \"=\" and is skipped",
                         text.find(L':') == text.npos ? L"" : L"; \":\" separates nothing"});
  }

  void checkEntry() {
    checkCharacters();
    const size_t separator = line_->text.find(L'=');
    checkEscapes(std::wstring_view(line_->text).substr(0, separator));
    const std::wstring_view value = trim(std::wstring_view(line_->text).substr(separator + 1));
    checkEscapes(value);
    if (value.ends_with(L'\\')) {
      add("last-backslash", {L"the backslash at the end becomes a blank; no line goes on in the next one, "
                             L"and a folder needs none"});
    }
    if (&file_.lines().back() == line_ && !file_.endsInLine() && !line_->key.starts_with(L"ryn.start.")) {
      add("no-line-end",
          {L"the file ends without a line end, which puts the character U+FFFF behind this value"});
    }
    if (file_.lineOf(line_->key) != line_->number) {
      add("repeated-key", {L"line ", decimal(static_cast<long long>(file_.lineOf(line_->key))), L" sets \"",
                           line_->key, L"\" again, and the last one counts"});
    }
    checkKey();
  }

  void checkCharacters() {
    const std::wstring& text = line_->text;
    if (std::all_of(text.begin(), text.end(), [](wchar_t c) { return c < 0x80; })) return;
    std::string bytes;
    for (const wchar_t c : text) bytes.push_back(static_cast<char>(c));
    if (bytes.starts_with("\xEF\xBB\xBF")) bytes.erase(0, 3);
    const std::wstring decoded = fromUtf8(bytes);
    const auto other = std::find_if(decoded.begin(), decoded.end(), [](wchar_t c) { return c >= 0x80; });
    if (other == decoded.end()) return;
    if (toUtf8(decoded) == bytes) {
      add("not-latin1",
          {L"\"", std::wstring_view(&*other, isHighSurrogate(*other) ? 2 : 1),
           L"\" is UTF-8 and arrives as other characters; write ", escaped(*other), L" for it"});
    } else if (std::any_of(text.begin(), text.end(), [](wchar_t c) { return c >= 0x80 && c < 0xA0; })) {
      add("not-latin1", {L"a character of Windows' own code page is none of Latin-1; write it as \\uXXXX"});
    }
  }

  static bool isHighSurrogate(wchar_t c) { return c >= 0xD800 && c < 0xDC00; }

  static std::wstring escaped(wchar_t c) {
    if (isHighSurrogate(c)) return L"two \\uXXXX";
    const uint8_t bytes[] = {static_cast<uint8_t>(c >> 8), static_cast<uint8_t>(c)};
    return L"\\u" + hexadecimal(bytes);
  }

  void checkEscapes(std::wstring_view text) {
    for (size_t i = 0; i + 1 < text.size(); ++i) {
      if (text[i] != L'\\') continue;
      const wchar_t next = text[++i];
      if (next == L'u') {
        const size_t end = std::min(text.find_first_not_of(L"0123456789abcdefABCDEF", i + 1), text.size());
        const size_t digits = end - i - 1;
        const std::wstring_view around = text.substr(i - 1, text.find_first_of(L";, \"", i) - (i - 1));
        if (digits == 0) {
          add("empty-escape", {L"\"", around,
                               L"\": \\u without digits ends the text here; write \"/\" or "
                               L"\\u005c for the backslash"});
        } else if (digits < 4) {
          add("short-escape", {L"\"", around, L"\": \\u and ", decimal(static_cast<long long>(digits)),
                               L" digits are one character; write \"/\" or \\u005c for the backslash"});
        }
      } else if (next == L':' || next == L'=' || (next == L'\\' && i >= 2 && text[i - 2] == L':')) {
        add("java-escape", {L"\"\\", std::wstring_view(&next, 1),
                            L"\" stays two characters: the launcher knows no escape but \\u"});
      }
    }
  }

  // Of jvmspecs.properties all, of a .ryn file those that are ours: its application may read others in it.
  void checkKey() {
    const auto known = std::find_if(keys_.begin(), keys_.end(),
                                    [this](const KnownKey& key) { return key.name == line_->key; });
    if (known != keys_.end()) return checkValue(*known);
    const bool isDescription =
        line_->key.starts_with(kDescriptionPrefix) && isDigits(line_->key.substr(kDescriptionPrefix.size()));
    if (!isRyn_ && isDescription) return;
    const KnownKey* nearest = nullptr;
    size_t least = std::max<size_t>(line_->key.size() / 4, 3);
    for (const KnownKey& key : keys_) {
      const size_t steps = distance(lowerCase(line_->key), lowerCase(key.name));
      if (steps < least) {
        nearest = &key;
        least = steps;
      }
    }
    const bool isOurs = !isRyn_ || line_->key.starts_with(L"ryn.");
    if (!isOurs && (nearest == nullptr || least > 2)) return;
    if (nearest != nullptr)
      add("unknown-key", {L"nothing reads \"", line_->key, L"\"; is it \"", nearest->name, L"\"?"});
    else
      add("unknown-key", {L"nothing reads \"", line_->key, L"\""});
  }

  void checkValue(const KnownKey& key) {
    const std::wstring& value = line_->value;
    if (value.empty()) return;
    if (key.name == kGcExtent && isOff(value)) {
      add("unknown-value", {L"any text, \"", value, L"\" too, switches -Xnoclassgc on; leave the line out"});
    }
    if (key.name == kVerbose && !contains(L"normal all gc class none", lowerCase(value))) {
      add("unknown-value", {L"\"", value, L"\" is none of normal, all, gc, class and none, and is ignored"});
    }
    switch (key.kind) {
      case ValueKind::kText:
        return;
      case ValueKind::kSize:
        if (!isDigits(value) && !(isDigits(value.substr(0, value.size() - 1)) && isUnit(value.back()))) {
          add("number", {L"\"", value, L"\" is read as ", decimal(static_cast<long long>(parseSize(value))),
                         L": a size is digits, with k or m behind them"});
        }
        return;
      case ValueKind::kNumber:
        if (!isDigits(value)) {
          add("number", {L"\"", value, L"\" is read as ", decimal(parseInteger(value)),
                         L": only digits make a number"});
        }
        return;
      case ValueKind::kBoolean:
        if (!parseBoolean(value) && !isOff(value))
          add("unknown-value", {L"\"", value, L"\" means off here: write true, yes or on"});
        return;
      case ValueKind::kFlag:
        if (!parseFlag(value) && !isOff(value))
          add("unknown-value", {L"\"", value, L"\" means off here: write true, on or t"});
        return;
      case ValueKind::kWords:
      case ValueKind::kCaseful:
        break;
    }
    if (contains(key.words, value)) return;
    const bool isOtherCase = contains(lowerCase(key.words), lowerCase(value));
    if (key.kind == ValueKind::kWords || isOtherCase) {
      add("unknown-value",
          {L"\"", value, L"\" is none of the words that count here, in their letter case: ", key.words});
    }
  }

  static bool isOff(const std::wstring& value) { return contains(L"false no off f 0", lowerCase(value)); }

  static bool contains(std::wstring_view words, const std::wstring& word) {
    const std::vector<std::wstring> all = split(words, L' ');
    return std::find(all.begin(), all.end(), word) != all.end();
  }

  ApplicationCheck& check_;
  const PropertyLines& file_;
  const bool isRyn_;
  std::vector<KnownKey> keys_;
  const PropertyLines::Line* line_ = nullptr;
};

}  // namespace

void checkProperties(ApplicationCheck& check, const PropertyLines& file, bool isRyn) {
  PropertiesChecker(check, file, isRyn).run();
}

}  // namespace ryn
