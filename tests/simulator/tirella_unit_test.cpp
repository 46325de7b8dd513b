// The simulated TIRELLA unit.
#include "simulator/tirella_unit.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using zem::simulator::Outcome;
using zem::simulator::TirellaUnit;
using Bytes = std::vector<std::uint8_t>;

TEST(TirellaUnitTest, LedKeepsItsValue) {
  TirellaUnit unit;
  EXPECT_EQ(unit.Set(2, Bytes{0xA5}), Outcome::kDone);
  EXPECT_EQ(unit.state.led, 0xA5);
  Bytes value;
  EXPECT_EQ(unit.Get(2, 1, value), Outcome::kDone);
  EXPECT_EQ(value, Bytes{0xA5});
  EXPECT_EQ(unit.Set(2, Bytes(2)), Outcome::kWrongLength);
}

TEST(TirellaUnitTest, MemoryHas256Bytes) {
  TirellaUnit unit;
  Bytes block(32, 0x42);
  block[0] = 0xFF;
  block[1] = 0;
  block[2] = 1;
  EXPECT_EQ(unit.Set(4, block), Outcome::kDone);
  EXPECT_EQ(unit.state.nvmem[255], 0x42);
  block[2] = 2;
  EXPECT_EQ(unit.Set(4, block), Outcome::kFailed);
}

TEST(TirellaUnitTest, OtherSelectors) {
  TirellaUnit unit;
  Bytes bytes;
  EXPECT_EQ(unit.Set(1, Bytes(1)), Outcome::kNoSuchControl);
  EXPECT_EQ(unit.Get(1, 1, bytes), Outcome::kNoSuchControl);
}

}  // namespace
