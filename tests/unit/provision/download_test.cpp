#include "provision/download.h"

#include <gtest/gtest.h>

namespace ryn {
namespace {

TEST(DownloadTest, SchemesAreTakenFromTheFirstSmallLetters) {
  const struct {
    const wchar_t* url;
    UrlScheme scheme;
  } rows[] = {
      {L"http://host/jre.vm", UrlScheme::kHttp}, {L"https://host/jre.vm", UrlScheme::kHttp},
      {L"ftp://host/jre.vm", UrlScheme::kFtp},   {L"HTTP://host/jre.vm", UrlScheme::kOther},
      {L"Ftp://host/jre.vm", UrlScheme::kOther}, {L"file:///jre.vm", UrlScheme::kOther},
      {L" http://host", UrlScheme::kOther},      {L"", UrlScheme::kOther},
  };
  for (const auto& row : rows) EXPECT_EQ(urlScheme(row.url), row.scheme) << testing::PrintToString(row.url);
}

TEST(DownloadTest, SizesOfTheProgressBar) {
  EXPECT_EQ(progressRange(0), 0);
  EXPECT_EQ(progressRange(1023), 0);
  EXPECT_EQ(progressRange(50 * 1024 * 1024), 51200);
  // 71,680 KiB in 16 bits.
  EXPECT_EQ(progressRange(73'400'320), 6144);

  EXPECT_EQ(ftpFileSize(4'000'000'000U, 0), 4'000'000'000U);
  EXPECT_EQ(ftpFileSize(5, 2), 525U);
  EXPECT_EQ(ftpFileSize(0xFFFFFFFF, 1), 259U);
}

TEST(DownloadTest, MarksStandInGroupsOfFive) {
  std::wstring marks;
  for (uint64_t chunk = 1; chunk <= 5500; ++chunk) marks += progressMark(chunk);
  EXPECT_EQ(marks, L"===== ===== =");
  EXPECT_EQ(progressMark(0), L"");
  EXPECT_EQ(progressMark(499), L"");
}

}  // namespace
}  // namespace ryn
