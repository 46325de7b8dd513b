// The simulated encoding unit and stream-probe unit.
#include "simulator/encoding_unit.h"

#include <gtest/gtest.h>

namespace {

using zem::simulator::EncodingUnit;
using zem::simulator::Outcome;
using zem::simulator::StreamProbeUnit;
using Bytes = std::vector<std::uint8_t>;

TEST(SimulatedEncodingUnitTest, EightControlsKeepWhatIsWritten) {
  EncodingUnit unit;
  Bytes bytes;
  for (std::uint16_t selector = 1; selector <= 8; ++selector) {
    EXPECT_EQ(unit.Get(selector, 2, bytes), Outcome::kDone);
    EXPECT_EQ(bytes, (Bytes{0, 0}));
    const auto value = static_cast<std::uint8_t>(selector);
    EXPECT_EQ(unit.Set(selector, Bytes{value, 7, 8}), Outcome::kDone);
  }
  EXPECT_EQ(unit.Get(5, 4, bytes), Outcome::kDone);
  EXPECT_EQ(bytes, (Bytes{5, 7, 8, 0}));
  EXPECT_EQ(unit.Get(6, 1, bytes), Outcome::kDone);
  EXPECT_EQ(bytes, Bytes{6});
  EXPECT_EQ(unit.Set(0, Bytes{1}), Outcome::kNoSuchControl);
  EXPECT_EQ(unit.Set(9, Bytes{1}), Outcome::kNoSuchControl);
  EXPECT_EQ(unit.Get(9, 1, bytes), Outcome::kNoSuchControl);
}

TEST(SimulatedStreamProbeUnitTest, ProbeAndCommitAreApart) {
  StreamProbeUnit unit;
  Bytes bytes;
  EXPECT_EQ(unit.Set(23, Bytes(51, 7)), Outcome::kDone);
  EXPECT_EQ(unit.Get(23, 51, bytes), Outcome::kDone);
  EXPECT_EQ(bytes, Bytes(51, 7));
  EXPECT_EQ(unit.Get(24, 51, bytes), Outcome::kDone);
  ASSERT_EQ(bytes.size(), 51U);
  EXPECT_EQ(bytes[4], 0x15) << "33 ms";
  EXPECT_EQ(unit.Set(24, Bytes(50)), Outcome::kWrongLength);
  EXPECT_EQ(unit.Set(22, Bytes(51)), Outcome::kNoSuchControl);
  EXPECT_EQ(unit.Get(25, 51, bytes), Outcome::kNoSuchControl);
}

}  // namespace
