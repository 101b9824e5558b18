#include "vmlaunch/launch_request.h"

#include <gmock/gmock.h>

namespace ryn {
namespace {

using testing::ElementsAre;

LaunchRequest fill(std::wstring_view properties, bool service = false) {
  PropertyFile file;
  file.parse(std::wstring(properties) + L"\n");
  LaunchRequest request;
  // Nothing of an earlier launch may show through.
  request.applicationArguments = request.leadingArguments = request.classpath.entries = {L"old"};
  request.verbosityOption = request.workingDirectory = L"old";
  request.debugging = true;
  LaunchRequest::fillFromProperties({.properties = file,
                                     .propertiesPath = L"D:\\app\\my.ryn",
                                     .tempPropertiesPath = L"C:\\t\\ryn1.tmp",
                                     .defaultFolder = L"E:\\start",
                                     .arguments = {L"D:\\app\\my.exe", L"-i", L"a b"},
                                     .service = service},
                                    request);
  return request;
}

TEST(LaunchRequestTest, FillsEveryField) {
  const LaunchRequest request = fill(
      L"ryn.nl.java.launcher.main.class=com.x.Main\n"
      L"ryn.nl.java.option.additional=-Da=b -Dc\n"
      L"ryn.nl.java.option.garbage.collection.extent=false\n"
      L"ryn.nl.designer.jvm.securefolder.check=TRUE\n"
      L"ryn.nl.win32.microsoftvm.min.version=3810\n"
      L"ryn.nl.java.option.java.heap.size.initial=1024k\n"
      L"ryn.nl.java.option.java.heap.size.max=64M\n"
      L"ryn.nl.java.option.verify.mode=on\n"
      L"ryn.nl.java.option.debugging=True\n"
      L"ryn.nl.java.option.garbage.collection.background.thread=t\n"
      L"ryn.nl.java.option.compiler=ON\n"
      L"ryn.class.path=lib\\a.jar;C:\\b.jar;;\\c.jar; d.jar");
  EXPECT_EQ(request.mainClass, L"com.x.Main");
  EXPECT_EQ(request.additionalOptions, L"-Da=b -Dc");
  EXPECT_EQ(request.gcExtent, L"false");
  EXPECT_EQ(request.secureFolderCheck, L"TRUE");
  EXPECT_EQ(request.microsoftMinBuild, 3810);
  EXPECT_EQ(request.heapInitial, 1048576);
  EXPECT_EQ(request.heapMax, 67108864);
  EXPECT_TRUE(request.verifyMode && request.debugging && request.noAsyncGc && request.noJit);
  EXPECT_EQ(joinClasspath(request.classpath), L"D:\\app\\lib\\a.jar;C:\\b.jar;\\c.jar;D:\\app\\ d.jar;");
  EXPECT_THAT(request.leadingArguments, ElementsAre(L"D:\\app\\my.ryn", L"C:\\t\\ryn1.tmp"));
  EXPECT_THAT(request.applicationArguments, ElementsAre(L"-i", L"a b"));
}

TEST(LaunchRequestTest, LeavesOutWhatIsNotGiven) {
  const LaunchRequest request = fill(L"ryn.nl.java.option.compiler=yes");
  EXPECT_EQ(request.mainClass + request.additionalOptions + request.gcExtent + request.verbosityOption, L"");
  EXPECT_EQ(request.heapInitial + request.heapMax + request.microsoftMinBuild, 0);
  EXPECT_FALSE(request.verifyMode || request.debugging || request.noAsyncGc || request.noJit ||
               request.verbose);
  EXPECT_EQ(joinClasspath(request.classpath), L"");
}

TEST(LaunchRequestTest, FindsTheWorkingFolder) {
  const std::pair<const wchar_t*, const wchar_t*> rows[] = {
      {L"", L"E:\\start"},
      {L"C:\\a\\..\\b", L"C:\\a\\..\\b"},
      {L"\\\\server\\share", L"\\\\server\\share"},
      {L"..\\data\\.", L"D:\\data"},
      {L".", L"D:\\app"},
      {L"sub/x", L"D:\\app\\sub\\x"},
  };
  for (const auto& [text, folder] : rows)
    EXPECT_EQ(fill(std::wstring(L"ryn.user.dir=") + text).workingDirectory, folder);
}

TEST(LaunchRequestTest, ReadsVerbosity) {
  const std::tuple<std::wstring, bool, const wchar_t*, const char*> rows[] = {
      {L"", false, L"", ""},
      {L"normal", true, L"", ""},
      {L"All", true, L"", ""},
      {L"GC", true, L"gc", ""},
      {L"class", true, L"class", ""},
      {L"None", false, L"", ""},
      {L"Loud", false, L"", "invalid verbosity selection 'loud', disabling verbosity.\n"},
  };
  for (const auto& [text, verbose, option, message] : rows) {
    testing::internal::CaptureStderr();
    const LaunchRequest request = fill(L"ryn.nl.java.option.verbose=" + text);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), message);
    EXPECT_EQ(request.verbose, verbose) << text;
    EXPECT_EQ(request.verbosityOption, option) << text;
  }
}

TEST(LaunchRequestTest, ServicesSurviveLogOff) {
  EXPECT_EQ(fill(L"ryn.nl.java.option.additional=-Da", true).additionalOptions, L"-Da -Xrs");
}

TEST(LaunchRequestTest, ReadsFlags) {
  for (const wchar_t* text : {L"true", L"TRUE", L"On", L"t", L"T"}) EXPECT_TRUE(parseFlag(text)) << text;
  for (const wchar_t* text : {L"", L"yes", L"1", L"tr", L"true "}) EXPECT_FALSE(parseFlag(text)) << text;
}

}  // namespace
}  // namespace ryn
