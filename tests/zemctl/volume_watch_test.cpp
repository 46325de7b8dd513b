// What is written down of the commands that the library sends to a volume, and the gate before it.
#include "tools/zemctl/camera/volume_watch.h"

#include <gtest/gtest.h>

#include "romboot/pass_through_blocks.h"
#include "simulator/volume.h"
#include "tools/zemctl/camera/pass_through_request.h"

namespace {

using zem::simulator::BootLoader;
using zem::simulator::BootLoaderOptions;
using zem::simulator::Volume;
using zemctl::PassThroughRequest;
using zemctl::ScsiCommand;
using zemctl::ScsiRecord;
using zemctl::VolumeSource;
using zemctl::VolumeWatch;

constexpr std::uint32_t kNoLongerSent = 995;

class VolumeWatchTest : public ::testing::Test {
 protected:
  VolumeWatchTest() {
    std::uint32_t error = 0;
    handle_ = volume_.Open(error);
    watch_.Opened(handle_, "F:");
  }

  // As the library asks for data and sends it.
  std::uint32_t Read(std::initializer_list<std::uint8_t> cdb, std::uint32_t length) {
    buffered_ = {};
    zem::FillHeader(buffered_.header, 16, SCSI_IOCTL_DATA_IN, length, 2);
    buffered_.header.DataBufferOffset = zem::kDataOffset;
    std::copy(cdb.begin(), cdb.end(), buffered_.header.Cdb);
    PassThroughRequest asked(&buffered_);
    return watch_.Control(handle_, asked, [&] {
      return Ask(zem::simulator::kScsiPassThrough, &buffered_, sizeof(buffered_.header),
                 zem::kDataOffset + length);
    });
  }
  std::uint32_t Send(std::initializer_list<std::uint8_t> cdb, std::vector<std::uint8_t> data) {
    zem::DirectRequest request = {};
    zem::FillHeader(request.header, 16, SCSI_IOCTL_DATA_OUT,
                    static_cast<std::uint32_t>(data.size()), 10);
    request.header.DataBuffer = data.data();
    std::copy(cdb.begin(), cdb.end(), request.header.Cdb);
    PassThroughRequest asked(&request);
    return watch_.Control(handle_, asked, [&] {
      return Ask(zem::simulator::kScsiPassThroughDirect, &request, sizeof(request),
                 sizeof(request));
    });
  }
  std::uint32_t Ask(std::uint32_t code, void* block, std::size_t input, std::size_t output) {
    ++sent_;
    now_ += 5;
    std::uint32_t returned = 0;
    auto* const bytes = static_cast<std::uint8_t*>(block);
    return volume_.Control(handle_, code, {bytes, input}, {bytes, output}, returned);
  }

  std::uint64_t now_ = 1000;
  bool stop_ = false;
  int sent_ = 0;
  std::shared_ptr<BootLoader> bootLoader_ = std::make_shared<BootLoader>(BootLoaderOptions());
  Volume volume_{bootLoader_};
  ScsiRecord record_{[this] { return now_; }, [this] { return stop_; }};
  VolumeWatch watch_{record_};
  void* handle_ = nullptr;
  zem::BufferedRequest buffered_ = {};
};

TEST_F(VolumeWatchTest, PassesOnAndWritesDown) {
  std::vector<ScsiCommand> seen;
  record_.AddObserver([&](const ScsiCommand& command) { seen.push_back(command); });
  EXPECT_EQ(Read({0xFA, 0x55, 0x66, 0x01}, 16), 0U);
  EXPECT_EQ(buffered_.data[0], 0xAA);
  now_ += 100;
  EXPECT_EQ(Send({0xFA, 0x55, 0x66, 0x02, 0x00, 0x01}, std::vector<std::uint8_t>(512, 7)), 0U);
  EXPECT_EQ(bootLoader_->loadBuffer, std::vector<std::uint8_t>(512, 7));
  EXPECT_EQ(Send({0xFA, 0x55, 0x66, 0x7F}, {}), 1117U);

  ASSERT_EQ(seen.size(), 3U);
  EXPECT_EQ(seen[0].milliseconds, 5U);
  EXPECT_EQ(seen[0].drive, "F:");
  EXPECT_EQ(seen[0].cdb,
            (std::vector<std::uint8_t>{0xFA, 0x55, 0x66, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
  EXPECT_TRUE(seen[0].isIn);
  EXPECT_EQ(seen[0].length, 16U);
  EXPECT_EQ(seen[0].data, (std::vector<std::uint8_t>{0xAA, 0x55, 0, 0, 'V', 'S', 'N', '3', 0, 0, 0,
                                                     0, 0, 0, 0, 0}));
  EXPECT_FALSE(seen[0].hasFailed());
  EXPECT_EQ(seen[1].milliseconds, 110U);
  EXPECT_FALSE(seen[1].isIn);
  EXPECT_EQ(seen[1].length, 512U);
  EXPECT_EQ(seen[1].data, std::vector<std::uint8_t>(512, 7));
  EXPECT_EQ(seen[2].error, 1117U);
  EXPECT_TRUE(seen[2].hasFailed());
  EXPECT_EQ(zemctl::FailureOf(seen[2]), "error 1117");

  // The record does without what was sent.
  ASSERT_EQ(record_.commands().size(), 3U);
  EXPECT_EQ(record_.commands()[0].data.size(), 16U);
  EXPECT_EQ(record_.commands()[1].length, 512U);
  EXPECT_TRUE(record_.commands()[1].data.empty());
  record_.BeginCall();
  EXPECT_TRUE(record_.commands().empty());
}

TEST_F(VolumeWatchTest, SeesAShortAnswer) {
  bootLoader_->AddFault(*zem::simulator::ParseFault("short@1=4"));
  EXPECT_EQ(Read({0xFA, 0x55, 0x66, 0x01}, 16), 0U);
  EXPECT_EQ(record_.commands()[0].length, 16U);
  EXPECT_EQ(record_.commands()[0].data, (std::vector<std::uint8_t>{0xAA, 0x55, 0, 0}));
}

TEST_F(VolumeWatchTest, KnowsVolumesByTheirPaths) {
  EXPECT_EQ(VolumeWatch::DriveOf(L"\\\\.\\F:"), "F:");
  EXPECT_EQ(VolumeWatch::DriveOf(L"\\\\.\\z:"), "Z:");
  EXPECT_EQ(VolumeWatch::DriveOf(L"\\\\.\\1:"), std::nullopt);
  EXPECT_EQ(VolumeWatch::DriveOf(L"\\\\.\\F:\\"), std::nullopt);
  EXPECT_EQ(VolumeWatch::DriveOf(L"F:"), std::nullopt);
  EXPECT_TRUE(watch_.Knows(handle_));
  watch_.Closed(handle_);
  EXPECT_FALSE(watch_.Knows(handle_));
}

TEST_F(VolumeWatchTest, StopsWhenThePersonWantsAnEnd) {
  EXPECT_TRUE(record_.MayOpen("F:"));
  stop_ = true;
  EXPECT_FALSE(record_.MayOpen("F:"));
  EXPECT_EQ(Read({0xFA, 0x55, 0x66, 0x01}, 16), kNoLongerSent);
  EXPECT_EQ(sent_, 0);
  EXPECT_TRUE(record_.commands().empty());
  EXPECT_TRUE(record_.wasStopped());
}

TEST_F(VolumeWatchTest, OpensNothingAfterTheEndOfAWait) {
  record_.SetEnd(record_.Now() + 50);
  EXPECT_TRUE(record_.MayOpen("F:"));
  now_ += 50;
  EXPECT_FALSE(record_.MayOpen("F:"));
  EXPECT_EQ(Read({0xFA, 0x55, 0x66, 0x01}, 16), kNoLongerSent);
  EXPECT_FALSE(record_.wasStopped());
  record_.SetEnd(std::nullopt);
  EXPECT_EQ(Read({0xFA, 0x55, 0x66, 0x01}, 16), 0U);
}

TEST_F(VolumeWatchTest, OpensTheDrivesThatAreMeant) {
  record_.OpenOnly("G:");
  EXPECT_FALSE(record_.MayOpen("F:"));
  EXPECT_TRUE(record_.MayOpen("G:"));
  record_.OpenOnly("");
  record_.Exclude({"F:", "H:"});
  EXPECT_FALSE(record_.MayOpen("F:"));
  EXPECT_TRUE(record_.MayOpen("G:"));
}

// The library tries six times; what follows gets no six attempts again.
TEST_F(VolumeWatchTest, SendsNothingMoreToADeviceThatOnlyFails) {
  bootLoader_->AddFault(*zem::simulator::ParseFault("fail@1+20"));
  for (int attempt = 0; attempt < 6; ++attempt) {
    EXPECT_EQ(Send({0xFA, 0x55, 0x66, 0x21}, {}), 31U);
    now_ += 495;
  }
  EXPECT_EQ(Send({0xFA, 0x55, 0x66, 0x21}, {}), kNoLongerSent);
  EXPECT_EQ(sent_, 6);
  // A volume that is opened anew gets its chance.
  watch_.Opened(handle_, "F:");
  EXPECT_EQ(Send({0xFA, 0x55, 0x66, 0x21}, {}), 31U);
}

TEST_F(VolumeWatchTest, WaitsOnlyAsLongAsItMakesSense) {
  std::vector<std::uint32_t> pauses;
  const auto pause = [&](std::uint32_t some) {
    pauses.push_back(some);
    now_ += some;
  };
  watch_.Sleep(120, pause);
  EXPECT_EQ(pauses, (std::vector<std::uint32_t>{50, 50, 20}));
  pauses.clear();
  record_.SetEnd(record_.Now() + 60);
  watch_.Sleep(500, pause);
  EXPECT_EQ(pauses, (std::vector<std::uint32_t>{50, 50}));
  pauses.clear();
  stop_ = true;
  watch_.Sleep(500, pause);
  EXPECT_TRUE(pauses.empty());
}

class OneAnswer : public VolumeSource {
 public:
  zemctl::VolumeOpening OpenVolume(const std::string& drive) override {
    return {drive == "F:" ? 0 : zemctl::kNoSuchVolume};
  }
  void Execute(ScsiCommand& command) override {
    asked = command;
    command.data = {1, 2, 3};
    command.status = 2;
  }

  ScsiCommand asked;
};

TEST_F(VolumeWatchTest, ASourceAnswersInPlaceOfTheSystem) {
  OneAnswer source;
  zem::FillHeader(buffered_.header, 16, SCSI_IOCTL_DATA_IN, 16, 2);
  buffered_.header.DataBufferOffset = zem::kDataOffset;
  buffered_.header.Cdb[3] = 4;
  // A refusal of the device is an error to the library, which looks at nothing else.
  PassThroughRequest request(&buffered_);
  EXPECT_EQ(watch_.Control(handle_, request, source), 1117U);
  EXPECT_EQ(record_.commands()[0].error, 0U);
  EXPECT_EQ(source.asked.drive, "F:");
  EXPECT_EQ(source.asked.cdb[3], 4);
  EXPECT_EQ(source.asked.length, 16U);
  EXPECT_EQ(buffered_.data[2], 3);
  EXPECT_EQ(buffered_.header.DataTransferLength, 3U);
  ASSERT_EQ(record_.commands().size(), 1U);
  EXPECT_EQ(record_.commands()[0].data, (std::vector<std::uint8_t>{1, 2, 3}));
  EXPECT_EQ(record_.commands()[0].status, 2);
  EXPECT_EQ(zemctl::FailureOf(record_.commands()[0]), "SCSI status 2");
}

}  // namespace
