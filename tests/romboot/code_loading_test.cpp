// Loading code into the boot loader and starting it; waiting for the updater's storage.
#include <algorithm>

#include "romboot/rom_boot_config.h"
#include "tests/support/rom_boot_test.h"

namespace {

using zem::ZemRomBootConfig;
using zem::testing::Bytes;
using zem::testing::InOrder;
using zem::testing::kSendFailedEvent;
using zem::testing::kTimeout;
using zem::testing::Lines;
using zem::testing::PaddedToSectors;
using zem::testing::RomBootTest;
using zem::testing::SomeBytes;
using zem::testing::VolumePath;

const std::string kDownloadOneSector = "out fa 55 66 02 00 01 00 00 00 00 00 00 00 00 00 00 [512]";
const std::string kJump = "out fa 55 66 03 00 00 00 00 00 00 00 00 00 00 00 00 [0]";
const std::string kVolumeClosed = "close \\\\.\\F:";
const Lines kUpdaterBegun = {"line [MSG] Read updater file success!\r\n",
                             "line [MSG] Start, Send updater data!\r\n"};

// A code image with the image header in front.
Bytes WithHeader(const Bytes& code) {
  Bytes file = {'V', 'S', 'N', '_', 'V', '2', 'B', 'C', 1, 0, 9, 9, 9, 9, 9, 9, 9, 9};
  file.insert(file.end(), code.begin(), code.end());
  return file;
}

class CodeLoadingTest : public RomBootTest {
 protected:
  ZemResult LoadMiniUVC(const Bytes& file) {
    return ZEMROMAPI_LoadMiniUVC(session(), WriteFile("code", file).c_str());
  }
  ZemResult LoadUpdater(const Bytes& file) {
    return ZEMROMAPI_LoadUpdater(session(), WriteFile("code", file).c_str());
  }
  // All data that was downloaded.
  Bytes Downloaded() const {
    Bytes data;
    for (const auto& control : volume.controls) {
      data.insert(data.end(), control.sent.begin(), control.sent.end());
    }
    return data;
  }
  struct ChannelState {
    bool hasVolume;
    std::uint32_t deviceKind;
  };
  ChannelState State() {
    const auto& scsi = static_cast<ZemRomBootConfig*>(session())->scsi;
    return {scsi.volume != nullptr, scsi.deviceKind};
  }
};

TEST_F(CodeLoadingTest, MiniUvcWithAHeaderSendsWhatFollowsIt) {
  const Bytes code = SomeBytes(40000);
  EXPECT_EQ(LoadMiniUVC(WithHeader(code)), 1);
  EXPECT_EQ(Downloaded(), PaddedToSectors(code));
  EXPECT_EQ(TakeEvents(),
            (Lines{"sleep 10", "out fa 55 66 02 00 40 00 00 00 00 00 00 00 00 00 00 [32768]",
                   "sleep 10", "out fa 55 66 02 00 0f 00 00 00 00 00 00 00 00 00 00 [7680]",
                   "sleep 10", kJump, kVolumeClosed}));
}

TEST_F(CodeLoadingTest, RawMiniUvcIsSentWhole) {
  Bytes code = SomeBytes(1025);
  for (const auto& [byte8, byte9] :
       std::vector<std::pair<std::uint8_t, std::uint8_t>>{{0, 0}, {1, 1}, {2, 0}, {0, 1}}) {
    code[8] = byte8;
    code[9] = byte9;
    void* device = ZEMROMAPI_OpenDevice(1);
    TakeCommands();
    EXPECT_EQ(ZEMROMAPI_LoadMiniUVC(device, WriteFile("code", code).c_str()), 1);
    EXPECT_EQ(Downloaded(), PaddedToSectors(code));
    EXPECT_EQ(TakeCommands(),
              (Lines{"out fa 55 66 02 00 03 00 00 00 00 00 00 00 00 00 00 [1536]", kJump}));
    ZEMROMAPI_CloseDevice(&device);
  }
}

TEST_F(CodeLoadingTest, WholeSectorsAreSentWithoutAnother) {
  EXPECT_EQ(LoadMiniUVC(WithHeader(SomeBytes(1024))), 1);
  EXPECT_EQ(TakeCommands().at(0), "out fa 55 66 02 00 02 00 00 00 00 00 00 00 00 00 00 [1024]");
}

TEST_F(CodeLoadingTest, MiniUvcOfAHeaderAloneSendsNothing) {
  EXPECT_EQ(LoadMiniUVC(WithHeader({})), ZEM_E_FAIL);
  EXPECT_EQ(TakeEvents(), Lines());
  EXPECT_TRUE(State().hasVolume);
}

TEST_F(CodeLoadingTest, RawCodeOf18BytesIsOneSector) {
  EXPECT_EQ(LoadMiniUVC(Bytes(18, 7)), 1);
  EXPECT_EQ(Downloaded(), PaddedToSectors(Bytes(18, 7)));
}

TEST_F(CodeLoadingTest, FilesShorterThanAHeaderAndMissingOnesSendNothing) {
  for (std::size_t size = 0; size < 18; ++size) {
    EXPECT_EQ(LoadMiniUVC(Bytes(size, 1)), ZEM_E_FAIL);
    EXPECT_EQ(LoadUpdater(Bytes(size, 1)), ZEM_E_FAIL);
  }
  EXPECT_EQ(ZEMROMAPI_LoadMiniUVC(session(), PathOf("none").c_str()), ZEM_E_FAIL);
  EXPECT_EQ(ZEMROMAPI_LoadUpdater(session(), PathOf("none").c_str()), ZEM_E_FAIL);
  EXPECT_EQ(ZEMROMAPI_LoadMiniUVC(session(), nullptr), ZEM_E_FAIL);
  EXPECT_EQ(ZEMROMAPI_LoadUpdater(session(), nullptr), ZEM_E_FAIL);
  EXPECT_EQ(TakeEvents(), Lines());
  EXPECT_TRUE(State().hasVolume);
}

TEST_F(CodeLoadingTest, NullSession) {
  const std::wstring path = WriteFile("code", SomeBytes(512));
  EXPECT_EQ(ZEMROMAPI_LoadMiniUVC(nullptr, path.c_str()), ZEM_E_FAIL);
  EXPECT_EQ(ZEMROMAPI_LoadUpdater(nullptr, path.c_str()), ZEM_E_FAIL);
}

TEST_F(CodeLoadingTest, MiniUvcClosesTheVolumeBehindTheJumpWhetherAcceptedOrNot) {
  EXPECT_EQ(LoadMiniUVC(SomeBytes(512)), 1);
  EXPECT_EQ(TakeEvents(),
            (Lines{"sleep 10", kDownloadOneSector, "sleep 10", kJump, kVolumeClosed}));
  EXPECT_FALSE(State().hasVolume);
  EXPECT_TRUE(system().OpenVolumePaths().empty());

  void* device = ZEMROMAPI_OpenDevice(1);
  TakeEvents();
  volume.FailAll(0x03, kTimeout);
  EXPECT_EQ(ZEMROMAPI_LoadMiniUVC(device, WriteFile("code", SomeBytes(512)).c_str()), ZEM_E_FAIL);
  EXPECT_EQ(TakeEvents(), (Lines{"sleep 10", kDownloadOneSector, "sleep 10", kJump + " failed",
                                 kSendFailedEvent, kVolumeClosed}));
  EXPECT_TRUE(system().OpenVolumePaths().empty());
  ZEMROMAPI_CloseDevice(&device);
  EXPECT_EQ(TakeEvents(), Lines()) << "nothing is left to close";
}

// ---- Updater ----

// The download of one sector and the jump; what is before and behind the jump.
const Lines kUpdaterSent =
    InOrder({kUpdaterBegun,
             {"sleep 10", kDownloadOneSector, "line [MSG] End, Send updater data!\r\n", "sleep 200",
              "sleep 10"}});
const Lines kUpdaterLeft = {kVolumeClosed, "line [MSG] Try to get Zem-Storage!\r\n", "sleep 500"};
const Lines kCameraFound = {"in 12 00 00 00 24 00 [36]",
                            "in fa 55 66 01 00 00 00 00 00 00 00 00 00 00 00 00 [16]",
                            "line Set addr div = 1\r\n", "line Storage Address Divider=0x1 \r\n",
                            "line [MSG] Get Zem-Storage success!\r\n"};

TEST_F(CodeLoadingTest, UpdaterWaitsForItsStorageAndTheSessionGoesOnWithIt) {
  session();
  volume.identify = {0, 0, 0, 0, 0, 0, 0, 0, 0, 'Z', 'E', 'M'};
  const Bytes code = SomeBytes(1000);
  EXPECT_EQ(LoadUpdater(WithHeader(code)), 1);
  EXPECT_EQ(Downloaded(), PaddedToSectors(code));
  EXPECT_EQ(
      TakeEvents(),
      (Lines{"line [MSG] Read updater file success!\r\n",
             "line [MSG] Start, Send updater data!\r\n", "sleep 10",
             "out fa 55 66 02 00 02 00 00 00 00 00 00 00 00 00 00 [1024]",
             "line [MSG] End, Send updater data!\r\n", "sleep 200", "sleep 10",
             "out fa 55 66 03 00 00 00 00 00 00 00 00 00 00 00 00 [0]",
             "close \\\\.\\F:", "line [MSG] Try to get Zem-Storage!\r\n", "sleep 500", "sleep 500",
             "in 12 00 00 00 24 00 [36]", "in fa 55 66 01 00 00 00 00 00 00 00 00 00 00 00 00 [16]",
             "line Set addr div = 1\r\n", "line Storage Address Divider=0x1 \r\n",
             "line [MSG] Get Zem-Storage success!\r\n"}));
  EXPECT_TRUE(State().hasVolume);
  EXPECT_EQ(State().deviceKind, 2U);
  EXPECT_EQ(system().OpenVolumePaths(), std::vector<std::wstring>{VolumePath(L'F')});
}

TEST_F(CodeLoadingTest, UpdaterGoesOnAfterAJumpThatFails) {
  session();
  volume.FailAll(0x03, kTimeout);
  EXPECT_EQ(LoadUpdater(SomeBytes(512)), 1);
  EXPECT_EQ(TakeEvents(),
            InOrder({kUpdaterSent,
                     {kJump + " failed", kSendFailedEvent, "line Long jump command failed.\r\n"},
                     kUpdaterLeft,
                     {"sleep 500"},
                     kCameraFound}));
}

TEST_F(CodeLoadingTest, UpdaterTakesAnyKindThatAnswersTheProbe) {
  session();
  EXPECT_EQ(LoadUpdater(SomeBytes(512)), 1);
  EXPECT_EQ(State().deviceKind, 1U);
}

TEST_F(CodeLoadingTest, StorageMayShowUpAtAnyOfTheProbes) {
  const std::wstring path = WriteFile("code", SomeBytes(512));
  for (const std::uint32_t probes : {2U, 600U}) {
    void* device = ZEMROMAPI_OpenDevice(1);
    // The first of the probes that finds a camera is the last one.
    const std::uint32_t start = system().clockMilliseconds;
    const std::uint32_t ready = start + 10 + 200 + 10 + 500 + probes * 500;
    system().volumes[VolumePath(L'F')] = [this, ready](const auto& request) {
      const bool isInquiry = request.outputLength == 128;
      const bool gone = isInquiry && system().clockMilliseconds < ready;
      return gone ? std::optional<std::uint32_t>(kTimeout) : volume.Answer()(request);
    };
    static_cast<ZemRomBootConfig*>(device)->scsi.CloseVolume();
    static_cast<ZemRomBootConfig*>(device)->scsi.volume =
        zem::platform::OpenVolume(VolumePath(L'F').c_str());
    TakeEvents();
    EXPECT_EQ(ZEMROMAPI_LoadUpdater(device, path.c_str()), 1);
    EXPECT_EQ(
        TakeEvents(),
        InOrder({kUpdaterSent, {kJump}, kUpdaterLeft, Lines(probes, "sleep 500"), kCameraFound}));
    ZEMROMAPI_CloseDevice(&device);
    Attach(L'F', volume);
    leftOpen.insert(leftOpen.end(), probes - 1, VolumePath(L'F'));
  }
}

TEST_F(CodeLoadingTest, After600ProbesTheUpdaterSucceedsWithoutAVolume) {
  session();
  const std::wstring path = WriteFile("code", SomeBytes(512));
  system().volumePaths.clear();
  system().volumes.clear();
  EXPECT_EQ(ZEMROMAPI_LoadUpdater(session(), path.c_str()), 1);
  EXPECT_EQ(system().volumePaths.size(), 600U * 24U);
  EXPECT_EQ(TakeEvents(), InOrder({kUpdaterSent,
                                   {kJump},
                                   kUpdaterLeft,
                                   Lines(600, "sleep 500"),
                                   {"line [Err] No Zem-Storage success!\r\n"}}));
  EXPECT_FALSE(State().hasVolume);
  EXPECT_EQ(State().deviceKind, 0U);
}

}  // namespace
