// The simulated encoder and the units that speak of it.
#include "simulator/h264_encoder.h"

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "simulator/h264_unit.h"
#include "simulator/skype_unit.h"
#include "simulator/vendor_unit.h"

namespace {

using zem::simulator::Block;
using zem::simulator::H264Encoder;
using zem::simulator::H264Format;
using zem::simulator::H264Unit;
using zem::simulator::Outcome;
using zem::simulator::SkypeUnit;
using Bytes = std::vector<std::uint8_t>;

TEST(H264EncoderTest, ListIsHandedOutInPiecesFromItsBeginningOnRequest) {
  H264Format format;
  format.type = 2;
  format.frameIndex = 7;
  format.width = 0x0102;
  format.height = 0x0304;
  format.subWidth = 0x0506;
  format.subHeight = 0x0708;
  format.maxBitRate = 0x090A0B0C;
  format.minBitRate = 0x0D0E0F10;
  format.maxFps = 60;
  format.minFps = 1;
  H264Encoder encoder({format, H264Format()});
  const H264Encoder::Piece first = {48,   0,    2,    0,    22,   0,    2,    7,
                                    0x02, 0x01, 0x04, 0x03, 0x06, 0x05, 0x08, 0x07,
                                    0x0C, 0x0B, 0x0A, 0x09, 0x10, 0x0F, 0x0E, 0x0D,
                                    60,   1,    22,   0,    1,    0,    0,    0};
  EXPECT_EQ(encoder.NextListPiece(), H264Encoder::Piece()) << "nobody has asked";
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(encoder.RunVcpCommand({0x0A, 0x01}), Block{});
    EXPECT_EQ(encoder.NextListPiece(), first);
    EXPECT_EQ(encoder.NextListPiece()[6], 0xC4) << "highest bit rate of the second format";
    EXPECT_EQ(encoder.NextListPiece(), H264Encoder::Piece()) << "behind the end";
  }
}

TEST(H264EncoderTest, WithoutFormatsTheRequestIsRefused) {
  H264Encoder encoder;
  EXPECT_EQ(encoder.RunVcpCommand({0x0A, 0x01}), (Block{1}));
  EXPECT_EQ(encoder.NextListPiece(), H264Encoder::Piece());
}

TEST(H264EncoderTest, VendorCommandsSetTheEncoder) {
  H264Encoder encoder;
  EXPECT_EQ(encoder.RunIspCommand({0x02, 0x34, 0x12}), Block{});
  EXPECT_EQ(encoder.fps, 0x1234);
  EXPECT_EQ(encoder.RunIspCommand({0x08, 0xFF, 0x78, 0x56}), Block{});
  EXPECT_EQ(encoder.bitRate, 0x5678);
  EXPECT_EQ(encoder.RunIspCommand({0x04}), Block{});
  EXPECT_EQ(encoder.keyFrames, 1U);
  EXPECT_EQ(encoder.RunVcpCommand({0x0B, 13}), Block{});
  EXPECT_EQ(encoder.resolutionCode, 13);
  EXPECT_EQ(encoder.RunVcpCommand({0x0C, 2}), Block{});
  EXPECT_TRUE(encoder.running);
  EXPECT_EQ(encoder.RunVcpCommand({0x0C, 1}), Block{});
  EXPECT_FALSE(encoder.running);
  EXPECT_EQ(encoder.RunVcpCommand({0x23, 4}), Block{});
  EXPECT_EQ(encoder.multicastStream, 4);
  EXPECT_EQ(encoder.RunVcpCommand({0x24, 5}), Block{});
  EXPECT_EQ(encoder.multicastLayer, 5);
  EXPECT_EQ(encoder.RunVcpCommand({0x25, 1, 2, 3, 4, 5, 6, 7}), Block{});
  EXPECT_EQ(encoder.multicastFormat, (Block{0x25, 1, 2, 3, 4, 5, 6, 7}));
}

TEST(H264EncoderTest, OtherCommandsAreNotItsOwn) {
  H264Encoder encoder;
  EXPECT_FALSE(encoder.RunIspCommand({0x08, 0x10}).has_value()) << "a quality";
  EXPECT_FALSE(encoder.RunIspCommand({0x0B}).has_value());
  EXPECT_FALSE(encoder.RunVcpCommand({0x0A, 0x00}).has_value());
  EXPECT_FALSE(encoder.RunVcpCommand({0x06}).has_value());
}

TEST(H264EncoderTest, IsReachedOnTheVendorUnit) {
  const auto encoder = std::make_shared<H264Encoder>(std::vector<H264Format>{H264Format()});
  zem::simulator::VendorUnit unit({}, encoder);
  Bytes reply;
  EXPECT_EQ(unit.Set(1, Bytes{0x02, 25, 0, 0, 0, 0, 0, 0}), Outcome::kDone);
  EXPECT_EQ(unit.Get(2, 8, reply), Outcome::kDone);
  EXPECT_EQ(reply, Bytes(8));
  EXPECT_EQ(encoder->fps, 25);
  EXPECT_EQ(unit.Set(4, Bytes{0x0A, 0x01, 0, 0, 0, 0, 0, 0}), Outcome::kDone);
  EXPECT_EQ(unit.Get(5, 8, reply), Outcome::kDone);
  EXPECT_EQ(reply, Bytes(8));
  EXPECT_EQ(unit.Get(11, 32, reply), Outcome::kDone);
  ASSERT_EQ(reply.size(), 32U);
  EXPECT_EQ(reply[0], 26);
  EXPECT_EQ(reply[2], 1);
}

TEST(SkypeUnitTest, VersionCodeAndSwitch) {
  const auto encoder = std::make_shared<H264Encoder>();
  SkypeUnit unit(21, encoder);
  Bytes version;
  EXPECT_EQ(unit.Get(1, 1, version), Outcome::kDone);
  EXPECT_EQ(version, Bytes{21});
  EXPECT_EQ(unit.Set(1, Bytes{10}), Outcome::kDone);
  EXPECT_EQ(encoder->resolutionCode, 10);
  EXPECT_EQ(unit.Get(1, 1, version), Outcome::kDone);
  EXPECT_EQ(version, Bytes{21}) << "the code is written, not read";
  EXPECT_EQ(unit.Set(15, Bytes{2}), Outcome::kDone);
  EXPECT_TRUE(encoder->running);
  EXPECT_EQ(unit.Set(15, Bytes{1}), Outcome::kDone);
  EXPECT_FALSE(encoder->running);
}

TEST(SkypeUnitTest, OtherControlsAndLengths) {
  SkypeUnit unit(19, std::make_shared<H264Encoder>());
  Bytes bytes;
  EXPECT_EQ(unit.Set(2, Bytes{1}), Outcome::kNoSuchControl);
  EXPECT_EQ(unit.Get(15, 1, bytes), Outcome::kNoSuchControl);
  EXPECT_EQ(unit.Set(1, Bytes{1, 2}), Outcome::kWrongLength);
  EXPECT_EQ(unit.Set(15, Bytes{}), Outcome::kWrongLength);
}

TEST(H264UnitTest, OffersWhatIsProbedAndStartsWithACommit) {
  const auto encoder = std::make_shared<H264Encoder>();
  H264Unit unit(encoder);
  const Bytes wanted(48, 9);
  EXPECT_EQ(unit.Set(1, wanted), Outcome::kDone);
  Bytes offered;
  EXPECT_EQ(unit.Get(1, 48, offered), Outcome::kDone);
  EXPECT_EQ(offered, wanted);
  EXPECT_FALSE(encoder->running);
  EXPECT_EQ(unit.Set(2, Bytes(48, 8)), Outcome::kDone);
  ASSERT_EQ(unit.commits.size(), 1U);
  EXPECT_EQ(unit.commits[0][47], 8);
  EXPECT_TRUE(encoder->running);
}

TEST(H264UnitTest, OtherControlsAndLengths) {
  H264Unit unit(std::make_shared<H264Encoder>());
  Bytes bytes;
  EXPECT_EQ(unit.Set(3, Bytes(48)), Outcome::kNoSuchControl);
  EXPECT_EQ(unit.Get(2, 48, bytes), Outcome::kNoSuchControl);
  EXPECT_EQ(unit.Set(1, Bytes(47)), Outcome::kWrongLength);
  EXPECT_EQ(unit.Set(2, Bytes(49)), Outcome::kWrongLength);
}

}  // namespace
