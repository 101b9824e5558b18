#include "launcher/service.h"

#include <gtest/gtest.h>

namespace ryn {
namespace {

// Stop and shutdown need a service to stop; those are tested with a real one.
TEST(ServiceControlTest, AnswersOtherControlsAsNotImplemented) {
  for (const int control :
       {SERVICE_CONTROL_PAUSE, SERVICE_CONTROL_CONTINUE, SERVICE_CONTROL_INTERROGATE, 128}) {
    EXPECT_EQ(ServiceRYN::controlHandler(static_cast<DWORD>(control)), 120u) << control;
  }
}

}  // namespace
}  // namespace ryn
