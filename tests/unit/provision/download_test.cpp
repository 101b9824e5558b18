#include "provision/download.h"

#include <gtest/gtest.h>

namespace ryn {
namespace {

// What no server of the end-to-end tests offers.
TEST(DownloadTest, HttpsAndLargeFiles) {
  EXPECT_EQ(urlScheme(L"https://host/jre.vm"), UrlScheme::kHttp);
  EXPECT_EQ(ftpFileSize(5, 2), 525U);
  EXPECT_EQ(ftpFileSize(0xFFFFFFFF, 1), 259U);
}

}  // namespace
}  // namespace ryn
