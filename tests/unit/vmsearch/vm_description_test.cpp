#include "vmsearch/vm_description.h"

#include <gmock/gmock.h>


namespace ryn {
namespace {

using testing::ElementsAre;

struct TextRow {
  const wchar_t* lines;
  std::wstring VmDescription::*field;
  const wchar_t* value;
};

TEST(VmDescriptionTest, SetsTextsFromLines) {
  using D = VmDescription;
  const TextRow rows[] = {
      {L"JVM_EXE: \t javaw.exe \r\n", &D::executable, L"javaw.exe"},
      {L"JVM_EXE:one\nJVM_EXE:two", &D::executable, L"two"},
      {L"JVM_EXE:one\nJVM_EXE:", &D::executable, L""},
      {L"the JVM_EXE: key JVM_EXE: again", &D::executable, L"key JVM_EXE: again"},
      {L"#JVM_EXE:no", &D::executable, L""},
      {L" #JVM_EXE:yes", &D::executable, L"yes"},
      {L"jvm_exe:no\nJVM_EXE no\nOTHER:no", &D::executable, L""},
      {L"VERBOSE:-v\nVERBOSE_GC:-g", &D::verbose, L"-v"},
      {L"VERBOSE:-v\nVERBOSE_GC:-g", &D::verboseGc, L"-g"},
      {L"CLASSPATH:-cp\nCLASSPATH_SEPARATOR:;", &D::classpath, L"-cp"},
      {L"CLASSPATH:-cp\nCLASSPATH_SEPARATOR:;", &D::classpathSeparator, L";"},
      {L"BOOT_CLASSPATH:-b", &D::bootClasspath, L"-b"},
      {L"CLASSPATH:-cp\nBOOT_CLASSPATH:-b", &D::classpath, L"-b"},
      {L"BOOT_CLASSPATH:-b\nCLASSPATH:-cp", &D::classpath, L"-cp"},
      {L"/:\nVERSION: 1.4", &D::version, L"1.4"},
      {L"PATH_HINT:\nVERSION: 1\n/:", &D::version, L""},
  };
  for (const TextRow& row : rows)
    EXPECT_EQ(VmDescription::parse(row.lines).*row.field, row.value) << row.lines;
}

TEST(VmDescriptionTest, EveryKeyHasAFieldOfItsOwn) {
  VmDescription description;
  for (const DescriptionKey& key : kDescriptionKeys) {
    if (key.text != nullptr) (description.*key.text) += L"x";
    if (key.block != nullptr) (description.*key.block).emplace_back();
  }
  int fields = 0;
  for (const DescriptionKey& key : kDescriptionKeys) {
    const size_t size = key.text != nullptr    ? (description.*key.text).size()
                        : key.block != nullptr ? (description.*key.block).size()
                                               : 0;
    EXPECT_EQ(size, key.name == kEndOfBlock ? 0u : 1u) << std::wstring(key.name);
    fields += static_cast<int>(size);
  }
  EXPECT_EQ(fields, 24);
}

TEST(VmDescriptionTest, CollectsBlocks) {
  const VmDescription description = VmDescription::parse(
      L"PATH_HINT: not this\n"
      L"# nor this\n"
      L"  C:\\Java  \r\n"
      L"\n"
      L" # this\n"
      L"PLATFORM_HINT:\n"
      L"end /: here\n"
      L"JVM_PROPERTIES\na=b\n/:\n"
      L"PATH_HINT:\nD:\\Java\n/:\n"
      L"PLATFORM_HINT:\nWindows\nVERSION: 1");
  EXPECT_THAT(description.pathHints, ElementsAre(L"C:\\Java", L"# this", L"PLATFORM_HINT:", L"D:\\Java"));
  EXPECT_THAT(description.jvmProperties, ElementsAre(L"a=b"));
  EXPECT_THAT(description.platformHints, ElementsAre(L"Windows", L"VERSION: 1"));
  EXPECT_EQ(description.version, L"");
}

TEST(VmDescriptionTest, IsEmptyWhenItSaysNothing) {
  EXPECT_TRUE(VmDescription::parse(L"").empty());
  EXPECT_TRUE(VmDescription::parse(L"# nothing\nPATH_HINT:\n/:\n").empty());
  EXPECT_FALSE(VmDescription::parse(L"PATH_HINT:\nC:\\Java\n").empty());
}

}  // namespace
}  // namespace ryn
