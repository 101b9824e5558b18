#include "vmsearch/vm_version.h"

#include <gtest/gtest.h>

#include <utility>

namespace ryn {
namespace {

// What does not fit 15 bits: 40000 as the texts and resources of VMs spell it.
constexpr auto kHuge = static_cast<int16_t>(40000);

TEST(VmVersionTest, ComparesAsOneNumber) {
  const VmVersion sorted[] = {VmVersion(),
                              VmVersion(0, 0, 1),
                              VmVersion(0, 1, 0),
                              VmVersion(1, 1, 8),
                              VmVersion(4, 2, 19),
                              VmVersion(6, 0, 20),
                              VmVersion(6, 1, 0),
                              VmVersion(8, 0, 402),
                              VmVersion(25, 7, 32767),
                              VmVersion(kHuge, 0, 0),
                              VmVersion(8, kHuge, 0),
                              VmVersion(8, 0, kHuge)};
  for (const VmVersion& a : sorted) {
    for (const VmVersion& b : sorted) {
      EXPECT_EQ(a < b, &a < &b) << std::hex << a.packed() << " and " << b.packed();
      EXPECT_EQ(a == b, &a == &b) << std::hex << a.packed() << " and " << b.packed();
    }
  }
}

TEST(VmVersionTest, ReplacesTheMinorNumberAndPacksAgain) {
  VmVersion version(4, 9, 3);
  version.setMinor(kHuge);
  version.setMinor(2);
  EXPECT_EQ(version, VmVersion(-1, 2, 3)) << "the sign has covered the generation, and there it stays";
}

TEST(VmVersionTest, ReadsTexts) {
  const std::pair<const wchar_t*, VmVersion> rows[] = {
      {L"1.6.0_20", VmVersion(6, 0, 20)},
      {L"6.0.20", VmVersion(6, 0, 20)},
      {L"1.5.0.0_07", VmVersion(5, 0, 0)},
      {L"1.8.0_402-b06", VmVersion(8, 0, 402)},
      {L"17", VmVersion(17, 0, 0)},
      {L"1.8.0_40000", VmVersion(8, 0, kHuge)},
      {L"1.x.3_4", VmVersion(0, 3, 4)},
      {L"1..2", VmVersion(0, 2, 0)},
      {L"1", VmVersion()},
      {L"", VmVersion()},
  };
  for (const auto& [text, version] : rows)
    EXPECT_EQ(parseVmVersion(text), version) << testing::PrintToString(text);
}

}  // namespace
}  // namespace ryn
