#include "properties/temp_properties_file.h"

#include <gtest/gtest.h>

#include "platform/paths.h"
#include "properties/environment_export.h"
#include "tests/unit/support/process_state.h"
#include "tests/unit/support/temp_folder.h"

namespace ryn {
namespace {

TEST(EnvironmentExportTest, WritesThreeLinesPerVariable) {
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

// One test, because a process has one such file, made where TMP points at its first use.
TEST(TempPropertiesFileTest, CollectsLinesInOneFile) {
  const test::TempFolder temp(test::TempFolder::Name::kNonAscii);
  const test::ScopedVariable tmp(L"TMP", temp.path());
  const TempPropertiesFile& file = TempPropertiesFile::instance();
  EXPECT_EQ(folderPart(file.path()), temp.path());
  EXPECT_EQ(fileName(file.path()).substr(0, 3), L"ryn");
  EXPECT_EQ(test::readBytes(file.path()), "");

  file.append(L"ryn.control-key=true\nx=1\n");
  TempPropertiesFile::instance().appendCurrentVm(L"C:\\Java \u00e9\u4e2d\\java.exe");
  exportEnvironment({});
  exportEnvironment({{L"A", L"1"}});
  EXPECT_EQ(test::readBytes(file.path()),
            "ryn.control-key=true\r\nx=1\r\n"
            "ryn.nl.current.vm=C:\\\\Java \\u00e9\\u4e2d\\\\java.exe\r\n"
            "ryn.nl.env.a=1\r\nryn.nl.env.A=1\r\nryn.nl.env.exact_case.A=1\r\n");

  const UniqueFile lock(
      CreateFileW(file.path().c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
  EXPECT_NO_THROW(file.append(L"lost=1\n"));
}

}  // namespace
}  // namespace ryn
