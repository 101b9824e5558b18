#include "platform/unique_handle.h"

#include <gtest/gtest.h>

#include <vector>

namespace ryn {
namespace {

/// Notes what is closed, and spoils the last error as a failing close does.
struct NotingPolicy {
  using Value = int;
  static Value none() { return -1; }
  static void close(Value value) {
    closed.push_back(value);
    SetLastError(ERROR_INVALID_HANDLE);
  }
  static inline std::vector<int> closed;
};
using Resource = UniqueResource<NotingPolicy>;

TEST(UniqueResourceTest, ClosesOnceWhatItOwnsAndKeepsTheLastError) {
  NotingPolicy::closed.clear();
  SetLastError(ERROR_FILE_NOT_FOUND);
  {
    const Resource empty;
    Resource given(0);
    EXPECT_TRUE(!empty && given);
    EXPECT_EQ(given.release(), 0);
    Resource first(1);
    Resource second(std::move(first));
    Resource third(3);
    third = std::move(second);
    EXPECT_EQ(NotingPolicy::closed, (std::vector{3}));
    *third.receive() = 4;
    EXPECT_EQ(NotingPolicy::closed, (std::vector{3, 1}));
    third.reset(5);
  }
  EXPECT_EQ(NotingPolicy::closed, (std::vector{3, 1, 4, 5}));
  EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_FILE_NOT_FOUND));
}

}  // namespace
}  // namespace ryn
