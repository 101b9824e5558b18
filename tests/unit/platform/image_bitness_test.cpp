#include "platform/image_bitness.h"

#include <gtest/gtest.h>

#include "platform/paths.h"
#include "platform/system_library.h"

namespace ryn {
namespace {

TEST(ImageBitnessTest, ReadsRealFiles) {
  EXPECT_EQ(imageBitness(joinPath(systemFolder(), L"kernel32.dll")),
            sizeof(void*) == 8 ? ImageBitness::k64 : ImageBitness::k32);
  EXPECT_EQ(imageBitness(joinPath(systemFolder(), L"absent.dll")), ImageBitness::kUnknown);
  EXPECT_EQ(imageBitness(systemFolder()), ImageBitness::kUnknown);
}

}  // namespace
}  // namespace ryn
