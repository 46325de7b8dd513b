// The simulated boot loader's answers to SCSI commands, and what becomes of it.
#include "simulator/boot_loader.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

namespace {

using namespace zem::simulator;  // NOLINT(google-build-using-namespace): the model's own test
using Bytes = std::vector<std::uint8_t>;

Bytes Repeated(std::size_t count, std::uint8_t byte) { return Bytes(count, byte); }

class BootLoaderTest : public ::testing::Test {
 protected:
  // Options with small storages.
  static BootLoaderOptions Small() {
    BootLoaderOptions options;
    options.storages = {{StorageType::kSerialFlash, 8192, ""}, {StorageType::kDram, 4096, ""}};
    return options;
  }

  void Start(const BootLoaderOptions& options) { loader = std::make_unique<BootLoader>(options); }

  ScsiOutcome Send(const Bytes& cdb, Bytes data = {}) {
    return loader->Execute(cdb, false, data).outcome;
  }

  // The bytes that came, or nothing for a command that was not carried out.
  Bytes Receive(const Bytes& cdb, std::size_t length) {
    Bytes data(length, 0xEE);
    last = loader->Execute(cdb, true, data);
    data.resize(last.moved);
    return data;
  }

  ScsiOutcome Select(std::uint8_t type) {
    Receive({0xFA, 0x55, 0x66, 0x06, type, 0, 3, 0, 0, 0, 0, 0, 0, 0, 0, 0}, 4);
    return last.outcome;
  }

  std::unique_ptr<BootLoader> loader = std::make_unique<BootLoader>(Small());
  ScsiResult last;
};

TEST_F(BootLoaderTest, InquiryTellsARemovableDiskOfFormatOne) {
  const Bytes answer = Receive({0x12, 0, 0, 0, 0x24, 0}, 36);
  const std::string names = "ZEM     Boot Volume     1.00";
  Bytes wanted = {0x00, 0x80, 0x02, 0x01, 0x1F, 0, 0, 0};
  wanted.insert(wanted.end(), names.begin(), names.end());
  EXPECT_EQ(answer, wanted);
  BootLoaderOptions options = Small();
  options.responseFormat = 2;
  Start(options);
  EXPECT_EQ(Receive({0x12, 0, 0, 0, 0x24, 0}, 36)[3], 2);
}

TEST_F(BootLoaderTest, IdentifyTellsTheStage) {
  const Bytes identify = {0xFA, 0x55, 0x66, 0x01, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  EXPECT_EQ(Receive(identify, 16),
            (Bytes{0xAA, 0x55, 0, 0, 'V', 'S', 'N', '3', 0, 0, 0, 0, 0, 0, 0, 0}));
  BootLoaderOptions options = Small();
  options.signature = "MCY1UPD";
  Start(options);
  EXPECT_EQ(Receive(identify, 16),
            (Bytes{0xAA, 0x55, 0, 0, 'M', 'C', 'Y', '1', 'U', 'P', 'D', 0, 0, 0, 0, 0}));
  options.start = BootStage::kZemStorage;
  Start(options);
  EXPECT_EQ(Receive(identify, 16), (Bytes{0, 0, 0, 0, 0, 0, 0, 0, 0, 'Z', 'E', 'M', 0, 0, 0, 0}));
}

TEST_F(BootLoaderTest, DownloadsGatherInTheLoadBuffer) {
  EXPECT_EQ(Send({0xFA, 0x55, 0x66, 0x02, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, Repeated(512, 1)),
            ScsiOutcome::kDone);
  EXPECT_EQ(Send({0xFA, 0x55, 0x66, 0x02, 0, 64, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, Repeated(32768, 2)),
            ScsiOutcome::kDone);
  ASSERT_EQ(loader->loadBuffer.size(), 65U * 512);
  EXPECT_EQ(loader->loadBuffer[511], 1);
  EXPECT_EQ(loader->loadBuffer[512], 2);
  EXPECT_EQ(Send({0xFA, 0x55, 0x66, 0x02, 0, 65, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, Repeated(33280, 2)),
            ScsiOutcome::kRefused)
      << "more than 64 sectors";
  EXPECT_EQ(Send({0xFA, 0x55, 0x66, 0x02, 0, 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, Repeated(512, 1)),
            ScsiOutcome::kRefused)
      << "fewer bytes than told";
}

TEST_F(BootLoaderTest, JumpLeadsToTheStorageAndEndsTheConnection) {
  const Bytes jump = {0xFA, 0x55, 0x66, 0x03, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  EXPECT_EQ(Send(jump), ScsiOutcome::kRefused) << "nothing was loaded";
  const auto before = loader->Connect();
  ASSERT_TRUE(before.has_value());
  Send({0xFA, 0x55, 0x66, 0x02, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, Repeated(512, 1));
  std::vector<BootStage> stages;
  loader->SetStageObserver([&](BootStage stage) { stages.push_back(stage); });
  EXPECT_EQ(Send(jump), ScsiOutcome::kDone);
  EXPECT_EQ(loader->stage(), BootStage::kZemStorage);
  EXPECT_EQ(stages, std::vector<BootStage>{BootStage::kZemStorage});
  EXPECT_FALSE(loader->IsConnected(*before));
  EXPECT_TRUE(loader->loadBuffer.empty());
  EXPECT_EQ(loader->Connect(), std::nullopt) << "absent once";
  const auto after = loader->Connect();
  ASSERT_TRUE(after.has_value());
  EXPECT_TRUE(loader->IsConnected(*after));
}

TEST_F(BootLoaderTest, JumpLeadsToTheCameraWhenThatWasLoaded) {
  BootLoaderOptions options = Small();
  options.afterJump = BootStage::kCamera;
  options.absentOpens = 0;
  Start(options);
  Send({0xFA, 0x55, 0x66, 0x02, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, Repeated(512, 1));
  Send({0xFA, 0x55, 0x66, 0x03, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
  EXPECT_EQ(loader->stage(), BootStage::kCamera);
  EXPECT_EQ(loader->Connect(), std::nullopt);
  loader->EnterRomBoot();
  EXPECT_EQ(loader->stage(), BootStage::kBootLoader);
  EXPECT_TRUE(loader->Connect().has_value());
}

TEST_F(BootLoaderTest, RegistersKeepWhatIsWritten) {
  EXPECT_EQ(Receive({0xFA, 0x55, 0x66, 0x04, 0x80, 0x12, 0x34, 0x56, 0, 0, 0, 0, 0, 0, 0, 0}, 1),
            Bytes{0});
  EXPECT_EQ(Send({0xFA, 0x55, 0x66, 0x05, 0x80, 0x12, 0x34, 0x56, 0xA7, 0, 0, 0, 0, 0, 0, 0}),
            ScsiOutcome::kDone);
  EXPECT_EQ(loader->registers.at(0x80123456), 0xA7);
  EXPECT_EQ(Receive({0xFA, 0x55, 0x66, 0x04, 0x80, 0x12, 0x34, 0x56, 0, 0, 0, 0, 0, 0, 0, 0}, 1),
            Bytes{0xA7});
}

TEST_F(BootLoaderTest, StorageIsSelectedBeforeItIsUsed) {
  const Bytes read = {0xFA, 0x55, 0x66, 0x07, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0};
  EXPECT_EQ(Receive(read, 512), Bytes());
  EXPECT_EQ(last.outcome, ScsiOutcome::kRefused);
  EXPECT_EQ(Select(0x06), ScsiOutcome::kRefused) << "the camera has no SPI NAND";
  EXPECT_EQ(Select(0x05), ScsiOutcome::kDone);
  EXPECT_EQ(loader->selectOption, 3);
  EXPECT_EQ(Receive(read, 512), Repeated(512, 0xFF));
}

TEST_F(BootLoaderTest, StorageKeepsWhatIsWritten) {
  Select(0x05);
  EXPECT_EQ(Send({0xFA, 0x55, 0x66, 0x08, 0, 0, 0x10, 0x00, 0, 2, 1, 0, 0, 0, 0, 0},
                 Repeated(1024, 0x5A)),
            ScsiOutcome::kDone);
  const auto bytes = loader->FindStorage(StorageType::kSerialFlash)->bytes();
  EXPECT_EQ(bytes[0x0FFF], 0xFF);
  EXPECT_EQ(bytes[0x1000], 0x5A);
  EXPECT_EQ(bytes[0x13FF], 0x5A);
  EXPECT_EQ(bytes[0x1400], 0xFF);
  EXPECT_EQ(Receive({0xFA, 0x55, 0x66, 0x07, 0, 0, 0x12, 0x00, 0, 1, 0, 0, 0, 0, 0, 0}, 512),
            Repeated(512, 0x5A));
  EXPECT_EQ(loader->FindStorage(StorageType::kDram)->bytes()[0x0800], 0xFF);
}

TEST_F(BootLoaderTest, StorageEndsWhereItEnds) {
  Select(0x05);
  EXPECT_EQ(
      Send({0xFA, 0x55, 0x66, 0x08, 0, 0, 0x1E, 0x00, 0, 1, 0, 0, 0, 0, 0, 0}, Repeated(512, 1)),
      ScsiOutcome::kDone);
  EXPECT_EQ(
      Send({0xFA, 0x55, 0x66, 0x08, 0, 0, 0x1E, 0x01, 0, 1, 0, 0, 0, 0, 0, 0}, Repeated(512, 1)),
      ScsiOutcome::kRefused);
  EXPECT_EQ(Receive({0xFA, 0x55, 0x66, 0x07, 0xFF, 0xFF, 0xFF, 0xFF, 0, 1, 0, 0, 0, 0, 0, 0}, 512),
            Bytes());
  EXPECT_EQ(Send({0xFA, 0x55, 0x66, 0x08, 0, 0, 0, 0, 0, 2, 0, 0, 0, 0, 0, 0}, Repeated(512, 1)),
            ScsiOutcome::kRefused)
      << "fewer bytes than told";
}

TEST_F(BootLoaderTest, AddressesOfWritesAreMultipliedByTheDivider) {
  Select(0x05);
  EXPECT_EQ(Send({0xFA, 0x55, 0x66, 0x0F, 0, 0, 0, 4, 0, 0, 0, 0, 0, 0, 0, 0}, {0, 2, 0, 0}),
            ScsiOutcome::kDone);
  EXPECT_EQ(loader->addressDivider, 512U);
  Send({0xFA, 0x55, 0x66, 0x08, 0, 0, 0, 3, 0, 1, 0, 0, 0, 0, 0, 0}, Repeated(512, 0x77));
  EXPECT_EQ(loader->FindStorage(StorageType::kSerialFlash)->bytes()[0x600], 0x77);
  EXPECT_EQ(Receive({0xFA, 0x55, 0x66, 0x07, 0, 0, 0x06, 0, 0, 1, 0, 0, 0, 0, 0, 0}, 512),
            Repeated(512, 0x77))
      << "those of reads are not";
}

TEST_F(BootLoaderTest, DownloadAddressAndEnhancedArea) {
  Send({0xFA, 0x55, 0x66, 0x0D, 1, 2, 3, 4, 0, 0, 0, 0, 0, 0, 0, 0});
  EXPECT_EQ(loader->downloadAddress, 0x01020304U);
  const Bytes area = {0xFA, 0x55, 0x66, 0x22, 1, 0, 0, 1, 0, 0, 0, 2, 0, 0, 0, 0};
  EXPECT_EQ(Send(area), ScsiOutcome::kRefused) << "the camera has no eMMC";
  BootLoaderOptions options = Small();
  options.storages.push_back({StorageType::kEmmc, 512, ""});
  Start(options);
  EXPECT_EQ(Send(area), ScsiOutcome::kDone);
  EXPECT_EQ(loader->enhancedArea, (std::array<std::uint32_t, 2>{0x100, 0x200}));
}

TEST_F(BootLoaderTest, ResetStartsFirmwareWhereThereIsSome) {
  const Bytes reset = {0xFA, 0x55, 0x66, 0x21, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  Select(0x80);
  Send({0xFA, 0x55, 0x66, 0x08, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0}, Repeated(512, 1));
  EXPECT_EQ(Send(reset), ScsiOutcome::kDone);
  EXPECT_EQ(loader->stage(), BootStage::kBootLoader) << "only memory was written";
  EXPECT_EQ(loader->FindStorage(StorageType::kDram)->bytes()[0], 0xFF);
  Select(0x05);
  Send({0xFA, 0x55, 0x66, 0x08, 0, 0, 0x10, 0, 0, 1, 0, 0, 0, 0, 0, 0}, Repeated(512, 1));
  Send(reset);
  EXPECT_EQ(loader->stage(), BootStage::kBootLoader) << "the first sector is missing";
  Select(0x05);
  Send({0xFA, 0x55, 0x66, 0x08, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0}, Repeated(512, 1));
  Send(reset);
  EXPECT_EQ(loader->stage(), BootStage::kCamera);
}

TEST_F(BootLoaderTest, WhatIsNoCommandIsRefused) {
  EXPECT_EQ(Send({0xFA, 0x55, 0x66, 0x09, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}),
            ScsiOutcome::kRefused);
  EXPECT_EQ(Send({0xFA, 0x55, 0x67, 0x21, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}),
            ScsiOutcome::kRefused);
  EXPECT_EQ(Send({0xFA, 0x55, 0x66, 0x21}), ScsiOutcome::kRefused);
  EXPECT_EQ(Send({}), ScsiOutcome::kRefused);
  EXPECT_EQ(Send({0x12, 0, 0, 0, 0x24, 0}, Repeated(36, 0)), ScsiOutcome::kRefused);
  EXPECT_EQ(Send({0xFA, 0x55, 0x66, 0x01, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, Repeated(16, 0)),
            ScsiOutcome::kRefused)
      << "identify reads";
  EXPECT_EQ(Receive({0xFA, 0x55, 0x66, 0x21, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, 4), Bytes())
      << "reset has no data";
}

TEST_F(BootLoaderTest, FaultsHitTheCommandsTheyName) {
  BootLoaderOptions options = Small();
  for (const char* const text : {"fail@1+2", "fail@3=5", "refuse@4", "short@5=3", "unplug@7"}) {
    options.faults.push_back(ParseFault(text).value());
  }
  Start(options);
  const Bytes identify = {0xFA, 0x55, 0x66, 0x01, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  for (int command = 1; command <= 2; ++command) {
    Receive(identify, 16);
    EXPECT_EQ(last.outcome, ScsiOutcome::kFailed);
    EXPECT_EQ(last.error, 0U);
  }
  Receive(identify, 16);
  EXPECT_EQ(last.outcome, ScsiOutcome::kFailed);
  EXPECT_EQ(last.error, 5U);
  Receive(identify, 16);
  EXPECT_EQ(last.outcome, ScsiOutcome::kRefused);
  EXPECT_EQ(Receive(identify, 16), (Bytes{0xAA, 0x55, 0}));
  EXPECT_EQ(Receive(identify, 16).size(), 16U);
  Receive(identify, 16);
  EXPECT_EQ(last.outcome, ScsiOutcome::kGone);
  EXPECT_EQ(loader->stage(), BootStage::kGone);
  EXPECT_EQ(loader->Connect(), std::nullopt);
}

TEST_F(BootLoaderTest, GarbageSpoilsWhatIsReadAndWhatIsStored) {
  BootLoaderOptions options = Small();
  options.faults = {ParseFault("garbage@2").value(), ParseFault("garbage@4").value()};
  Start(options);
  Select(0x05);
  const Bytes write = {0xFA, 0x55, 0x66, 0x08, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0};
  const Bytes read = {0xFA, 0x55, 0x66, 0x07, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0};
  EXPECT_EQ(Send(write, Repeated(512, 0x5A)), ScsiOutcome::kDone);
  EXPECT_NE(Receive(read, 512), Repeated(512, 0x5A)) << "stored wrongly";
  Send({0xFA, 0x55, 0x66, 0x08, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0}, Repeated(512, 0x5A));
  EXPECT_NE(Receive(read, 512), Repeated(512, 0x5A));
  Send(write, Repeated(512, 0x5A));
  EXPECT_EQ(Receive(read, 512), Repeated(512, 0x5A));
}

TEST_F(BootLoaderTest, ObserverSeesEveryCommandOnce) {
  std::vector<ScsiExchange> seen;
  loader->SetObserver([&](const ScsiExchange& exchange) { seen.push_back(exchange); });
  Receive({0xFA, 0x55, 0x66, 0x04, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0, 0}, 1);
  Send({0xFA, 0x55, 0x66, 0x08, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0}, Repeated(512, 1));
  ASSERT_EQ(seen.size(), 2U);
  EXPECT_TRUE(seen[0].dataIn);
  EXPECT_EQ(seen[0].data, Bytes{0});
  EXPECT_EQ(seen[0].outcome, ScsiOutcome::kDone);
  EXPECT_FALSE(seen[1].dataIn);
  EXPECT_EQ(seen[1].data, Repeated(512, 1));
  EXPECT_EQ(seen[1].outcome, ScsiOutcome::kRefused);
}

}  // namespace
