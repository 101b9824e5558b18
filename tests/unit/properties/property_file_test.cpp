#include "properties/property_file.h"

#include <gtest/gtest.h>

#include <map>

#include "properties/environment_lines.h"
#include "properties/keys.h"
#include "text/text.h"

namespace ryn {
namespace {

using Entries = std::map<std::wstring, std::wstring>;

const std::wstring kAbsent = L"(absent)";

TEST(PropertyFileTest, Parses) {
  const std::pair<std::wstring, Entries> rows[] = {
      {L"a = b \n", {{L"a", L"b"}}},
      {L"\x01\ta\x1f=\x02 b c \x03\n", {{L"a", L"b c"}}},
      {L"#x=1\n  #y=2\n!z=3\n", {{L"#x", kAbsent}, {L"#y", L"2"}, {L"!z", L"3"}}},
      {L"k:v\nk\n \t\n\n", {{L"k", kAbsent}, {L"k:v", kAbsent}, {L"", kAbsent}}},
      {L"k=v=w\n=v\nn=\n", {{L"k", L"v=w"}, {L"", L"v"}, {L"n", L""}}},
      {L"K=1\nk=2\nk=3\n", {{L"K", L"1"}, {L"k", L"3"}}},
      // A backslash at the end is no continuation.
      {L"path=C:\\dir\\\nnext=1\n", {{L"path", L"C:\\dir "}, {L"next", L"1"}}},
      {L"path=C:\\dir\\  \nmore\n", {{L"path", L"C:\\dir "}}},
      {L"path=C:\\dir\\\\\nk\\=\\\n", {{L"path", L"C:\\dir\\ "}, {L"k\\", L" "}}},
      // Only "\u" escapes, after trimming and after the look at the end.
      {L"k=\\u0041\\u00aAx\\u09fF\n", {{L"k", L"A\u00aax\u09ff"}}},
      {L"k=\\u00411\\u41g\\uFfFe\n", {{L"k", L"A1Ag\ufffe"}}},
      {L"k=a\\uz\n", {{L"k", std::wstring(L"a\0z", 3)}}},
      {L"k=a\\tb\\n\\\\c\\=\\:\\U0041\\\\u0041\n", {{L"k", L"a\\tb\\n\\\\c\\=\\:\\U0041\\\\u0041"}}},
      {L"\\u006b\\u003d=\\u0020v\\u005c\n", {{L"k=", L" v\\"}}},
      // The end of the file is a character of a last line that does not end in a line feed.
      {L"a=1\nb=2", {{L"a", L"1"}, {L"b", L"2\uffff"}}},
      {L"b=2 ", {{L"b", L"2 \uffff"}}},
      {L"b=2\\", {{L"b", L"2\\\uffff"}}},
  };
  for (const auto& [text, entries] : rows) {
    PropertyFile file;
    file.parse(text);
    for (const auto& [key, value] : entries)
      EXPECT_EQ(file.get(key, kAbsent), value) << testing::PrintToString(text);
  }
}

TEST(EscapePropertyTest, WritesWhatJavaReads) {
  EXPECT_EQ(escapeProperty(L"C:\\a b\\n=:#!\t\n"), L"C:\\\\a b\\\\n=:#!\t\n");
  EXPECT_EQ(escapeProperty(L"\x7f\x80\uffff\xd83d\xde00"), L"\x7f\\u0080\\uffff\\ud83d\\ude00");
  EXPECT_EQ(escapeAnyProperty(L" a \t\n\\\u00e9"), L"\\u0020a \\u0009\\u000a\\\\\\u00e9");
}

TEST(EnvironmentLinesTest, WritesThreeLinesPerVariable) {
  const std::pair<EnvironmentMap, std::wstring> rows[] = {
      {{}, L""},
      {{{L"Path", L"C:\\\u00e9="}},
       L"ryn.nl.env.path=C:\\\\\\u00e9=\nryn.nl.env.PATH=C:\\\\\\u00e9=\n"
       L"ryn.nl.env.exact_case.Path=C:\\\\\\u00e9=\n"},
      // By code unit, whatever collides.
      {{{L"a", L"2"}, {L"A", L"1"}},
       L"ryn.nl.env.a=1\nryn.nl.env.A=1\nryn.nl.env.exact_case.A=1\n"
       L"ryn.nl.env.a=2\nryn.nl.env.A=2\nryn.nl.env.exact_case.a=2\n"},
      // The value is looked up under the escaped name, which no variable or another one has.
      {{{L"\u00e9", L"lost"}, {L"\\u00e9", L"found"}},
       L"ryn.nl.env.\\\\u00e9=\nryn.nl.env.\\\\U00E9=\nryn.nl.env.exact_case.\\\\u00e9=\n"
       L"ryn.nl.env.\\u00e9=found\nryn.nl.env.\\U00E9=found\nryn.nl.env.exact_case.\\u00e9=found\n"},
  };
  for (const auto& [environment, lines] : rows) EXPECT_EQ(environmentLines(environment), lines);
}

TEST(KeysTest, ReadValues) {
  for (const wchar_t* yes : {L"true", L"YES", L"On"}) EXPECT_TRUE(parseBoolean(yes)) << std::wstring(yes);
  for (const wchar_t* no : {L"", L"1", L"t", L"true "}) EXPECT_FALSE(parseBoolean(no)) << std::wstring(no);
  const std::pair<const wchar_t*, uint64_t> sizes[] = {{L"", 0},      {L"k", 0},        {L" 12x", 12},
                                                       {L"3K", 3072}, {L"2m", 2 << 20}, {L"-1", UINT64_MAX},
                                                       {L"4kk", 4096}};
  for (const auto& [text, size] : sizes) EXPECT_EQ(parseSize(text), size) << std::wstring(text);
  PropertyFile file;
  EXPECT_EQ(launcherPlatform(file), 1u);
  EXPECT_EQ(applicationName(file), L"Kestrune");
  file.parse(L"ryn.service.stop.seconds=-5\nryn.class.path=a;$ENV_CLASSPATH$;$ENV_CLASSPATH$\n");
  EXPECT_EQ(serviceStopSeconds(file), 0u);
  EXPECT_EQ(classPath(file, {{L"ClassPath", L"b"}}), L"a;b;$ENV_CLASSPATH$");
}

TEST(KeysTest, CompleteIsWhatCanBeStarted) {
  const std::pair<const wchar_t*, bool> rows[] = {
      {L"ryn.class.path=a\nryn.nl.java.launcher.main.class=M\nryn.nl.current.vm=j\n", true},
      {L"ryn.class.path=a\nryn.nl.java.launcher.main.class=M\nryn.nl.valid.vm.list=ALL\n", true},
      {L"ryn.class.path=a\nryn.nl.java.launcher.main.class=M\n", false},
      {L"ryn.nl.java.launcher.main.class=M\nryn.nl.current.vm=j\n", false},
      {L"ryn.class.path=a\nryn.nl.current.vm=j\n", false},
      {L"ryn.class.path=$ENV_CLASSPATH$\nryn.nl.java.launcher.main.class=M\nryn.nl.current.vm=j\n", false}};
  for (const auto& [lines, complete] : rows) {
    PropertyFile file;
    file.parse(lines);
    EXPECT_EQ(isComplete(file, {}), complete) << std::wstring(lines);
  }
}

}  // namespace
}  // namespace ryn
