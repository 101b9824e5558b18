#include "vmsearch/vm_version.h"

#include <gtest/gtest.h>

#include <utility>

namespace ryn {
namespace {

// What does not fit 15 bits: 40000 as the texts and resources of VMs spell it.
constexpr auto kHuge = static_cast<int16_t>(40000);

TEST(VmVersionTest, PacksEachComponentWithItsSign) {
  const std::pair<VmVersion, uint64_t> rows[] = {
      {VmVersion(), 0},
      {VmVersion(6, 0, 20), 0x6'0000'0014},
      {VmVersion(25, 7, 32767), 0x19'0007'7FFF},
      {VmVersion(kHuge, 1, 2), 0xFFFF'9C40'0001'0002},
      {VmVersion(8, kHuge, 2), 0xFFFF'FFFF'9C40'0002},
      {VmVersion(8, 1, kHuge), 0xFFFF'FFFF'FFFF'9C40},
  };
  for (const auto& [version, packed] : rows) EXPECT_EQ(version.packed(), packed) << std::hex << packed;
}

TEST(VmVersionTest, ComparesAsOneNumber) {
  const VmVersion sorted[] = {
      VmVersion(),         VmVersion(0, 0, 1),     VmVersion(0, 1, 0),     VmVersion(1, 1, 8),
      VmVersion(1, 4, 0),  VmVersion(4, 2, 0),     VmVersion(4, 2, 19),    VmVersion(6, 0, 20),
      VmVersion(6, 0, 45), VmVersion(6, 1, 0),     VmVersion(8, 0, 402),   VmVersion(11, 0, 2),
      VmVersion(25, 0, 0), VmVersion(kHuge, 0, 0), VmVersion(8, kHuge, 0), VmVersion(8, 0, kHuge),
  };
  for (const VmVersion& a : sorted) {
    for (const VmVersion& b : sorted) {
      SCOPED_TRACE(testing::Message() << std::hex << a.packed() << " and " << b.packed());
      EXPECT_EQ(a < b, &a < &b);
      EXPECT_EQ(a <= b, &a <= &b);
      EXPECT_EQ(a > b, &a > &b);
      EXPECT_EQ(a >= b, &a >= &b);
      EXPECT_EQ(a == b, &a == &b);
      EXPECT_EQ(a != b, &a != &b);
    }
  }
}

TEST(VmVersionTest, ReplacesTheMinorNumberAndPacksAgain) {
  VmVersion version(4, 9, 3);
  version.setMinor(2);
  EXPECT_EQ(version, VmVersion(4, 2, 3));
  version.setMinor(kHuge);
  version.setMinor(2);
  EXPECT_EQ(version, VmVersion(-1, 2, 3)) << "the sign has covered the generation, and there it stays";
}

TEST(VmVersionTest, ReadsTexts) {
  const std::pair<const wchar_t*, VmVersion> rows[] = {
      {L"1.6.0_20", VmVersion(6, 0, 20)},
      {L"6.0.20", VmVersion(6, 0, 20)},
      {L"1.4.2", VmVersion(4, 2, 0)},
      {L"1.5.0.0_07", VmVersion(5, 0, 0)},
      {L"1.8.0_402-b06", VmVersion(8, 0, 402)},
      {L"17", VmVersion(17, 0, 0)},
      {L"10.1", VmVersion(10, 1, 0)},
      {L"1.8.0_40000", VmVersion(8, 0, kHuge)},
      {L"1.x.3_4", VmVersion(0, 3, 4)},
      {L"1..2", VmVersion(0, 2, 0)},
      {L"1", VmVersion()},
      {L"", VmVersion()},
      {L"0.0.0.0", VmVersion()},
      {L"latest", VmVersion()},
  };
  for (const auto& [text, version] : rows)
    EXPECT_EQ(parseVmVersion(text), version) << testing::PrintToString(text);
}

}  // namespace
}  // namespace ryn
