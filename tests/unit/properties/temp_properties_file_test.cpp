#include "properties/temp_properties_file.h"

#include <gtest/gtest.h>

#include "platform/unique_handle.h"
#include "properties/environment_export.h"

namespace ryn {
namespace {

TEST(EnvironmentExportTest, WritesThreeLinesPerVariable) {
  const std::pair<EnvironmentMap, std::wstring> rows[] = {
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

TEST(TempPropertiesFileTest, LosesLinesWhileAnotherHoldsTheFile) {
  const TempPropertiesFile& file = TempPropertiesFile::instance();
  const UniqueFile lock(
      CreateFileW(file.path().c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
  EXPECT_NO_THROW(file.append(L"lost=1\n"));
}

}  // namespace
}  // namespace ryn
