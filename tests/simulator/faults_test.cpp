// The text of a fault, and what faults make of a camera's transfers.
#include "simulator/faults.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>

#include "device/extension_units.h"
#include "simulator/camera.h"
#include "simulator/com_camera.h"
#include "tests/support/scripted_unit.h"

namespace {

using zem::simulator::Camera;
using zem::simulator::Fault;
using zem::simulator::Outcome;
using zem::simulator::ParseFault;

TEST(FaultTextTest, Kinds) {
  EXPECT_EQ(ParseFault("fail@1")->kind, Fault::Kind::kFail);
  EXPECT_EQ(ParseFault("refuse@1")->kind, Fault::Kind::kRefuse);
  EXPECT_EQ(ParseFault("short@1")->kind, Fault::Kind::kShort);
  EXPECT_EQ(ParseFault("length@1")->kind, Fault::Kind::kLength);
  EXPECT_EQ(ParseFault("garbage@1")->kind, Fault::Kind::kGarbage);
  EXPECT_EQ(ParseFault("unplug@1")->kind, Fault::Kind::kUnplug);
  EXPECT_EQ(ParseFault("leave@1")->kind, Fault::Kind::kLeave);
  EXPECT_EQ(ParseFault("replug@1")->kind, Fault::Kind::kReplug);
  EXPECT_EQ(ParseFault("drop@1")->kind, Fault::Kind::kDrop);
  EXPECT_EQ(ParseFault("silent@1")->kind, Fault::Kind::kSilent);
}

TEST(FaultTextTest, Numbers) {
  const auto fault = ParseFault("short@3+2=7");
  ASSERT_TRUE(fault.has_value());
  EXPECT_EQ(fault->first, 3U);
  EXPECT_EQ(fault->count, 2U);
  EXPECT_EQ(fault->value, 7U);
  EXPECT_EQ(ParseFault("refuse@1")->value, 1U);
  EXPECT_EQ(ParseFault("short@1")->value, 0U);
}

TEST(FaultTextTest, AnythingElseIsNone) {
  for (const char* const text : {"", "fail", "fail@", "fail@0", "fail@x", "fail@1x", "fail@1+",
                                 "fail@1=", "failed@1", "fail@-1", "fail@99999999999", "other@1"}) {
    EXPECT_FALSE(ParseFault(text).has_value()) << text;
  }
}

class FaultyCameraTest : public ::testing::Test {
 protected:
  FaultyCameraTest() {
    unit_ = &camera.AddUnit(std::make_unique<zem::testing::ScriptedUnit>(zem::VendorXu));
    unit_->AlwaysAnswer(2, {1, 2, 3, 4});
  }

  Outcome Read() {
    bytes.fill(0xEE);
    return camera.Get(0, 2, bytes, reported);
  }

  Camera camera;
  std::array<std::uint8_t, 4> bytes = {};
  std::uint32_t reported = 0;

 private:
  zem::testing::ScriptedUnit* unit_;
};

TEST_F(FaultyCameraTest, FailHitsItsTransfersOnly) {
  camera.AddFault(*ParseFault("fail@2+2"));
  EXPECT_EQ(Read(), Outcome::kDone);
  EXPECT_EQ(Read(), Outcome::kFailed);
  EXPECT_EQ(bytes[0], 0xEE);
  EXPECT_EQ(reported, 0U);
  EXPECT_EQ(camera.Set(0, 1, {}), Outcome::kFailed);
  EXPECT_EQ(Read(), Outcome::kDone);
}

TEST_F(FaultyCameraTest, RefuseSetsTheStatusByte) {
  camera.AddFault(*ParseFault("refuse@1=5"));
  EXPECT_EQ(Read(), Outcome::kDone);
  EXPECT_EQ(bytes, (std::array<std::uint8_t, 4>{5, 2, 3, 4}));
}

TEST_F(FaultyCameraTest, ShortMovesFewerBytes) {
  camera.AddFault(*ParseFault("short@1=2"));
  EXPECT_EQ(Read(), Outcome::kDone);
  EXPECT_EQ(bytes, (std::array<std::uint8_t, 4>{1, 2, 0xEE, 0xEE}));
  EXPECT_EQ(reported, 2U);
}

TEST_F(FaultyCameraTest, LengthLiesAboutTheCount) {
  camera.AddFault(*ParseFault("length@1=600"));
  EXPECT_EQ(Read(), Outcome::kDone);
  EXPECT_EQ(reported, 600U);
  EXPECT_EQ(bytes[3], 4);
}

TEST_F(FaultyCameraTest, GarbageChangesTheBytesTheSameWayEachTime) {
  camera.AddFault(*ParseFault("garbage@1"));
  EXPECT_EQ(Read(), Outcome::kDone);
  EXPECT_NE(bytes, (std::array<std::uint8_t, 4>{1, 2, 3, 4}));
  EXPECT_EQ(Read(), Outcome::kDone);
  EXPECT_EQ(bytes, (std::array<std::uint8_t, 4>{1, 2, 3, 4}));
}

// Keeps what the host wrote.
class WrittenUnit : public zem::testing::ScriptedUnit {
 public:
  using ScriptedUnit::ScriptedUnit;
  Outcome Set(std::uint16_t /*selector*/, std::span<const std::uint8_t> bytes) override {
    written.emplace_back(bytes.begin(), bytes.end());
    return Outcome::kDone;
  }
  std::vector<Bytes> written;
};

TEST_F(FaultyCameraTest, WritesAreDroppedOrGarbled) {
  auto& unit = camera.AddUnit(std::make_unique<WrittenUnit>(zem::H264Xu));
  camera.AddFault(*ParseFault("drop@1"));
  camera.AddFault(*ParseFault("garbage@2"));
  const std::vector<std::uint8_t> sent = {1, 2, 3, 4};
  for (int transfer = 1; transfer <= 3; ++transfer) {
    EXPECT_EQ(camera.Set(1, 1, sent), Outcome::kDone);
  }
  ASSERT_EQ(unit.written.size(), 2U);
  EXPECT_EQ(unit.written[0].size(), sent.size());
  EXPECT_NE(unit.written[0], sent);
  EXPECT_EQ(unit.written[1], sent);
}

TEST_F(FaultyCameraTest, SilenceAnswersNothingAndDoesNothing) {
  auto& unit = camera.AddUnit(std::make_unique<WrittenUnit>(zem::H264Xu));
  camera.AddFault(*ParseFault("silent@1+3"));
  EXPECT_EQ(Read(), Outcome::kSilent);
  EXPECT_EQ(bytes[0], 0xEE);
  EXPECT_EQ(reported, 0U);
  EXPECT_EQ(camera.Set(1, 1, std::vector<std::uint8_t>{1}), Outcome::kSilent);
  EXPECT_TRUE(unit.written.empty());
  zem::simulator::ControlSetting setting;
  EXPECT_EQ(camera.GetControl(zem::simulator::ControlFamily::kVideoProcessing, 0, setting),
            Outcome::kSilent);
  EXPECT_EQ(Read(), Outcome::kDone);
  EXPECT_EQ(zem::simulator::ResultOf(Outcome::kSilent), static_cast<HRESULT>(0x80070079U));
}

TEST_F(FaultyCameraTest, LeaveEndsTheTransferFirst) {
  auto& unit = camera.AddUnit(std::make_unique<WrittenUnit>(zem::H264Xu));
  int reports = 0;
  camera.SetUnplugObserver([&] { ++reports; });
  camera.AddFault(*ParseFault("leave@2"));
  EXPECT_EQ(Read(), Outcome::kDone);
  EXPECT_EQ(camera.Set(1, 1, std::vector<std::uint8_t>{1, 2}), Outcome::kDone);
  EXPECT_EQ(unit.written.size(), 1U);
  EXPECT_EQ(reports, 1);
  EXPECT_EQ(Read(), Outcome::kUnplugged);
}

TEST_F(FaultyCameraTest, ReplugUnplugsAndAsksForANewOne) {
  std::string reports;
  camera.SetUnplugObserver([&] { reports += "unplugged "; });
  camera.SetReplugObserver([&] { reports += "replug "; });
  camera.AddFault(*ParseFault("replug@2"));
  EXPECT_EQ(Read(), Outcome::kDone);
  EXPECT_EQ(reports, "");
  EXPECT_EQ(Read(), Outcome::kUnplugged);
  EXPECT_EQ(Read(), Outcome::kUnplugged);
  EXPECT_EQ(reports, "unplugged replug ");
}

TEST_F(FaultyCameraTest, UnplugLastsAndIsReportedOnce) {
  int reports = 0;
  camera.SetUnplugObserver([&] { ++reports; });
  camera.AddFault(*ParseFault("unplug@2"));
  EXPECT_EQ(Read(), Outcome::kDone);
  EXPECT_EQ(Read(), Outcome::kUnplugged);
  EXPECT_EQ(Read(), Outcome::kUnplugged);
  EXPECT_EQ(camera.Set(0, 1, {}), Outcome::kUnplugged);
  EXPECT_EQ(reports, 1);
}

TEST_F(FaultyCameraTest, ControlLongerThanTheBufferIsAWrongLength) {
  std::array<std::uint8_t, 3> small = {};
  EXPECT_EQ(camera.Get(0, 2, small, reported), Outcome::kWrongLength);
}

}  // namespace
