#include <gtest/gtest.h>

#include <map>

#include "properties/property_file.h"
#include "tests/unit/support/temp_folder.h"

namespace ryn {
namespace {

using test::TempFolder;
using Entries = std::map<std::wstring, std::wstring>;

const std::wstring kAbsent = L"(absent)";

TEST(PropertyFileTest, LoadsBytesAsCharacters) {
  const TempFolder temp(TempFolder::Name::kNonAscii);
  const std::pair<std::string, Entries> rows[] = {
      {"# h=1\r\n\r\na = 1\r\nb=x\ry\r\r\n", {{L"# h", kAbsent}, {L"a", L"1"}, {L"b", L"x\ry"}}},
      {"b=\xc3\xa9\xff\x80\r\nd=\xff", {{L"b", L"\u00c3\u00a9\u00ff\u0080"}, {L"d", L"\u00ff\uffff"}}},
      // Ctrl-Z ends a text stream.
      {"a=1\x1a\nb=2\n", {{L"a", L"1\uffff"}, {L"b", kAbsent}}},
      {"\xef\xbb\xbf#a=1\n", {{L"\u00ef\u00bb\u00bf#a", L"1"}}},
      {"a=" + std::string(100000, 'x') + "\r\nb=2\r\n", {{L"a", std::wstring(100000, L'x')}, {L"b", L"2"}}}};
  for (const auto& [bytes, entries] : rows) {
    PropertyFile file;
    file.load(temp.write(L"caf\u00e9.ryn", bytes));
    for (const auto& [key, value] : entries) EXPECT_EQ(file.get(key, kAbsent), value) << key;
  }
  PropertyFile file;
  for (const char* bytes : {"a=1\nb=1\n", "b=2\nc=2\n", ""}) file.load(temp.write(L"again.ryn", bytes));
  EXPECT_EQ(file.get(L"a", L"") + file.get(L"b", L"") + file.get(L"c", L""), L"122");
}

}  // namespace
}  // namespace ryn
