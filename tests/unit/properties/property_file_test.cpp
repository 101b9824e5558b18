#include "properties/property_file.h"

#include <gtest/gtest.h>

#include <map>

#include "platform/errors.h"
#include "platform/text.h"
#include "properties/keys.h"
#include "tests/unit/support/temp_folder.h"

namespace ryn {
namespace {

using test::TempFolder;
using Entries = std::map<std::wstring, std::wstring>;

const std::wstring kAbsent = L"(absent)";

void expectEntries(const PropertyFile& file, const Entries& entries, const std::string& what) {
  for (const auto& [key, value] : entries) EXPECT_EQ(file.get(key, kAbsent), value) << key << " in " << what;
}

TEST(PropertyFileTest, Parses) {
  const std::pair<std::wstring, Entries> rows[] = {
      {L"\x01\ta\x1f=\x02 b c \x03\n", {{L"a", L"b c"}}},
      {L"#x=1\n  #y=2\n!z=3\n", {{L"#x", kAbsent}, {L"#y", L"2"}, {L"!z", L"3"}}},
      {L"k:v\nk\n \t\n\n", {{L"k", kAbsent}, {L"k:v", kAbsent}, {L"", kAbsent}}},
      {L"k=v=w\n=v\nn=\n", {{L"k", L"v=w"}, {L"", L"v"}, {L"n", L""}}},
      {L"K=1\nk=2\nk=3\n", {{L"K", L"1"}, {L"k", L"3"}}},
      // A backslash at the end is no continuation.
      {L"path=C:\\dir\\\nnext=1\n", {{L"path", L"C:\\dir "}, {L"next", L"1"}}},
      {L"path=C:\\dir\\\\\nk\\=\\\n", {{L"path", L"C:\\dir\\ "}, {L"k\\", L" "}}},
      // Only "\u" escapes, after trimming and after the look at the end.
      {L"k=\\u0041\\u00e9x\n", {{L"k", L"A\u00e9x"}}},
      {L"k=\\u00411\\u41g\\uFfFe\n", {{L"k", L"A1Ag\ufffe"}}},
      {L"k=a\\uz\n", {{L"k", std::wstring(L"a\0z", 3)}}},
      {L"k=a\\tb\\n\\\\c\\=\\:\\U0041\\\\u0041\n", {{L"k", L"a\\tb\\n\\\\c\\=\\:\\U0041\\\\u0041"}}},
      {L"\\u006b\\u003d=\\u0020v\\u005c\n", {{L"k=", L" v\\"}}},
      // The end of the file is a character of a last line that does not end in a line feed.
      {L"a=1\nb=2", {{L"a", L"1"}, {L"b", L"2\uffff"}}},
      {L"b=2\\", {{L"b", L"2\\\uffff"}}},
  };
  for (const auto& [text, entries] : rows) {
    PropertyFile file;
    file.parse(text);
    expectEntries(file, entries, toUtf8(text));
  }
}

TEST(PropertyFileTest, LoadsBytesAsCharacters) {
  const TempFolder temp(TempFolder::Name::kNonAscii);
  const std::pair<std::string, Entries> rows[] = {
      {"# h=1\r\n\r\na = 1\r\nb=x\ry\r\r\n", {{L"# h", kAbsent}, {L"a", L"1"}, {L"b", L"x\ry"}}},
      {"b=\xc3\xa9\xff\x80\r\nd=\xff", {{L"b", L"\u00c3\u00a9\u00ff\u0080"}, {L"d", L"\u00ff\uffff"}}},
      // Ctrl-Z ends a text stream.
      {"a=1\x1a\nb=2\n", {{L"a", L"1\uffff"}, {L"b", kAbsent}}},
      {"a=" + std::string(100000, 'x') + "\r\nb=2\r\n", {{L"a", std::wstring(100000, L'x')}, {L"b", L"2"}}}};
  for (const auto& [bytes, entries] : rows) {
    PropertyFile file;
    file.load(temp.write(L"caf\u00e9.ryn", bytes));
    expectEntries(file, entries, bytes.substr(0, 20));
  }
}

TEST(PropertyFileTest, LoadsOverWhatIsThere) {
  const TempFolder temp;
  PropertyFile file;
  file.load(temp.write(L"1.ryn", "a=1\nb=1\n"));
  file.load(temp.write(L"2.ryn", "b=2\nc=2\n"));
  EXPECT_THROW(file.load(temp.at(L"absent.ryn")), FileException);
  expectEntries(file, {{L"a", L"1"}, {L"b", L"2"}, {L"c", L"2"}, {L"B", kAbsent}}, "the three files");
}

TEST(EscapePropertyTest, WritesWhatJavaReads) {
  EXPECT_EQ(escapeProperty(L"C:\\a b\\n=:#!\t\n"), L"C:\\\\a b\\\\n=:#!\t\n");
  EXPECT_EQ(escapeProperty(L"\x7f\x80\uffff\U0001f600"), L"\x7f\\u0080\\uffff\\ud83d\\ude00");
}

TEST(ParseSizeTest, TakesASuffixAndLeavesTheRest) {
  const std::pair<const wchar_t*, uint64_t> rows[] = {
      {L"8192M", 8192ULL << 20}, {L"512k", 524288}, {L"1g", 1}, {L"2 k", 2048}, {L"k", 0}, {L"", 0},
      {L"12mk", 12288}};
  for (const auto& [text, size] : rows) EXPECT_EQ(parseSize(text), size) << std::wstring(text);
}

}  // namespace
}  // namespace ryn
