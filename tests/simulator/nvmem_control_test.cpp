// The simulated memory control: what a piece may ask for, and what the next read answers.
#include "simulator/nvmem_control.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using zem::simulator::NvmemControl;
using zem::simulator::Outcome;
using Bytes = std::vector<std::uint8_t>;

class NvmemControlTest : public ::testing::Test {
 protected:
  Outcome Send(Bytes header) {
    header.resize(32, 0xAA);
    return control.Set(header);
  }

  Bytes memory = Bytes(300, 0x11);
  NvmemControl control{memory};
};

TEST_F(NvmemControlTest, DataIsKept) {
  EXPECT_EQ(Send({0x20, 0x01, 0x02, 0x01, 0x02}), Outcome::kDone);
  Bytes wanted(300, 0x11);
  wanted[0x120] = 1;
  wanted[0x121] = 2;
  EXPECT_EQ(memory, wanted);
}

TEST_F(NvmemControlTest, ReadRequestIsAnsweredWithTheSameBlock) {
  memory[0x120] = 7;
  EXPECT_EQ(Send({0x20, 0x01, 0x82}), Outcome::kDone);
  EXPECT_EQ(memory[0x121], 0x11) << "nothing is written";
  Bytes answer;
  EXPECT_EQ(control.Get(answer), Outcome::kDone);
  Bytes wanted(32, 0xAA);
  const Bytes head = {0x20, 0x01, 0x82, 0x07, 0x11};
  std::copy(head.begin(), head.end(), wanted.begin());
  EXPECT_EQ(answer, wanted);
}

TEST_F(NvmemControlTest, PiecesOutsideTheMemoryFail) {
  EXPECT_EQ(Send({0x2B, 0x01, 0x01}), Outcome::kDone) << "the last byte";
  EXPECT_EQ(Send({0x2C, 0x01, 0x00}), Outcome::kDone) << "an empty piece behind it";
  EXPECT_EQ(Send({0x2D, 0x01, 0x00}), Outcome::kFailed);
  EXPECT_EQ(Send({0x2B, 0x01, 0x02}), Outcome::kFailed);
  EXPECT_EQ(Send({0x2B, 0x01, 0x82}), Outcome::kFailed);
  EXPECT_EQ(Send({0x00, 0x00, 0x1D}), Outcome::kDone);
  EXPECT_EQ(Send({0x00, 0x00, 0x1E}), Outcome::kFailed) << "30 bytes do not fit a block";
  EXPECT_EQ(control.Set(Bytes(31)), Outcome::kWrongLength);
}

TEST_F(NvmemControlTest, RequestThatFailedHasNoAnswer) {
  Bytes answer;
  EXPECT_EQ(Send({0x2B, 0x01, 0x82}), Outcome::kFailed);
  EXPECT_EQ(control.Get(answer), Outcome::kFailed);
  EXPECT_EQ(Send({0x2A, 0x01, 0x82}), Outcome::kDone);
  EXPECT_EQ(control.Get(answer), Outcome::kDone);
}

}  // namespace
