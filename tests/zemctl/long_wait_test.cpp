// The library's long waits: in parts, and only as long as they are worthwhile.
#include "tools/zemctl/camera/long_wait.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using zemctl::LongWait;
using Parts = std::vector<unsigned>;

Parts PartsOf(unsigned milliseconds) {
  Parts parts;
  LongWait::Sleep(milliseconds, [&](unsigned part) { parts.push_back(part); });
  return parts;
}

TEST(LongWaitTest, IsOneWaitWhereNobodyLooks) { EXPECT_EQ(PartsOf(10000), Parts{10000}); }

TEST(LongWaitTest, LooksBeforeEachPartOfALongOne) {
  int looks = 0;
  const LongWait wait([&] {
    ++looks;
    return true;
  });
  EXPECT_EQ(PartsOf(1200), (Parts{500, 500, 200}));
  EXPECT_EQ(looks, 3);
  EXPECT_EQ(PartsOf(500), Parts{500});
  EXPECT_EQ(looks, 4);
  // A short one is between two looks of the library's own.
  EXPECT_EQ(PartsOf(499), Parts{499});
  EXPECT_EQ(PartsOf(0), Parts{0});
  EXPECT_EQ(looks, 4);
}

TEST(LongWaitTest, EndsWhenItIsInVain) {
  int looks = 0;
  const LongWait wait([&] { return ++looks < 3; });
  EXPECT_EQ(PartsOf(10000), (Parts{500, 500}));
  EXPECT_EQ(PartsOf(10000), Parts{});
}

TEST(LongWaitTest, TheOneAroundItComesBack) {
  const LongWait outer([] { return false; });
  {
    const LongWait inner([] { return true; });
    EXPECT_EQ(PartsOf(500), Parts{500});
  }
  EXPECT_EQ(PartsOf(500), Parts{});
}

}  // namespace
