// What zemctl concludes from the values of a progress callback.
#include "tools/zemctl/updates/transfer_watch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>

namespace {

using zemctl::DataWatch;
using zemctl::ImageWatch;

void Feed(ImageWatch& watch, std::initializer_list<std::uint32_t> values) {
  for (const std::uint32_t value : values) {
    watch.OnValue(value);
  }
}

// The values of `count` chunks of an image.
void FeedChunks(ImageWatch& watch, std::uint64_t length, std::uint64_t chunk, std::uint64_t count) {
  for (std::uint64_t sent = chunk; count > 0; sent += chunk, --count) {
    watch.OnValue(static_cast<std::uint32_t>((length - std::min(length, sent)) * 100 / length));
  }
}

void FeedCountdown(ImageWatch& watch) { Feed(watch, {10, 9, 8, 7, 6, 5, 4, 3, 2, 1}); }

TEST(ImageWatchTest, NothingYet) {
  const ImageWatch watch(1000);
  EXPECT_FALSE(watch.begun());
  EXPECT_FALSE(watch.complete());
  EXPECT_FALSE(watch.waiting());
  EXPECT_EQ(watch.sentPercent(), 0U);
}

TEST(ImageWatchTest, AnImageAndItsWait) {
  ImageWatch watch(1000);
  watch.OnValue(48);
  EXPECT_TRUE(watch.begun());
  EXPECT_FALSE(watch.complete());
  EXPECT_EQ(watch.sentPercent(), 52U);
  watch.OnValue(0);
  EXPECT_TRUE(watch.complete());
  EXPECT_FALSE(watch.waiting());
  EXPECT_EQ(watch.sentPercent(), 100U);
  watch.OnValue(10);
  EXPECT_TRUE(watch.waiting());
  EXPECT_EQ(watch.waitedPercent(), 0U);
  watch.OnValue(1);
  EXPECT_EQ(watch.waitedPercent(), 90U);
  EXPECT_TRUE(watch.complete());
}

// A share below one percent is reported as 0 long before the end.
TEST(ImageWatchTest, ZeroIsNotTheEndOfALongImage) {
  for (const std::uint32_t chunk : {512U, 32U}) {
    constexpr std::uint32_t kLength = 0x100000;
    ImageWatch watch(kLength);
    FeedChunks(watch, kLength, chunk, kLength / chunk - 1);
    EXPECT_EQ(watch.sentPercent(), 100U);
    EXPECT_FALSE(watch.complete()) << chunk;
    watch.OnValue(0);
    EXPECT_TRUE(watch.complete()) << chunk;
    EXPECT_FALSE(watch.waiting()) << chunk;
  }
}

TEST(ImageWatchTest, EveryPlaceWhereAnImageMayStopIsSeen) {
  for (const std::uint32_t length : {1U, 31U, 32U, 33U, 511U, 512U, 513U, 5000U, 70000U}) {
    for (const std::uint32_t chunk : {512U, 32U}) {
      const std::uint32_t chunks = (length + chunk - 1) / chunk;
      for (std::uint32_t sent = 0; sent <= chunks; ++sent) {
        ImageWatch watch(length);
        FeedChunks(watch, length, chunk, sent);
        EXPECT_EQ(watch.complete(), sent == chunks) << length << " " << chunk << " " << sent;
        FeedCountdown(watch);
        EXPECT_TRUE(watch.waiting()) << length << " " << chunk << " " << sent;
        EXPECT_EQ(watch.complete(), sent == chunks) << length << " " << chunk << " " << sent;
      }
    }
  }
}

TEST(ImageWatchTest, AWaitWithoutAnyChunk) {
  ImageWatch watch(100000);
  FeedCountdown(watch);
  EXPECT_TRUE(watch.waiting());
  EXPECT_FALSE(watch.complete());
}

TEST(DataWatchTest, CountsInChunksOf32) {
  DataWatch watch(70);
  EXPECT_FALSE(watch.complete());
  EXPECT_EQ(watch.sentPercent(), 0U);
  watch.OnValue(118);  // 38 left
  EXPECT_EQ(watch.sentPercent(), 46U);
  watch.OnValue(18);  // 6 left
  EXPECT_EQ(watch.sentPercent(), 92U);
  EXPECT_FALSE(watch.complete());
  watch.OnValue(0);
  EXPECT_TRUE(watch.complete());
  EXPECT_EQ(watch.sentPercent(), 100U);
}

TEST(DataWatchTest, OneByteLeftIsNotTheEnd) {
  DataWatch watch(33);
  watch.OnValue(3);
  EXPECT_FALSE(watch.complete());
}

TEST(DataWatchTest, NothingToSendIsComplete) { EXPECT_TRUE(DataWatch(0).complete()); }

}  // namespace
