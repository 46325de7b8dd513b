// Starting and stopping H.264 in each dialect: order, bytes, codes, results.
#include <utility>
#include <vector>

#include "encoding/h264_frame_list.h"
#include "tests/support/device_test.h"
#include "tests/support/h264_list_bytes.h"

namespace {

using zem::testing::DeviceTest;
using zem::testing::kUnknownControl;
using zem::testing::Lines;
using zem::testing::ListBytes;
using zem::testing::ListEntry;
using zem::testing::ListOf;
using zem::testing::ScriptedUnit;
using zem::testing::ServeList;
using zem::testing::SetLine;
using zem::testing::WideLines;

const char* const kVersion = "get skype 1 [1]";
const char* const kVersionFailed = "get skype 1 [1] failed";

// "0b" and "0d" give "set vendor 4: 0b 0d 00 00 00 00 00 00".
std::string Vendor(const std::string& command, const std::string& value) {
  return "set vendor 4: " + command + " " + value + " 00 00 00 00 00 00";
}

std::string Hex(unsigned byte) { return zem::testing::HexText({static_cast<std::uint8_t>(byte)}); }

class H264StartTest : public DeviceTest {
 protected:
  // Gives the handle a list, so that starts send nothing but themselves. Without entries it is the
  // default one.
  void LoadList(const std::vector<ListBytes>& entries = {}) {
    if (!entries.empty()) {
      ServeList(vendor(), ListOf(entries));
    }
    void* list = nullptr;
    EXPECT_GT(ZEMAPI_GetH264FrameList(handle(), &list), 0);
    ZEMAPI_ReleaseH264FrameList(list);
    TakeWire();
    TakeDebuggerLines();
  }

  // Gives the handle a list of one format of type 0 with frame index 5. No list that is read from a
  // camera has one: type 0 marks the entries that are skipped.
  void PutType0(unsigned width, unsigned height) {
    zem::FrameListPtr list = zem::AllocateFrameList(36);
    list->wTotalLength = 36;
    H264FrameInfo format = {};
    format.wLength = 32;
    format.wFrameIndex = 5;
    format.wWidth = static_cast<std::uint16_t>(width);
    format.wHeight = static_cast<std::uint16_t>(height);
    zem::AppendRecord(*list, format);
    static_cast<zem::DeviceHandle*>(handle())->frameList = std::move(list);
  }

  // A Skype unit of this version.
  void AddSkype(std::uint8_t version) { AddUnit(zem::SkypeXu).AlwaysAnswer(1, {version}); }
};

// ---- Which format ----

TEST_F(H264StartTest, NullHandleSendsNothing) {
  EXPECT_EQ(ZEMAPI_SetH264FrameIndex(nullptr, 0), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ZEMAPI_SetH264Mode(nullptr, 640, 480), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ZEMAPI_SetH264Mode(nullptr, 0, 0), ZEM_E_NO_DEVICE);
  EXPECT_EQ(system().comInitializations, 0);
}

TEST_F(H264StartTest, UnknownIndexSendsNothing) {
  LoadList();
  EXPECT_EQ(ZEMAPI_SetH264FrameIndex(handle(), 25), ZEM_E_FAIL);
  EXPECT_EQ(ZEMAPI_SetH264FrameIndex(handle(), 0xFFFF), ZEM_E_FAIL);
  EXPECT_EQ(TakeWire(), Lines());
}

TEST_F(H264StartTest, EmptyListHasNoFormat) {
  LoadList({ListEntry(0, 3, 640, 480)});
  EXPECT_EQ(ZEMAPI_SetH264FrameIndex(handle(), 0), ZEM_E_FAIL);
  EXPECT_EQ(ZEMAPI_SetH264FrameIndex(handle(), 3), ZEM_E_FAIL);
  EXPECT_EQ(TakeWire(), Lines());
}

TEST_F(H264StartTest, FirstOfSeveralFormatsWithTheIndexIsStarted) {
  LoadList({ListEntry(1, 7, 160, 120), ListEntry(1, 9, 640, 480), ListEntry(1, 9, 320, 240)});
  EXPECT_EQ(ZEMAPI_SetH264FrameIndex(handle(), 9), 0);
  EXPECT_EQ(TakeWire(), (Lines{Vendor("0c", "02"), Vendor("0b", "03")}));
}

TEST_F(H264StartTest, IndexIsComparedWithAllItsBits) {
  LoadList({ListEntry(1, 9, 640, 480)});
  EXPECT_EQ(ZEMAPI_SetH264FrameIndex(handle(), 0x109), ZEM_E_FAIL);
}

TEST_F(H264StartTest, FormatOfAnotherTypeSendsNothing) {
  AddSkype(19);
  LoadList({ListEntry(3, 1, 640, 480), ListEntry(255, 2, 640, 480)});
  EXPECT_EQ(ZEMAPI_SetH264FrameIndex(handle(), 1), 0);
  EXPECT_EQ(ZEMAPI_SetH264FrameIndex(handle(), 2), 0);
  EXPECT_EQ(TakeWire(), Lines());
  EXPECT_EQ(TakeDebuggerLines(), WideLines());
}

TEST_F(H264StartTest, ListIsReadBeforeTheFirstStart) {
  EXPECT_EQ(ZEMAPI_SetH264FrameIndex(handle(), 23), 0);
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 4: 0a 01 00 00 00 00 00 00", "get vendor 5 [8]",
                               "get vendor 11 [32]", Vendor("0c", "02"), Vendor("0b", "0a")}));
}

// ---- Type 2: probe and commit ----

// Index 6 of the default list: 1280x720 and 320x180.
const char* const kFirstProbe =
    "set h264 1: 15 16 05 00 a0 25 26 00 03 28 01 00 00 05 d0 02 "
    "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
    "00 43 00 00 00 00 00 00 00 00 00 00 00 00 00 00";
const char* const kSecondProbe =
    "set h264 1: 15 16 05 00 00 bc 34 00 03 28 01 00 40 01 b4 00 "
    "00 00 00 00 00 42 00 00 00 00 00 00 00 00 00 00 "
    "00 05 00 00 00 00 00 00 00 00 00 00 00 00 00 00";
const char* const kOffer = "get h264 1 [48]";
const char* const kZeroCommit =
    "set h264 2: 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
    "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
    "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00";

class H264UnitStartTest : public H264StartTest {
 protected:
  H264UnitStartTest() { unit_ = &AddUnit(zem::H264Xu); }
  ScriptedUnit& unit() { return *unit_; }

 private:
  ScriptedUnit* unit_;
};

// Commits of what the camera offers in the next test.
const char* const kLongCommit =
    "set h264 2: c0 c1 c2 c3 c4 c5 c6 c7 c8 c9 ca cb cc cd ce cf "
    "d0 d1 d2 d3 d4 d5 d6 d7 d8 d9 da db dc dd de df "
    "e0 e1 e2 e3 e4 e5 e6 e7 e8 e9 ea eb ec ed ee ef";
const char* const kShortCommit =
    "set h264 2: 11 22 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
    "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
    "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00";

TEST_F(H264UnitStartTest, WhatTheCameraOffersIsCommitted) {
  LoadList();
  ListBytes offer(48);
  for (std::size_t index = 0; index < offer.size(); ++index) {
    offer[index] = static_cast<std::uint8_t>(0xC0 + index);
  }
  unit().Answer(1, offer);
  unit().Answer(1, {0x11, 0x22});
  EXPECT_EQ(ZEMAPI_SetH264FrameIndex(handle(), 6), 0);
  EXPECT_EQ(TakeWire(),
            (Lines{kFirstProbe, kOffer, kLongCommit, kSecondProbe, kOffer, kShortCommit}))
      << "nothing of the first offer is left in the second";
  EXPECT_EQ(TakeDebuggerLines(), (WideLines{SetLine(0, 48, 2), SetLine(0, 48, 2), SetLine(0, 48, 2),
                                            SetLine(0, 48, 2)}));
}

TEST_F(H264UnitStartTest, FailureOfEachTransfer) {
  LoadList();
  const std::vector<Lines> wires = {
      {kFirstProbe, kZeroCommit, kSecondProbe, kOffer, kZeroCommit},
      {kFirstProbe, kOffer, kZeroCommit, kSecondProbe, kOffer, kZeroCommit},
      {kFirstProbe, kOffer, kZeroCommit, kSecondProbe, kOffer, kZeroCommit},
      {kFirstProbe, kOffer, kZeroCommit, kSecondProbe, kZeroCommit},
      {kFirstProbe, kOffer, kZeroCommit, kSecondProbe, kOffer, kZeroCommit},
      {kFirstProbe, kOffer, kZeroCommit, kSecondProbe, kOffer, kZeroCommit},
  };
  for (std::size_t failed = 0; failed < wires.size(); ++failed) {
    SCOPED_TRACE(failed);
    Lines wanted = wires[failed];
    wanted[failed] += " failed";
    FailTransfer(static_cast<std::uint32_t>(failed + 1));
    EXPECT_EQ(ZEMAPI_SetH264FrameIndex(handle(), 6), 0);
    EXPECT_EQ(TakeWire(), wanted);
  }
}

TEST_F(H264UnitStartTest, FailedProbeCommitsZerosThoughTheCameraHasAnOffer) {
  LoadList();
  unit().AlwaysAnswer(1, ListBytes(48, 0x77));
  FailTransfer(1);
  EXPECT_EQ(ZEMAPI_SetH264FrameIndex(handle(), 6), 0);
  const Lines wire = TakeWire();
  ASSERT_EQ(wire.size(), 5U);
  EXPECT_EQ(wire[1], kZeroCommit);
}

TEST_F(H264UnitStartTest, BitRateOfTheSecondProbeKeepsItsLower32Bits) {
  LoadList({ListEntry(2, 1, 0xFFFE, 0xFFFD, 0xFFFF, 0xFFFF)});
  EXPECT_EQ(ZEMAPI_SetH264FrameIndex(handle(), 1), 0);
  const Lines wire = TakeWire();
  ASSERT_EQ(wire.size(), 6U);
  EXPECT_EQ(wire[0].substr(0, 59), "set h264 1: 15 16 05 00 a0 25 26 00 03 28 01 00 fe ff fd ff");
  EXPECT_EQ(wire[3].substr(0, 59), "set h264 1: 15 16 05 00 3c 00 88 ff 03 28 01 00 ff ff ff ff");
}

TEST_F(H264StartTest, AbsentH264UnitIsNoFailure) {
  LoadList();
  EXPECT_EQ(ZEMAPI_SetH264FrameIndex(handle(), 0), 0);
  EXPECT_EQ(TakeWire(), Lines());
  EXPECT_EQ(TakeDebuggerLines(),
            (WideLines{SetLine(kUnknownControl, 48, 2), SetLine(kUnknownControl, 48, 2),
                       SetLine(kUnknownControl, 48, 2), SetLine(kUnknownControl, 48, 2)}));
}

// ---- Resolution codes ----

struct Codes {
  unsigned width;
  unsigned height;
  unsigned mode;
  unsigned type0;
  unsigned type1;
};

const std::vector<Codes> kCodes = {
    {160, 120, 1, 1, 1},
    {160, 90, 18, 0, 18},
    {320, 240, 2, 2, 2},
    {320, 180, 19, 0, 19},
    {352, 288, 0, 2, 12},
    {432, 244, 21, 0, 21},
    {640, 480, 3, 3, 3},
    {640, 360, 13, 13, 13},
    {960, 720, 4, 4, 4},
    {272, 144, 5, 5, 5},
    {368, 208, 6, 6, 6},
    {480, 272, 7, 7, 7},
    {624, 352, 8, 8, 8},
    {912, 512, 9, 9, 9},
    {1280, 720, 10, 10, 10},
    {1920, 1080, 11, 11, 11},
    {768, 480, 17, 17, 17},
    {800, 448, 0, 0, 14},
    {800, 600, 0, 0, 15},
    {960, 544, 0, 0, 16},
    {1024, 576, 22, 0, 22},
    {1600, 1200, 0, 0, 10},
    // Not in the table.
    {100, 100, 0, 0, 0},
    {432, 240, 0, 0, 0},
    {120, 160, 0, 0, 0},
    {640, 481, 0, 0, 0},
    {65535, 65535, 0, 0, 0},
    {0, 0, 0, 0, 0},
};

std::vector<ListBytes> EntryPerResolution(std::uint8_t type) {
  std::vector<ListBytes> entries;
  for (std::size_t index = 0; index < kCodes.size(); ++index) {
    entries.push_back(ListEntry(type, static_cast<std::uint8_t>(index), kCodes[index].width,
                                kCodes[index].height));
  }
  return entries;
}

TEST_F(H264StartTest, CodesOfType0) {
  for (const Codes& codes : kCodes) {
    PutType0(codes.width, codes.height);
    EXPECT_EQ(ZEMAPI_SetH264FrameIndex(handle(), 5), 0);
    EXPECT_EQ(TakeWire(), (Lines{Vendor("0b", Hex(codes.type0)), Vendor("0c", "02")}));
  }
}

TEST_F(H264StartTest, CodesOfType1) {
  LoadList(EntryPerResolution(1));
  for (std::size_t index = 0; index < kCodes.size(); ++index) {
    EXPECT_EQ(ZEMAPI_SetH264FrameIndex(handle(), static_cast<unsigned short>(index)), 0);
    EXPECT_EQ(TakeWire(), (Lines{Vendor("0c", "02"), Vendor("0b", Hex(kCodes[index].type1))}));
  }
}

TEST_F(H264StartTest, CodesOfMode) {
  for (const Codes& codes : kCodes) {
    if (codes.width == 0) {
      continue;
    }
    EXPECT_EQ(ZEMAPI_SetH264Mode(handle(), codes.width, codes.height), 1);
    EXPECT_EQ(TakeWire(), (Lines{Vendor("0b", Hex(codes.mode)), Vendor("0c", "02")}));
  }
}

TEST_F(H264StartTest, ModeComparesAll32BitsOfASize) {
  EXPECT_EQ(ZEMAPI_SetH264Mode(handle(), 0x10000 + 640, 480), 1);
  EXPECT_EQ(ZEMAPI_SetH264Mode(handle(), 640, 0x10000 + 480), 1);
  EXPECT_EQ(TakeWire(), (Lines{Vendor("0b", "00"), Vendor("0c", "02"), Vendor("0b", "00"),
                               Vendor("0c", "02")}));
}

// ---- Dialects: the switch and the code, in order, through the failure of each transfer ----

// One start or stop, and what it comes to when each of its transfers fails in turn.
struct Start {
  const char* name;
  int skypeVersion;  // negative: no Skype unit
  ZemResult (*run)(void* handle);
  // First that of no failure, then one a transfer: the result, and what is sent.
  std::vector<std::pair<ZemResult, Lines>> outcomes;
};

void PrintTo(const Start& start, std::ostream* out) { *out << start.name; }

ZemResult StartIndex5(void* handle) { return ZEMAPI_SetH264FrameIndex(handle, 5); }
ZemResult StartIndex22(void* handle) { return ZEMAPI_SetH264FrameIndex(handle, 22); }
ZemResult StartMode(void* handle) { return ZEMAPI_SetH264Mode(handle, 640, 480); }
ZemResult StopByHeight(void* handle) { return ZEMAPI_SetH264Mode(handle, 640, 0); }
ZemResult StopByWidth(void* handle) { return ZEMAPI_SetH264Mode(handle, 0, 480); }

const char* const kSkypeOn = "set skype 15: 02";
const char* const kSkypeOff = "set skype 15: 01";
const char* const kSkype640 = "set skype 1: 03";
const char* const kSkype1280 = "set skype 1: 0a";
const char* const kVendorOn = "set vendor 4: 0c 02 00 00 00 00 00 00";
const char* const kVendorOff = "set vendor 4: 0c 01 00 00 00 00 00 00";
const char* const kVendor640 = "set vendor 4: 0b 03 00 00 00 00 00 00";
const char* const kVendor1280 = "set vendor 4: 0b 0a 00 00 00 00 00 00";

std::string Failed(const char* line) { return std::string(line) + " failed"; }

const std::vector<Start> kStarts = {
    {"Type0Skype",
     19,
     StartIndex5,
     {{0, {kVersion, kSkype640, kSkypeOn}},
      {0, {kVersionFailed, kVendor640, kVendorOn}},
      {ZEM_E_FAIL, {kVersion, Failed(kSkype640)}},
      {0, {kVersion, kSkype640, Failed(kSkypeOn)}}}},
    {"Type0Vendor",
     20,
     StartIndex5,
     {{0, {kVersion, kVendor640, kVendorOn}},
      {0, {kVersionFailed, kVendor640, kVendorOn}},
      {ZEM_E_FAIL, {kVersion, Failed(kVendor640)}},
      {0, {kVersion, kVendor640, Failed(kVendorOn)}}}},
    {"Type0WithoutSkypeUnit",
     -1,
     StartIndex5,
     {{0, {kVendor640, kVendorOn}},
      {ZEM_E_FAIL, {Failed(kVendor640)}},
      {0, {kVendor640, Failed(kVendorOn)}}}},
    {"Type1Skype",
     0,
     StartIndex22,
     {{0, {kVersion, kSkypeOn, kSkype1280}},
      {0, {kVersionFailed, kVendorOn, kVendor1280}},
      {0, {kVersion, Failed(kSkypeOn)}},
      {ZEM_E_FAIL, {kVersion, kSkypeOn, Failed(kSkype1280)}}}},
    {"Type1Vendor",
     255,
     StartIndex22,
     {{0, {kVersion, kVendorOn, kVendor1280}},
      {0, {kVersionFailed, kVendorOn, kVendor1280}},
      {0, {kVersion, Failed(kVendorOn)}},
      {ZEM_E_FAIL, {kVersion, kVendorOn, Failed(kVendor1280)}}}},
    {"Type1WithoutSkypeUnit",
     -1,
     StartIndex22,
     {{0, {kVendorOn, kVendor1280}},
      {0, {Failed(kVendorOn)}},
      {ZEM_E_FAIL, {kVendorOn, Failed(kVendor1280)}}}},
    {"ModeSkype",
     19,
     StartMode,
     {{1, {kVersion, kSkype640, kSkypeOn}},
      {1, {kVersionFailed, kVendor640, kVendorOn}},
      {0, {kVersion, Failed(kSkype640)}},
      {0, {kVersion, kSkype640, Failed(kSkypeOn)}}}},
    {"ModeVendor",
     20,
     StartMode,
     {{1, {kVersion, kVendor640, kVendorOn}},
      {1, {kVersionFailed, kVendor640, kVendorOn}},
      {ZEM_E_FAIL, {kVersion, Failed(kVendor640)}},
      {0, {kVersion, kVendor640, Failed(kVendorOn)}}}},
    {"ModeWithoutSkypeUnit",
     -1,
     StartMode,
     {{1, {kVendor640, kVendorOn}},
      {ZEM_E_FAIL, {Failed(kVendor640)}},
      {0, {kVendor640, Failed(kVendorOn)}}}},
    {"StopSkype",
     19,
     StopByHeight,
     {{1, {kVersion, kSkypeOff}},
      {1, {kVersionFailed, kVendorOff}},
      {0, {kVersion, Failed(kSkypeOff)}}}},
    {"StopVendor",
     20,
     StopByWidth,
     {{1, {kVersion, kVendorOff}},
      {1, {kVersionFailed, kVendorOff}},
      {0, {kVersion, Failed(kVendorOff)}}}},
    {"StopWithoutSkypeUnit", -1, StopByHeight, {{1, {kVendorOff}}, {0, {Failed(kVendorOff)}}}},
};

class DialectTest : public H264StartTest, public ::testing::WithParamInterface<Start> {
 protected:
  DialectTest() {
    if (GetParam().skypeVersion >= 0) {
      AddSkype(static_cast<std::uint8_t>(GetParam().skypeVersion));
    }
  }

  // The list that the start chooses from: index 5 is of type 0, 22 the default list's 1280x720.
  void PrepareList() {
    if (GetParam().run == StartIndex5) {
      PutType0(640, 480);
    } else {
      LoadList();
    }
  }
};

TEST_P(DialectTest, OutcomeOfEachFailure) {
  PrepareList();
  const auto& outcomes = GetParam().outcomes;
  for (std::size_t failed = 0; failed < outcomes.size(); ++failed) {
    SCOPED_TRACE(failed);
    if (failed > 0) {
      FailTransfer(static_cast<std::uint32_t>(failed));
    }
    EXPECT_EQ(GetParam().run(handle()), outcomes[failed].first);
    EXPECT_EQ(TakeWire(), outcomes[failed].second);
  }
  EXPECT_EQ(zem::simulator::liveComObjects, 1) << "the handle's filter";
}

INSTANTIATE_TEST_SUITE_P(Starts, DialectTest, ::testing::ValuesIn(kStarts),
                         [](const auto& parameters) { return parameters.param.name; });

TEST_F(H264StartTest, VersionUpTo19IsSpokenToOnTheSkypeUnit) {
  ScriptedUnit& skype = AddUnit(zem::SkypeXu);
  for (unsigned version = 0; version < 256; ++version) {
    skype.Answer(1, {static_cast<std::uint8_t>(version)});
    EXPECT_EQ(ZEMAPI_SetH264Mode(handle(), 0, 0), 1);
    EXPECT_EQ(TakeWire(), (Lines{kVersion, version <= 19 ? kSkypeOff : kVendorOff})) << version;
  }
}

TEST_F(H264StartTest, VersionThatIsNotMovedCountsAsZero) {
  AddUnit(zem::SkypeXu).Answer(1, {});
  EXPECT_EQ(ZEMAPI_SetH264Mode(handle(), 0, 0), 1);
  EXPECT_EQ(TakeWire(), (Lines{kVersion, kSkypeOff}));
}

TEST_F(H264StartTest, LinesOfASkypeStart) {
  AddSkype(19);
  EXPECT_EQ(ZEMAPI_SetH264Mode(handle(), 640, 480), 1);
  EXPECT_EQ(TakeDebuggerLines(), (WideLines{SetLine(0, 1, 2), SetLine(0, 1, 2)}));
}

TEST_F(H264StartTest, LinesOfAVendorStart) {
  EXPECT_EQ(ZEMAPI_SetH264Mode(handle(), 640, 480), 1);
  EXPECT_EQ(TakeDebuggerLines(), (WideLines{SetLine(0, 8), SetLine(0, 8)}));
}

TEST_F(H264StartTest, CameraWithoutTopology) {
  LoadList();
  gate.RefuseAll("QueryInterface(IKsTopologyInfo)");
  EXPECT_EQ(ZEMAPI_SetH264FrameIndex(handle(), 6), 0) << "type 2";
  EXPECT_EQ(ZEMAPI_SetH264FrameIndex(handle(), 22), 0) << "type 1: not switched on";
  EXPECT_EQ(ZEMAPI_SetH264FrameIndex(handle(), 25), ZEM_E_FAIL);
  EXPECT_EQ(ZEMAPI_SetH264Mode(handle(), 640, 480), ZEM_E_FAIL);
  EXPECT_EQ(ZEMAPI_SetH264Mode(handle(), 0, 0), 0);
  PutType0(640, 480);
  EXPECT_EQ(ZEMAPI_SetH264FrameIndex(handle(), 5), ZEM_E_FAIL);
  EXPECT_EQ(TakeWire(), Lines());
  EXPECT_EQ(TakeDebuggerLines(), WideLines());
}

}  // namespace
