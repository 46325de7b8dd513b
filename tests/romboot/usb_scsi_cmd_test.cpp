// The channel to a camera in ROM boot: the probe, both forms of the pass-through block, retries and
// reports, download and storage writes.
#include "romboot/usb_scsi_cmd.h"

#include <array>
#include <limits>

#include "tests/support/request_block.h"
#include "tests/support/rom_boot_test.h"

namespace {

using zem::UsbScsiCmd;
using zem::testing::Bytes;
using zem::testing::InOrder;
using zem::testing::kGeneralFailure;
using zem::testing::kTimeout;
using zem::testing::Lines;
using zem::testing::PartOf;
using zem::testing::RequestBlock;
using zem::testing::RomBootTest;
using zem::testing::ScriptedVolume;
using zem::testing::SomeBytes;
using zem::testing::VolumeControl;
using zem::testing::VolumePath;
using zem::testing::WideLines;

using UsbScsiCmdTest = RomBootTest;

const WideLines kDividerLines = {L"Set addr div = 1\r\n", L"Storage Address Divider=0x1 \r\n"};

// ---- Construction and layout ----

TEST_F(UsbScsiCmdTest, StartsWithNothingFound) {
  const UsbScsiCmd scsi;
  EXPECT_EQ(scsi.signature, (std::array<std::uint8_t, 4>{}));
  EXPECT_EQ(scsi.addressDivider, 1U);
  EXPECT_EQ(scsi.volume, nullptr);
  EXPECT_EQ(scsi.deviceKind, 0U);
}

TEST_F(UsbScsiCmdTest, FieldsFollowEachOtherBehindTheVirtualTable) {
  const UsbScsiCmd scsi;
  const auto offset = [&](const void* field) {
    return static_cast<const char*>(field) - reinterpret_cast<const char*>(&scsi);
  };
  EXPECT_EQ(offset(&scsi.signature), 8);
  EXPECT_EQ(offset(&scsi.addressDivider), 12);
  EXPECT_EQ(offset(&scsi.volume), 16);
  EXPECT_EQ(offset(&scsi.deviceKind), 24);
}

TEST_F(UsbScsiCmdTest, DestructorClosesTheVolume) {
  {
    UsbScsiCmd scsi;
    ASSERT_EQ(scsi.OpenStorage(), 1);
    EXPECT_EQ(system().OpenVolumePaths(), std::vector<std::wstring>{VolumePath(L'F')});
  }
  EXPECT_TRUE(system().OpenVolumePaths().empty());
}

// ---- Probe ----

TEST_F(UsbScsiCmdTest, WithoutACameraEveryLetterFromCToZIsTriedOnceInOrder) {
  system().volumes.clear();
  UsbScsiCmd scsi;
  EXPECT_EQ(scsi.OpenStorage(), 0);
  EXPECT_EQ(scsi.volume, nullptr);
  EXPECT_EQ(scsi.deviceKind, 0U);
  EXPECT_EQ(
      system().volumePaths,
      (std::vector<std::wstring>{
          L"\\\\.\\C:", L"\\\\.\\D:", L"\\\\.\\E:", L"\\\\.\\F:", L"\\\\.\\G:", L"\\\\.\\H:",
          L"\\\\.\\I:", L"\\\\.\\J:", L"\\\\.\\K:", L"\\\\.\\L:", L"\\\\.\\M:", L"\\\\.\\N:",
          L"\\\\.\\O:", L"\\\\.\\P:", L"\\\\.\\Q:", L"\\\\.\\R:", L"\\\\.\\S:", L"\\\\.\\T:",
          L"\\\\.\\U:", L"\\\\.\\V:", L"\\\\.\\W:", L"\\\\.\\X:", L"\\\\.\\Y:", L"\\\\.\\Z:"}));
  EXPECT_EQ(TakeEvents(), Lines());
}

TEST_F(UsbScsiCmdTest, TheWayToABootLoaderInOrder) {
  UsbScsiCmd scsi;
  ASSERT_EQ(scsi.OpenStorage(), 1);
  EXPECT_EQ(
      TakeEvents(),
      (Lines{"in 12 00 00 00 24 00 [36]", "in fa 55 66 01 00 00 00 00 00 00 00 00 00 00 00 00 [16]",
             "line Set addr div = 1\r\n", "line Storage Address Divider=0x1 \r\n"}))
      << "nothing is waited for before data in";
}

TEST_F(UsbScsiCmdTest, LettersBehindTheCameraAreNotTried) {
  UsbScsiCmd scsi;
  EXPECT_EQ(scsi.OpenStorage(), 1);
  EXPECT_EQ(system().volumePaths,
            (std::vector<std::wstring>{L"\\\\.\\C:", L"\\\\.\\D:", L"\\\\.\\E:", L"\\\\.\\F:"}));
}

TEST_F(UsbScsiCmdTest, InquiryBlockByteByByte) {
  UsbScsiCmd scsi;
  ASSERT_EQ(scsi.OpenStorage(), 1);
  const VolumeControl& inquiry = volume.controls.at(0);
  EXPECT_EQ(inquiry.code, 0x4D004U);
  EXPECT_EQ(inquiry.inputLength, 56U);
  EXPECT_EQ(inquiry.outputLength, 128U);
  EXPECT_EQ(inquiry.block, RequestBlock({.cdbLength = 6,
                                         .dataIn = 1,
                                         .length = {36},
                                         .seconds = 2,
                                         .dataOffset = 92,
                                         .cdb = {0x12, 0x00, 0x00, 0x00, 0x24, 0x00}}));
}

TEST_F(UsbScsiCmdTest, IdentifyBlockByteByByte) {
  UsbScsiCmd scsi;
  ASSERT_EQ(scsi.OpenStorage(), 1);
  ASSERT_EQ(volume.controls.size(), 2U);
  const VolumeControl& identify = volume.controls.at(1);
  EXPECT_EQ(identify.code, 0x4D004U);
  EXPECT_EQ(identify.inputLength, 56U);
  EXPECT_EQ(identify.outputLength, 108U);
  EXPECT_EQ(identify.block, RequestBlock({.dataIn = 1,
                                          .length = {16},
                                          .seconds = 2,
                                          .dataOffset = 92,
                                          .cdb = {0xFA, 0x55, 0x66, 0x01},
                                          .firstData = 0x33}))
      << "with the sentinel where the reply is to be";
}

TEST_F(UsbScsiCmdTest, VolumesOfAnotherResponseDataFormatAreNeverIdentified) {
  for (const std::uint8_t format : Bytes{0x00, 0x02, 0x11, 0xFF}) {
    volume.inquiry = {0x00, 0x80, 0x02, format};
    UsbScsiCmd scsi;
    EXPECT_EQ(scsi.OpenStorage(), 0);
    EXPECT_EQ(TakeEvents(), Lines{"in 12 00 00 00 24 00 [36]"});
    leftOpen.push_back(VolumePath(L'F'));
  }
}

TEST_F(UsbScsiCmdTest, FailedInquiryIsNeitherRetriedNorReported) {
  volume.FailAll(0x12, kGeneralFailure);
  volume.repliesInSpiteOfFailure = true;
  UsbScsiCmd scsi;
  EXPECT_EQ(scsi.OpenStorage(), 0);
  EXPECT_EQ(TakeEvents(), Lines{"in 12 00 00 00 24 00 [36] failed"});
  leftOpen = {VolumePath(L'F')};
}

TEST_F(UsbScsiCmdTest, AnInquiryThatLeavesItsReplyOutIsNotAnsweredByTheVolumeBefore) {
  ScriptedVolume disk;
  disk.identify = {0};
  Attach(L'E', disk);
  volume.inquiry.clear();
  UsbScsiCmd scsi;
  EXPECT_EQ(scsi.OpenStorage(), 0);
  EXPECT_EQ(TakeCommands(), Lines{"in 12 00 00 00 24 00 [36]"});
  leftOpen = {VolumePath(L'E'), VolumePath(L'F')};
}

TEST_F(UsbScsiCmdTest, RejectedVolumesStayOpenAndTheNextLetterIsTried) {
  ScriptedVolume otherFormat;
  otherFormat.inquiry[3] = 2;
  ScriptedVolume noCamera;
  noCamera.identify = {'d', 'i', 's', 'k'};
  Attach(L'C', otherFormat);
  Attach(L'D', noCamera);
  {
    UsbScsiCmd scsi;
    ASSERT_EQ(scsi.OpenStorage(), 1);
    EXPECT_EQ(scsi.deviceKind, 1U);
    EXPECT_EQ(system().OpenVolumePaths(),
              (std::vector<std::wstring>{VolumePath(L'C'), VolumePath(L'D'), VolumePath(L'F')}));
    EXPECT_EQ(scsi.volume, &system().openedVolumes.back());
  }
  leftOpen = {VolumePath(L'C'), VolumePath(L'D')};
}

TEST_F(UsbScsiCmdTest, AfterLetterZTheVolumeIsNullAndTheLastCandidateOpen) {
  volume.identify = {'d', 'i', 's', 'k'};
  UsbScsiCmd scsi;
  EXPECT_EQ(scsi.OpenStorage(), 0);
  EXPECT_EQ(scsi.volume, nullptr);
  EXPECT_EQ(system().volumePaths.size(), 24U);
  EXPECT_EQ(TakeDebuggerLines(), kDividerLines);
  leftOpen = {VolumePath(L'F')};
}

TEST_F(UsbScsiCmdTest, AnotherProbeStartsFromNothingFoundAndReplacesTheVolume) {
  UsbScsiCmd scsi;
  ASSERT_EQ(scsi.OpenStorage(), 1);
  scsi.addressDivider = 7;
  ASSERT_EQ(scsi.OpenStorage(), 1);
  EXPECT_EQ(scsi.addressDivider, 1U);
  system().volumes.clear();
  EXPECT_EQ(scsi.OpenStorage(), 0);
  EXPECT_EQ(scsi.deviceKind, 0U);
  EXPECT_EQ(scsi.volume, nullptr);
  EXPECT_EQ(scsi.signature, (std::array<std::uint8_t, 4>{'V', 'S', 'N', '3'}));
  leftOpen = {VolumePath(L'F'), VolumePath(L'F')};
}

// ---- What answers ----

struct Identity {
  Bytes reply;
  int found;
  std::uint32_t kind;
  std::array<std::uint8_t, 4> signature;
};

TEST_F(UsbScsiCmdTest, DeviceKindsAndSignatures) {
  const std::vector<Identity> identities = {
      {{0xAA, 0x55, 0, 0, 'V', 'S', 'N', '2'}, 1, 1, {'V', 'S', 'N', '2'}},
      {{0xAA, 0x55, 9, 9, 'V', 'S', 'N', '3', 9}, 1, 1, {'V', 'S', 'N', '3'}},
      {{0xAA, 0x55, 0, 0, 'M', 'C', 'Y', '1', 'U', 'P', 'D'}, 1, 1, {0x0D, 0x01, 0x89, 0x85}},
      {{0xAA, 0x55, 0, 0, 'V', 'S', 'N', '4'}, 1, 1, {0, 0, 0, 0}},
      {{0xAA, 0x55, 0, 0, 'M', 'C', 'Y', '1', 'U', 'P', 'X'}, 1, 1, {0, 0, 0, 0}},
      {{0xAA, 0x55}, 1, 1, {0, 0, 0, 0}},
      // A boot loader comes first.
      {{0xAA, 0x55, 0, 0, 0, 0, 0, 0, 0, 'Z', 'E', 'M'}, 1, 1, {0, 0, 0, 0}},
      {{0, 0, 0, 0, 0, 0, 0, 0, 0, 'Z', 'E', 'M'}, 1, 2, {0, 0, 0, 0}},
      {{0xAA, 0x54, 0, 0, 'V', 'S', 'N', '2', 0, 'Z', 'E', 'M'}, 1, 2, {0, 0, 0, 0}},
      {{0, 0, 0, 0, 0, 0, 0, 0, 'Z', 'E', 'M'}, 0, 0, {0, 0, 0, 0}},
      {{0, 0, 0, 0, 0, 0, 0, 0, 0, 'Z', 'E', 'N'}, 0, 0, {0, 0, 0, 0}},
      {{0x55, 0xAA, 0, 0, 'V', 'S', 'N', '2'}, 0, 0, {0, 0, 0, 0}},
      {{}, 0, 0, {0, 0, 0, 0}},
  };
  for (std::size_t index = 0; index < identities.size(); ++index) {
    SCOPED_TRACE(index);
    const Identity& identity = identities[index];
    volume.identify = identity.reply;
    UsbScsiCmd scsi;
    EXPECT_EQ(scsi.OpenStorage(), identity.found);
    EXPECT_EQ(scsi.deviceKind, identity.kind);
    EXPECT_EQ(scsi.signature, identity.signature);
    EXPECT_EQ(TakeDebuggerLines(), kDividerLines);
    if (identity.found == 0) {
      leftOpen.push_back(VolumePath(L'F'));
    }
  }
}

TEST_F(UsbScsiCmdTest, AnUnknownSignatureLeavesTheLastOne) {
  UsbScsiCmd scsi;
  scsi.signature = {1, 2, 3, 4};
  volume.identify = {0xAA, 0x55, 0, 0, 'V', 'S', 'N', '4'};
  EXPECT_EQ(scsi.OpenStorage(), 1);
  EXPECT_EQ(scsi.deviceKind, 1U);
  EXPECT_EQ(scsi.signature, (std::array<std::uint8_t, 4>{1, 2, 3, 4}));
}

TEST_F(UsbScsiCmdTest, AnIdentifyThatFailsIsNoCameraWhateverItLeftBehind) {
  for (const Bytes& reply : {Bytes{0xAA, 0x55, 0, 0, 'V', 'S', 'N', '2'},
                             Bytes{0, 0, 0, 0, 0, 0, 0, 0, 0, 'Z', 'E', 'M'}}) {
    volume.identify = reply;
    volume.FailAll(0x01, kTimeout);
    volume.repliesInSpiteOfFailure = true;
    UsbScsiCmd scsi;
    EXPECT_EQ(scsi.OpenStorage(), 0);
    EXPECT_EQ(scsi.deviceKind, 0U);
    EXPECT_EQ(scsi.signature, (std::array<std::uint8_t, 4>{}));
    EXPECT_EQ(TakeEvents(),
              (Lines{"in 12 00 00 00 24 00 [36]",
                     "in fa 55 66 01 00 00 00 00 00 00 00 00 00 00 00 00 [16] failed",
                     "line SendScsiCmdIIn Failed, Erroe=0x79 \r\n", "line Set addr div = 1\r\n",
                     "line Storage Address Divider=0x1 \r\n"}));
    leftOpen.push_back(VolumePath(L'F'));
  }
}

TEST_F(UsbScsiCmdTest, AReplyThatNeverArrivesIsNoCamera) {
  ScriptedVolume bootLoader;
  bootLoader.identify = {0xAA, 0x54};
  Attach(L'E', bootLoader);
  volume.identify.clear();
  UsbScsiCmd scsi;
  EXPECT_EQ(scsi.OpenStorage(), 0);
  EXPECT_EQ(PartOf(volume.controls.at(1).block, 92, 4), (Bytes{0x33, 0, 0, 0}));
  leftOpen = {VolumePath(L'E'), VolumePath(L'F')};
}

// ---- Address divider ----

TEST_F(UsbScsiCmdTest, DividerIsSentWhileTheProcessWideFlagIsSet) {
  zem::sendAddressDivider = 1;
  UsbScsiCmd scsi;
  ASSERT_EQ(scsi.OpenStorage(), 1);
  ASSERT_EQ(volume.controls.size(), 3U);
  EXPECT_EQ(volume.controls[2].sent, (Bytes{1, 0, 0, 0}));
  EXPECT_EQ(
      TakeEvents(),
      (Lines{"in 12 00 00 00 24 00 [36]", "in fa 55 66 01 00 00 00 00 00 00 00 00 00 00 00 00 [16]",
             "line Set addr div = 1\r\n", "line Send addr div = 1\r\n", "sleep 10",
             "out fa 55 66 0f 00 00 00 04 00 00 00 00 00 00 00 00 [4]",
             "line Storage Address Divider=0x1 \r\n"}));
}

TEST_F(UsbScsiCmdTest, ADividerThatIsRefusedChangesNothing) {
  zem::sendAddressDivider = 1;
  volume.FailAll(0x0F, kTimeout);
  UsbScsiCmd scsi;
  EXPECT_EQ(scsi.OpenStorage(), 1);
  EXPECT_EQ(
      TakeEvents(),
      (Lines{"in 12 00 00 00 24 00 [36]", "in fa 55 66 01 00 00 00 00 00 00 00 00 00 00 00 00 [16]",
             "line Set addr div = 1\r\n", "line Send addr div = 1\r\n", "sleep 10",
             "out fa 55 66 0f 00 00 00 04 00 00 00 00 00 00 00 00 [4] failed",
             "line SendScsiCmdIOut Failed, Erroe=0x79 \r\n",
             "line Storage Address Divider=0x1 \r\n"}));
}

TEST_F(UsbScsiCmdTest, DividerIsSentAlsoAfterAFailedIdentify) {
  zem::sendAddressDivider = 1;
  volume.FailAll(0x01, kTimeout);
  UsbScsiCmd scsi;
  scsi.addressDivider = 7;
  EXPECT_EQ(scsi.OpenStorage(), 0);
  EXPECT_EQ(scsi.addressDivider, 1U);
  EXPECT_EQ(TakeEvents(),
            (Lines{"in 12 00 00 00 24 00 [36]",
                   "in fa 55 66 01 00 00 00 00 00 00 00 00 00 00 00 00 [16] failed",
                   "line SendScsiCmdIIn Failed, Erroe=0x79 \r\n", "line Set addr div = 1\r\n",
                   "line Send addr div = 1\r\n", "sleep 10",
                   "out fa 55 66 0f 00 00 00 04 00 00 00 00 00 00 00 00 [4]",
                   "line Storage Address Divider=0x1 \r\n"}));
  leftOpen = {VolumePath(L'F')};
}

// ---- Commands ----

// A channel that has found its camera; what that did is forgotten.
class OpenedChannelTest : public RomBootTest {
 protected:
  OpenedChannelTest() {
    EXPECT_EQ(scsi.OpenStorage(), 1);
    TakeEvents();
  }
  UsbScsiCmd scsi;
};

TEST_F(OpenedChannelTest, DirectBlockByteByByte) {
  std::array<std::uint8_t, 16> cdb = {0xE0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
  Bytes data = SomeBytes(0x12345);
  EXPECT_EQ(scsi.SendScsiCmd(0, 0, 0x12345, cdb.data(), data.data()), 1);
  ASSERT_EQ(volume.controls.size(), 1U);
  const VolumeControl& control = volume.controls[0];
  EXPECT_EQ(control.code, 0x4D014U);
  EXPECT_EQ(control.inputLength, 96U);
  EXPECT_EQ(control.outputLength, 96U);
  EXPECT_EQ(
      control.block,
      RequestBlock({.dataIn = 0, .length = {0x45, 0x23, 0x01, 0x00}, .seconds = 10, .cdb = cdb}));
  EXPECT_EQ(control.data, data.data()) << "the caller's buffer goes to the driver without a copy";
  EXPECT_EQ(control.sent, data);
  EXPECT_EQ(TakeEvents(),
            (Lines{"sleep 10", "out e0 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f [74565]"}));
}

TEST_F(OpenedChannelTest, BufferedBlockByteByByte) {
  std::array<std::uint8_t, 16> cdb = {0xE0, 1, 2, 0x77, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
  volume.answers[0x77] = {SomeBytes(0x8000)};
  Bytes data(0x8001, 0xEE);
  EXPECT_EQ(scsi.SendScsiCmd(0, 1, 0x8000, cdb.data(), data.data()), 1);
  ASSERT_EQ(volume.controls.size(), 1U);
  const VolumeControl& control = volume.controls[0];
  EXPECT_EQ(control.code, 0x4D004U);
  EXPECT_EQ(control.inputLength, 56U);
  EXPECT_EQ(control.outputLength, 0x8000U + 92U);
  EXPECT_EQ(
      control.block,
      RequestBlock(
          {.dataIn = 1, .length = {0x00, 0x80, 0, 0}, .seconds = 2, .dataOffset = 92, .cdb = cdb}));
  EXPECT_EQ(PartOf(data, 0, 0x8000), SomeBytes(0x8000));
  EXPECT_EQ(data[0x8000], 0xEE);
  EXPECT_EQ(TakeEvents(), Lines{"in e0 01 02 77 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f [32768]"});
}

TEST_F(OpenedChannelTest, AnyStampBut0OverwritesBytes0To2OfTheCallersCdb) {
  for (const int stamp :
       {1, 2, 3, 0x100, 0x10000, 0x1000000, -1, std::numeric_limits<int>::min()}) {
    for (const int direction : {0, 1}) {
      SCOPED_TRACE(stamp);
      std::array<std::uint8_t, 16> cdb = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
      EXPECT_EQ(scsi.SendScsiCmd(stamp, direction, 0, cdb.data(), nullptr), 1);
      EXPECT_EQ(cdb, (std::array<std::uint8_t, 16>{0xFA, 0x55, 0x66, 4, 5, 6, 7, 8, 9, 10, 11, 12,
                                                   13, 14, 15, 16}));
      EXPECT_EQ(PartOf(volume.controls.back().cdb, 0, 4), (Bytes{0xFA, 0x55, 0x66, 4}));
    }
  }
}

TEST_F(OpenedChannelTest, WithoutAStampTheCdbGoesOutAndStaysAsItIs) {
  for (const int direction : {0, 1}) {
    std::array<std::uint8_t, 16> cdb = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16};
    const auto before = cdb;
    EXPECT_EQ(scsi.SendScsiCmd(0, direction, 0, cdb.data(), nullptr), 1);
    EXPECT_EQ(cdb, before);
    EXPECT_EQ(volume.controls.back().cdb, Bytes(before.begin(), before.end()));
  }
}

TEST_F(OpenedChannelTest, EveryDirectionBut1GoesOut) {
  std::array<std::uint8_t, 16> cdb = {};
  for (const int direction : {0, 2, -1}) {
    EXPECT_EQ(scsi.SendScsiCmd(1, direction, 0, cdb.data(), nullptr), 1);
    EXPECT_FALSE(volume.controls.back().IsIn());
  }
}

TEST_F(OpenedChannelTest, NothingIsCopiedAfterAFailureOrForNoBytes) {
  std::array<std::uint8_t, 16> cdb = {0, 0, 0, 0x77};
  std::array<std::uint8_t, 2> data = {0xEE, 0xEE};
  EXPECT_EQ(scsi.SendScsiCmd(1, 1, 0, cdb.data(), data.data()), 1);
  volume.answers[0x77] = {{1, 2}};
  volume.repliesInSpiteOfFailure = true;
  volume.Fail(1, kTimeout);
  EXPECT_EQ(scsi.SendScsiCmd(1, 1, 2, cdb.data(), data.data()), 0);
  EXPECT_EQ(data, (std::array<std::uint8_t, 2>{0xEE, 0xEE}));
}

TEST_F(OpenedChannelTest, DataInIsLimitedToTheBuffer) {
  std::array<std::uint8_t, 16> cdb = {0, 0, 0, 0x77};
  volume.answers[0x77] = {SomeBytes(65536)};
  Bytes data(65536);
  EXPECT_EQ(scsi.SendScsiCmd(1, 1, 65536, cdb.data(), data.data()), 1);
  EXPECT_EQ(data, SomeBytes(65536));
  EXPECT_EQ(volume.controls.back().outputLength, 65628U);
  TakeEvents();
  EXPECT_EQ(scsi.SendScsiCmd(1, 1, 65537, cdb.data(), data.data()), 0);
  EXPECT_EQ(scsi.SendScsiCmd(1, 1, 0xFFFFFFFF, cdb.data(), data.data()), 0);
  EXPECT_EQ(TakeEvents(), Lines());
}

TEST_F(OpenedChannelTest, WithoutAVolumeACommandFails) {
  scsi.CloseVolume();
  EXPECT_EQ(scsi.volume, nullptr);
  std::array<std::uint8_t, 16> cdb = {};
  EXPECT_EQ(scsi.SendScsiCmd(1, 0, 0, cdb.data(), nullptr), 0);
  scsi.CloseVolume();
  EXPECT_EQ(TakeEvents(),
            (Lines{"close \\\\.\\F:", "sleep 10", "line SendScsiCmdIOut Failed, Erroe=0x6 \r\n"}));
  invalidVolumeCalls = 1;
}

// ---- Retries and reports ----

struct Direction {
  int value;
  std::string name;
  Lines begin;  // what comes before the first attempt
  std::string command;
};

const std::vector<Direction>& Directions() {
  static const std::vector<Direction> directions = {
      {1, "SendScsiCmdIIn", {}, "in fa 55 66 00 00 00 00 00 00 00 00 00 00 00 00 00 [0]"},
      {0,
       "SendScsiCmdIOut",
       {"sleep 10"},
       "out fa 55 66 00 00 00 00 00 00 00 00 00 00 00 00 00 [0]"}};
  return directions;
}

// The events of so many attempts that fail, with the pauses between them.
Lines FailedAttempts(const Direction& direction, std::size_t count) {
  Lines events = direction.begin;
  for (std::size_t attempt = 0; attempt < count; ++attempt) {
    if (attempt > 0) {
      events.emplace_back("sleep 500");
    }
    events.push_back(direction.command + " failed");
  }
  return events;
}

TEST_F(OpenedChannelTest, Error31IsRetriedUpToFiveTimesHalfASecondApart) {
  std::array<std::uint8_t, 16> cdb = {};
  for (const Direction& direction : Directions()) {
    for (std::size_t failures = 0; failures <= 5; ++failures) {
      SCOPED_TRACE(failures);
      volume.Fail(1, kGeneralFailure, failures);
      EXPECT_EQ(scsi.SendScsiCmd(1, direction.value, 0, cdb.data(), nullptr), 1);
      Lines events = FailedAttempts(direction, failures);
      if (failures > 0) {
        events.emplace_back("sleep 500");
      }
      events.push_back(direction.command);
      EXPECT_EQ(TakeEvents(), events);
    }
  }
}

TEST_F(OpenedChannelTest, TheSixthFailureWithError31IsReported) {
  system().errorTexts[31] = L"A device attached to the system is not functioning.\r\n";
  std::array<std::uint8_t, 16> cdb = {};
  for (const Direction& direction : Directions()) {
    volume.Fail(1, kGeneralFailure, 6);
    EXPECT_EQ(scsi.SendScsiCmd(1, direction.value, 0, cdb.data(), nullptr), 0);
    EXPECT_EQ(TakeEvents(), InOrder({FailedAttempts(direction, 6),
                                     {"line " + direction.name +
                                      " Failed, Erroe=0x1F A device attached to the system is not "
                                      "functioning.\r\n\r\n"}}));
  }
}

TEST_F(OpenedChannelTest, AnyOtherErrorIsReportedAtOnce) {
  system().errorTexts[0x45D] = L"The request could not be performed.\r\n";
  std::array<std::uint8_t, 16> cdb = {};
  for (const Direction& direction : Directions()) {
    volume.Fail(1, 0x45D);
    EXPECT_EQ(scsi.SendScsiCmd(1, direction.value, 0, cdb.data(), nullptr), 0);
    EXPECT_EQ(TakeEvents(), InOrder({FailedAttempts(direction, 1),
                                     {"line " + direction.name +
                                      " Failed, Erroe=0x45D The request could not be performed."
                                      "\r\n\r\n"}}));
  }
}

TEST_F(OpenedChannelTest, AnotherErrorAmongTheRetriesEndsThem) {
  std::array<std::uint8_t, 16> cdb = {};
  for (const Direction& direction : Directions()) {
    volume.Fail(1, kGeneralFailure, 2);
    volume.Fail(3, kTimeout);
    EXPECT_EQ(scsi.SendScsiCmd(1, direction.value, 0, cdb.data(), nullptr), 0);
    EXPECT_EQ(TakeEvents(), InOrder({FailedAttempts(direction, 3),
                                     {"line " + direction.name + " Failed, Erroe=0x79 \r\n"}}));
  }
}

TEST_F(OpenedChannelTest, ErrorCode0IsReportedWithoutText) {
  system().errorTexts[0] = L"The operation completed successfully.\r\n";
  std::array<std::uint8_t, 16> cdb = {};
  volume.Fail(1, 0);
  EXPECT_EQ(scsi.SendScsiCmd(1, 0, 0, cdb.data(), nullptr), 0);
  EXPECT_EQ(TakeDebuggerLines(), WideLines{L"SendScsiCmdIOut Failed, Erroe=0x0 \r\n"});
}

TEST_F(OpenedChannelTest, ATextOf1024CharactersIsLeftOutAndALongLineCut) {
  std::array<std::uint8_t, 16> cdb = {};
  const std::wstring start = L"SendScsiCmdIIn Failed, Erroe=0x79 ";
  system().errorTexts[kTimeout] = std::wstring(1024, L'x');
  volume.Fail(1, kTimeout);
  EXPECT_EQ(scsi.SendScsiCmd(1, 1, 0, cdb.data(), nullptr), 0);
  EXPECT_EQ(TakeDebuggerLines(), WideLines{start + L"\r\n"});
  system().errorTexts[kTimeout] = std::wstring(1023, L'x');
  volume.Fail(1, kTimeout);
  EXPECT_EQ(scsi.SendScsiCmd(1, 1, 0, cdb.data(), nullptr), 0);
  EXPECT_EQ(TakeDebuggerLines(), WideLines{start + std::wstring(1023 - start.size(), L'x')});
}

// ---- Download ----

TEST_F(OpenedChannelTest, DownloadOf130SectorsSends64And64And2) {
  const Bytes data = SomeBytes(130 * 512);
  EXPECT_NE(scsi.DownloadSectors(130, data.data()), 0);
  ASSERT_EQ(volume.controls.size(), 3U);
  EXPECT_EQ(volume.controls[0].sent, PartOf(data, 0, 32768));
  EXPECT_EQ(volume.controls[1].sent, PartOf(data, 32768, 32768));
  EXPECT_EQ(volume.controls[2].sent, PartOf(data, 65536, 1024));
  EXPECT_EQ(TakeEvents(),
            (Lines{"sleep 10", "out fa 55 66 02 00 40 00 00 00 00 00 00 00 00 00 00 [32768]",
                   "sleep 10", "out fa 55 66 02 00 40 00 00 00 00 00 00 00 00 00 00 [32768]",
                   "sleep 10", "out fa 55 66 02 00 02 00 00 00 00 00 00 00 00 00 00 [1024]"}));
}

TEST_F(OpenedChannelTest, DownloadOfNothingFailsAndOfUpTo64SectorsIsOneCommand) {
  const Bytes data = SomeBytes(64 * 512);
  EXPECT_EQ(scsi.DownloadSectors(0, data.data()), 0);
  EXPECT_EQ(TakeEvents(), Lines());
  EXPECT_NE(scsi.DownloadSectors(1, data.data()), 0);
  EXPECT_NE(scsi.DownloadSectors(64, data.data()), 0);
  EXPECT_EQ(TakeCommands(), (Lines{"out fa 55 66 02 00 01 00 00 00 00 00 00 00 00 00 00 [512]",
                                   "out fa 55 66 02 00 40 00 00 00 00 00 00 00 00 00 00 [32768]"}));
}

// ---- Storage writes ----

TEST_F(OpenedChannelTest, StorageWriteByteByByte) {
  Bytes data = SomeBytes(0x102 * 512);
  EXPECT_EQ(scsi.WriteStorage(0x12345678, 0x102, data.data(), 0xA5), 1);
  ASSERT_EQ(volume.controls.size(), 1U);
  EXPECT_EQ(volume.controls[0].sent, data);
  EXPECT_EQ(volume.controls[0].data, data.data());
  EXPECT_EQ(TakeEvents(), (Lines{"line Adr=0x12345678, Len=0x20400 Flag=0xA5\r\n", "sleep 10",
                                 "out fa 55 66 08 12 34 56 78 01 02 a5 00 00 00 00 00 [132096]"}));
}

TEST_F(OpenedChannelTest, StorageAddressIsDivided) {
  Bytes data = SomeBytes(512);
  scsi.addressDivider = 0x200;
  EXPECT_EQ(scsi.WriteStorage(0xFFFFFFFF, 1, data.data(), 0), 1);
  EXPECT_EQ(TakeEvents(), (Lines{"line Adr=0x7FFFFF, Len=0x200 Flag=0x0\r\n", "sleep 10",
                                 "out fa 55 66 08 00 7f ff ff 00 01 00 00 00 00 00 00 [512]"}));
}

TEST_F(OpenedChannelTest, StorageWriteReportsBeforeItSends) {
  Bytes data = SomeBytes(512);
  volume.Fail(1, kTimeout);
  EXPECT_EQ(scsi.WriteStorage(0, 1, data.data(), 1), 0);
  EXPECT_EQ(TakeEvents(), (Lines{"line Adr=0x0, Len=0x200 Flag=0x1\r\n", "sleep 10",
                                 "out fa 55 66 08 00 00 00 00 00 01 01 00 00 00 00 00 [512] failed",
                                 "line SendScsiCmdIOut Failed, Erroe=0x79 \r\n"}));
}

using UsbScsiCmdDeathTest = OpenedChannelTest;

TEST_F(UsbScsiCmdDeathTest, AddressDividerOf0IsAFault) {
  scsi.addressDivider = 0;
  Bytes data = SomeBytes(512);
  EXPECT_DEATH(scsi.WriteStorage(512, 1, data.data(), 0), "");
}

}  // namespace
