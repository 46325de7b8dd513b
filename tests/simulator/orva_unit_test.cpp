// The simulated stream and endpoint unit.
#include "simulator/orva_unit.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using zem::simulator::OrvaUnit;
using zem::simulator::Outcome;
using Bytes = std::vector<std::uint8_t>;

class OrvaUnitTest : public ::testing::Test {
 protected:
  Bytes Read(std::uint16_t selector) {
    Bytes bytes;
    EXPECT_EQ(unit.Get(selector, 13, bytes), Outcome::kDone);
    return bytes;
  }

  OrvaUnit unit;
};

TEST_F(OrvaUnitTest, WhatItSaysOfItself) {
  EXPECT_EQ(Read(1), Bytes{0x10});
  EXPECT_EQ(Read(3), (Bytes{0x1F, 0x0C}));
  EXPECT_EQ(Read(5), Bytes{1});
}

TEST_F(OrvaUnitTest, FreshStreamHasAFormat) {
  const Bytes fresh = {0x01, 0x00, 0x05, 0xD0, 0x02, 0x15, 0x16, 0x05, 0x00, 0xA0, 0x25, 0x26, 0};
  EXPECT_EQ(Read(8), fresh);
  EXPECT_EQ(Read(9), fresh);
}

TEST_F(OrvaUnitTest, ProbeAndCommitOfEachStreamAreApart) {
  EXPECT_EQ(unit.Set(4, Bytes{1}), Outcome::kDone);
  EXPECT_EQ(unit.Set(8, Bytes(13, 0x11)), Outcome::kDone);
  EXPECT_EQ(unit.Set(9, Bytes(13, 0x22)), Outcome::kDone);
  EXPECT_EQ(unit.Set(4, Bytes{2}), Outcome::kDone);
  EXPECT_EQ(Read(8)[0], 0x01);
  EXPECT_EQ(unit.Set(4, Bytes{1}), Outcome::kDone);
  EXPECT_EQ(Read(8), Bytes(13, 0x11));
  EXPECT_EQ(Read(9), Bytes(13, 0x22));
}

TEST_F(OrvaUnitTest, LayerIsKept) {
  EXPECT_EQ(unit.Set(27, Bytes{7}), Outcome::kDone);
  EXPECT_EQ(unit.layer, 7);
}

TEST_F(OrvaUnitTest, OtherControlsAndLengths) {
  Bytes bytes;
  EXPECT_EQ(unit.Get(2, 1, bytes), Outcome::kNoSuchControl);
  EXPECT_EQ(unit.Get(27, 1, bytes), Outcome::kNoSuchControl);
  EXPECT_EQ(unit.Set(1, Bytes{1}), Outcome::kNoSuchControl);
  EXPECT_EQ(unit.Set(4, Bytes{1, 2}), Outcome::kWrongLength);
  EXPECT_EQ(unit.Set(27, Bytes{}), Outcome::kWrongLength);
  EXPECT_EQ(unit.Set(8, Bytes(12)), Outcome::kWrongLength);
  EXPECT_EQ(unit.Set(9, Bytes(16)), Outcome::kWrongLength);
}

}  // namespace
