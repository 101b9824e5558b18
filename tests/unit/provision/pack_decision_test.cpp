#include "provision/pack_decision.h"

#include <gtest/gtest.h>

namespace ryn {
namespace {

/// Notes what it was asked for.
class FakeSources final : public VmSources {
 public:
  explicit FakeSources(bool found) : found_(found) {}

  bool search() override {
    asked += "search ";
    return found_;
  }
  std::wstring shippedVm() override {
    asked += "shipped ";
    return L"shipped.exe";
  }
  std::wstring fetchPack(const PackSource& pack, const std::wstring& digestFailureText) override {
    asked += "fetch ";
    fetched = pack;
    failureText = digestFailureText;
    return L"fetched.exe";
  }

  std::string asked;
  PackSource fetched;
  std::wstring failureText;

 private:
  bool found_;
};

PropertyFile properties(std::wstring_view text) {
  PropertyFile file;
  file.parse(text);
  return file;
}

TEST(PackDecisionTest, FollowsTheBuildOptions) {
  const struct {
    const wchar_t* options;
    /// Sources asked when the search finds nothing, and when it finds a VM.
    const char* askedInVain;
    const char* asked;
    const wchar_t* executable;
  } rows[] = {
      {L"build.option=withvm\n", "search shipped ", "search ", L"shipped.exe"},
      {L"build.option=withvm\nbuild.with.vm.search.option=20\n", "search shipped ", "search ",
       L"shipped.exe"},
      {L"build.option=withvm\nbuild.with.vm.search.option=21\n", "shipped ", "shipped ", L"shipped.exe"},
      {L"build.option=withvm\nbuild.with.vm.search.option=22\n", "", "", L""},
      {L"build.option=withvm\nbuild.with.vm.search.option=x\n", "", "", L""},
      {L"build.option=withvm\nbuild.without.vm.search.option=12\n", "search shipped ", "search ",
       L"shipped.exe"},
      {L"build.option=withoutvm\n", "search ", "search ", L""},
      {L"build.option=withoutvm\nbuild.without.vm.search.option=10\n", "search ", "search ", L""},
      {L"build.option=withoutvm\nbuild.without.vm.search.option=11\n", "search fetch ", "search ",
       L"fetched.exe"},
      {L"build.option=withoutvm\nbuild.without.vm.search.option=12\n", "fetch ", "fetch ", L"fetched.exe"},
      {L"build.option=withoutvm\nbuild.without.vm.search.option=20\n", "", "", L""},
      {L"build.option=WithVM\n", "", "", L""},
      {L"build.option=\n", "", "", L""},
      {L"", "", "", L""},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.options));
    const BuildOptions options = readBuildOptions(properties(row.options));
    FakeSources barren(false);
    const VmDecision inVain = decideVm(options, barren);
    EXPECT_EQ(barren.asked, row.askedInVain);
    EXPECT_FALSE(inVain.foundBySearch);
    EXPECT_EQ(inVain.executable, row.executable);

    FakeSources rich(true);
    const VmDecision found = decideVm(options, rich);
    const bool searched = rich.asked == "search ";
    EXPECT_EQ(rich.asked, row.asked);
    EXPECT_EQ(found.foundBySearch, searched);
    EXPECT_EQ(found.executable, searched ? L"" : row.executable);
  }
}

TEST(PackDecisionTest, EachFetchHasItsOwnPackAndText) {
  const std::wstring common =
      L"build.option=withoutvm\n"
      L"build.without.vm.not.found.download.url=http://a/11.vm\n"
      L"build.without.vm.direct.download.url=http://a/12.vm\n"
      L"build.without.vm.not.found.download.url.md5Checksum.applicable=true\n"
      L"build.without.vm.not.found.download.url.md5Checksum.value=eleven\n"
      L"build.without.vm.dont.search.download.url.md5Checksum.applicable=True\n"
      L"build.without.vm.dont.search.download.url.md5Checksum.value=twelve\n";
  const struct {
    const wchar_t* option;
    PackSource pack;
    const wchar_t* text;
  } rows[] = {
      {L"11",
       {L"http://a/11.vm", true, L"eleven"},
       L"Warning!! MD5 checksum verification for downloaded JVM failed\nInstaller exiting..."},
      // "True" is not "true".
      {L"12",
       {L"http://a/12.vm", false, L"twelve"},
       L"Warning!! MD5 checksum verification for downloaded JVM failed\nInstaller Exiting..."},
  };
  for (const auto& row : rows) {
    FakeSources sources(false);
    decideVm(readBuildOptions(properties(common + L"build.without.vm.search.option=" + row.option + L"\n")),
             sources);
    EXPECT_EQ(sources.fetched.url, row.pack.url);
    EXPECT_EQ(sources.fetched.verify, row.pack.verify);
    EXPECT_EQ(sources.fetched.digest, row.pack.digest);
    EXPECT_EQ(sources.failureText, row.text);
  }
}

TEST(BuildOptionsTest, JvmspecsNeedTheWordAndACount) {
  const struct {
    const wchar_t* options;
    bool used;
  } rows[] = {
      {L"build.jvmspec.applicable=true\nbuild.jvmspec.total.num=1\n", true},
      {L"build.jvmspec.applicable=true\nbuild.jvmspec.total.num=0\n", false},
      {L"build.jvmspec.applicable=true\n", false},
      {L"build.jvmspec.applicable=yes\nbuild.jvmspec.total.num=1\n", false},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(readBuildOptions(properties(row.options)).usesJvmspecs(), row.used)
        << testing::PrintToString(row.options);
  }
}

}  // namespace
}  // namespace ryn
