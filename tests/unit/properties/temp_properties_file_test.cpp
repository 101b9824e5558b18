#include "properties/temp_properties_file.h"

#include <gtest/gtest.h>

#include "platform/paths.h"
#include "properties/environment_export.h"
#include "tests/unit/support/process_state.h"
#include "tests/unit/support/temp_folder.h"

namespace ryn {
namespace {

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
