#include "vmsearch/vm_description.h"

#include <gmock/gmock.h>

namespace ryn {
namespace {

using testing::ElementsAre;

TEST(VmDescriptionTest, SetsTextsFromLines) {
  using D = VmDescription;
  const std::tuple<const wchar_t*, std::wstring D::*, const wchar_t*> rows[] = {
      {L"JVM_EXE: \t javaw.exe \r\n", &D::executable, L"javaw.exe"},
      {L"JVM_EXE:one\nJVM_EXE:", &D::executable, L""},
      {L"the JVM_EXE: key JVM_EXE: again", &D::executable, L"key JVM_EXE: again"},
      {L"#JVM_EXE:no", &D::executable, L""},
      {L" #JVM_EXE:yes", &D::executable, L"yes"},
      {L"jvm_exe:no\nJVM_EXE no\nOTHER:no", &D::executable, L""},
      {L"VERBOSE:-v\nVERBOSE_GC:-g", &D::verbose, L"-v"},
      {L"CLASSPATH:-cp\nCLASSPATH_SEPARATOR:;", &D::classpath, L"-cp"},
      {L"CLASSPATH:-cp\nBOOT_CLASSPATH:-b", &D::classpath, L"-b"},
      {L"/:\nVERSION: 1.4", &D::version, L"1.4"},
      {L"PATH_HINT:\nVERSION: 1\n/:", &D::version, L""},
  };
  for (const auto& [lines, field, value] : rows)
    EXPECT_EQ(VmDescription::parse(lines).*field, value) << lines;
}

TEST(VmDescriptionTest, CollectsBlocks) {
  const VmDescription description = VmDescription::parse(
      L"DESC: caf\u00e9\nPATH_HINT: not this\n# nor this\n  C:\\Java  \r\n\n # this\nPLATFORM_HINT:\nend /: "
      L"here\n"
      L"PATH_HINT:\nD:\\Java\n/:\nPLATFORM_HINT:\nWindows\nVERSION: 1");
  EXPECT_EQ(description.description, L"caf\u00e9");
  EXPECT_THAT(description.pathHints, ElementsAre(L"C:\\Java", L"# this", L"PLATFORM_HINT:", L"D:\\Java"));
  EXPECT_THAT(description.platformHints, ElementsAre(L"Windows", L"VERSION: 1"));
  EXPECT_TRUE(VmDescription::parse(L"").empty());
  EXPECT_TRUE(VmDescription::parse(L"# nothing\nPATH_HINT:\n/:\n").empty());
  EXPECT_FALSE(VmDescription::parse(L"JVM_EXE: x\n").empty());
}

}  // namespace
}  // namespace ryn
