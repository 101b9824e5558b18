#pragma once

#include "ryn/findings.h"

namespace ryn {

/// Every rule of "check" and "pack check"; docs/check.md has the same ones.
inline constexpr Rule kRules[] = {
    // The text of property files.
    {"unknown-key", Severity::kWarning, "A key that nothing reads"},
    {"repeated-key", Severity::kWarning, "A key that a later line sets again"},
    {"ignored-line", Severity::kWarning, "A line without \"=\", which is skipped"},
    {"empty-escape", Severity::kError, "\\u without digits, which ends the text"},
    {"short-escape", Severity::kError, "\\u with fewer than four digits"},
    {"java-escape", Severity::kWarning, "An escape that only Java's property files know"},
    {"last-backslash", Severity::kWarning, "A backslash at the end of a value, which becomes a blank"},
    {"not-latin1", Severity::kError, "Characters that are not stored as Latin-1"},
    {"no-line-end", Severity::kError, "A last line without a line end, whose value gets a stray character"},
    {"unknown-value", Severity::kError, "A value that its key does not know"},
    {"number", Severity::kError, "A number or size that is read as another one"},
    // What is started.
    {"no-launcher", Severity::kNote, "No launcher of the property file's name beside it"},
    {"missing-key", Severity::kError, "A key that every launch needs"},
    {"class-path", Severity::kError, "A class path entry that leads to nothing"},
    {"class-path-quote", Severity::kError, "A double quote in the class path"},
    {"class-path-variable", Severity::kNote, "The user's CLASSPATH is part of the class path"},
    {"outside-folder", Severity::kWarning, "A path that leads out of the application's folder"},
    {"code-page", Severity::kWarning, "A path beyond the code page of some machines"},
    {"bad-jar", Severity::kError, "A jar that cannot be read"},
    {"main-class", Severity::kError, "A main class that is not on the class path"},
    {"start-keys", Severity::kError, "ryn.start keys that ryn-start.jar refuses or never sees"},
    {"start-jar", Severity::kError, "A ryn.start.jar without what is started"},
    {"start-jar-apart", Severity::kNote, "A ryn.start.jar that is not on the class path"},
    {"manifest-options", Severity::kWarning, "Attributes of a manifest that only java -jar heeds"},
    {"user-dir", Severity::kError, "A working folder that does not exist"},
    {"no-user-dir", Severity::kNote,
     "No working folder: the one of whoever starts the program is on the class path"},
    {"user-options", Severity::kNote, "A file for the user's options that users may not be able to write"},
    // Options of the VM.
    {"heap", Severity::kError, "Heap sizes that no VM accepts"},
    {"heap-bits", Severity::kWarning, "A heap beyond what 32-bit VMs, which are not left out, can have"},
    {"open-quote", Severity::kError, "A double quote without its partner in the additional options"},
    {"stray-word", Severity::kError, "A word among the additional options that is none"},
    {"class-path-option", Severity::kWarning,
     "A class path among the additional options, which has no effect"},
    {"relative-option", Severity::kWarning,
     "A path in an option that counts from a folder that nothing sets"},
    {"option-file", Severity::kError, "A path in an option that leads to nothing"},
    {"refused-option", Severity::kWarning, "An option that a Java in range refuses to start with"},
    {"ui-scale", Severity::kNote, "Windows do not scale on screens of high density"},
    // Which VM.
    {"platform", Severity::kError, "A platform number with which no search finds a VM"},
    {"valid-vm", Severity::kError, "A token that accepts nothing"},
    {"validator-cost", Severity::kNote, "A version range that starts every VM because there is a validator"},
    {"class-too-new", Severity::kError, "Classes for a newer Java than the one in the folder"},
    {"list-too-old", Severity::kWarning, "A list that accepts an older Java than the classes need"},
    {"current-vm", Severity::kError, "A VM of the application's own that is not there"},
    {"runtime-image", Severity::kError, "A VM of the application's own that is no Windows program"},
    {"runtime-bits", Severity::kError, "A VM of the application's own that has the wrong bitness"},
    {"runtime-program", Severity::kError, "A VM of the application's own without javaw.exe or java.exe"},
    {"runtime-refused", Severity::kError, "A VM of the application's own that the list does not accept"},
    {"half-unpacked", Severity::kError, "A VM of the application's own that counts as half unpacked"},
    // Build options and descriptions.
    {"build-options", Severity::kError, "Build options that lead to no VM"},
    {"jvmspecs-place", Severity::kWarning, "A jvmspecs.properties that the launcher does not read"},
    {"no-shipped-vm", Severity::kError, "Build options for a VM of the application's own that is not there"},
    {"fetch-every-start", Severity::kWarning, "A VM pack that every start fetches again"},
    {"pack-url", Severity::kError, "An address of a VM pack that is refused"},
    {"pack-unsafe", Severity::kNote, "A VM pack that anybody on the way can change"},
    {"pack-digest", Severity::kError, "A digest that no VM pack can have"},
    {"no-digest", Severity::kWarning, "A VM pack without a digest"},
    {"pack-folders", Severity::kError, "No folder for a VM pack to be fetched into"},
    {"description", Severity::kError, "A description that is missing or says nothing"},
    {"description-unused", Severity::kWarning, "A description that is never looked at"},
    {"description-system", Severity::kWarning, "A description for another system"},
    {"open-block", Severity::kError, "A block of a description that is not ended where it was meant to"},
    {"hint", Severity::kWarning, "A registry hint that names no key"},
    // VM packs.
    {"pack-name", Severity::kError, "A VM pack whose name does not end in .vm"},
    {"pack-archive", Severity::kError, "A VM pack that cannot be opened or lacks vm.zip"},
    {"pack-extra", Severity::kWarning, "A file in a VM pack that stays behind"},
    {"pack-java", Severity::kError, "A VM pack without bin/java.exe and bin/javaw.exe"},
    {"entry-changed", Severity::kWarning, "An entry that is unpacked under another name"},
    {"entry-leaves", Severity::kError, "An entry that is unpacked outside the folder"},
    {"entry-name", Severity::kError, "An entry with a name that Windows cannot hold"},
    {"entry-stream", Severity::kError, "An entry that is written into a stream of another file"},
    {"entry-twice", Severity::kError, "Entries with one name, as Windows compares names"},
    {"entry-long", Severity::kWarning, "An entry with a path that is too long below an ordinary folder"},
    {"entry-attributes", Severity::kWarning, "An entry that becomes a read-only, hidden or system file"},
    {"entry-folder", Severity::kError,
     "An entry whose name and attributes disagree on whether it is a folder"},
    {"entry-damaged", Severity::kError, "An entry that cannot be unpacked whole"},
    {"entry-encrypted", Severity::kError, "An entry that is encrypted and stays an empty file"},
};

/// A rule by its identifier; one that is not in the table does not compile.
class RuleRef {
 public:
  // NOLINTNEXTLINE(google-explicit-constructor): findings read best with the identifier alone
  consteval RuleRef(const char* id) : rule_(nullptr) {
    for (const Rule& rule : kRules) {
      if (rule.id == id) rule_ = &rule;
    }
    if (rule_ == nullptr) throw "no such rule";
  }

  constexpr const Rule* get() const { return rule_; }

 private:
  const Rule* rule_;
};

}  // namespace ryn
