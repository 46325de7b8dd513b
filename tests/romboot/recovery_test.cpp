// The library and a simulated boot loader together: whole ways, from the volume that is found to
// the bytes that lie in the storage, and every place where they can break off.
#include <algorithm>
#include <memory>

#include "platform/bytes.h"
#include "simulator/boot_loader.h"
#include "simulator/options.h"
#include "tests/support/rom_boot_test.h"
#include "tests/support/volume_list.h"

namespace zem::testing {
namespace {

using simulator::BootLoader;
using simulator::BootLoaderOptions;
using simulator::BootStage;
using simulator::ParseFault;
using simulator::ScsiExchange;
using simulator::StorageType;

constexpr std::uint32_t kFlashSize = 262144;

class RecoveryTest : public RomBootTest {
 protected:
  RecoveryTest() { Start(SmallOptions()); }
  ~RecoveryTest() override { ZEMROMAPI_CloseDevice(&device); }

  static BootLoaderOptions SmallOptions() {
    BootLoaderOptions options;
    options.storages = {{StorageType::kSerialFlash, kFlashSize, ""},
                        {StorageType::kDram, 65536, ""}};
    return options;
  }

  // A new boot loader in the place of the scripted volume.
  void Start(const BootLoaderOptions& options) {
    ZEMROMAPI_CloseDevice(&device);
    device = nullptr;
    loader = std::make_shared<BootLoader>(options);
    commands = 0;
    loader->SetObserver([this](const ScsiExchange&) { ++commands; });
    system().volumes.clear();
    simulator::ListVolume(loader);
  }

  // A session on storage that answers already, with the flash selected.
  void OpenStorage(BootLoaderOptions options) {
    options.start = BootStage::kZemStorage;
    Start(options);
    device = ZEMROMAPI_OpenDevice(2);
    ASSERT_NE(device, nullptr);
    ASSERT_EQ(ZEMROMAPI_SwitchModePCAM_SF(device), 0);
  }

  Bytes Flash(std::size_t address, std::size_t size) const {
    const auto bytes = loader->FindStorage(StorageType::kSerialFlash)->bytes();
    const auto part = bytes.subspan(address, size);
    return {part.begin(), part.end()};
  }

  // An image of this payload: header, header block, payload.
  static Bytes Image(std::uint32_t payload) {
    Bytes file = SomeBytes(4114 + payload, 3);
    const Bytes header = {'V', 'S', 'N', '_', 'V', '2', 'F', 'W', 1, 0, 9, 8, 7, 6};
    std::copy(header.begin(), header.end(), file.begin());
    StoreLe32(&file[14], payload);
    return file;
  }

  std::shared_ptr<BootLoader> loader;
  void* device = nullptr;
  int commands = 0;  // that reached the boot loader
};

TEST_F(RecoveryTest, WholeWayFromBootLoaderToFirmware) {
  BootLoaderOptions options = SmallOptions();
  options.absentOpens = 3;
  Start(options);
  const std::wstring updater = WriteFile("updater.bin", SomeBytes(70000, 2));
  const Bytes image = Image(70000);
  const std::wstring path = WriteFile("image.bin", image);

  EXPECT_EQ(ZEMROMAPI_OpenDevice(2), nullptr) << "no storage yet";
  device = ZEMROMAPI_OpenDevice(1);
  ASSERT_NE(device, nullptr);
  EXPECT_EQ(ZEMROMAPI_LoadUpdater(device, updater.c_str()), 1);
  EXPECT_EQ(loader->stage(), BootStage::kZemStorage);
  EXPECT_EQ(ZEMROMAPI_SwitchModePCAM_SF(device), 0);
  unsigned int address = 0;
  EXPECT_EQ(ZEMROMAPI_BurnFw(device, path.c_str(), &address), 1);
  EXPECT_EQ(address, 77824U);
  EXPECT_EQ(Flash(0, 74096), PartOf(image, 18, 74096));
  EXPECT_EQ(Flash(75776, kFlashSize - 75776), Bytes(kFlashSize - 75776, 0xFF));

  const std::wstring readBack = PathOf("read.bin");
  EXPECT_EQ(ZEMROMAPI_PartialRead(device, readBack.c_str(), &address, 74096), 1);
  EXPECT_EQ(PartOf(ReadFile(readBack), 0, 74096), PartOf(image, 18, 74096));
  EXPECT_EQ(ZEMROMAPI_ResetSystem(device), 1);
  EXPECT_EQ(loader->stage(), BootStage::kCamera);
}

TEST_F(RecoveryTest, UpdaterArrivesWholeAndTheSearchWaitsForItsStorage) {
  BootLoaderOptions options = SmallOptions();
  options.absentOpens = 3;
  Start(options);
  Bytes loaded;
  loader->SetObserver([&](const ScsiExchange& exchange) {
    if (exchange.cdb[3] == 0x02) {
      loaded.insert(loaded.end(), exchange.data.begin(), exchange.data.end());
    }
  });
  Bytes updater = SomeBytes(1018, 2);
  updater[8] = 1;
  updater[9] = 0;
  device = ZEMROMAPI_OpenDevice(1);
  ASSERT_NE(device, nullptr);
  TakeSleeps();
  EXPECT_EQ(ZEMROMAPI_LoadUpdater(device, WriteFile("updater.bin", updater).c_str()), 1);
  ASSERT_EQ(loaded.size(), 1024U);
  EXPECT_EQ(PartOf(loaded, 0, 1000), PartOf(updater, 18, 1000));
  // 10 ms before each command that sends; 200 and 500 around the jump; 500 before each search.
  EXPECT_EQ(TakeSleeps(), (std::vector<std::uint32_t>{10, 200, 10, 500, 500, 500, 500, 500}));
}

TEST_F(RecoveryTest, StorageThatNeverComesIsNoFailure) {
  BootLoaderOptions options = SmallOptions();
  options.afterJump = BootStage::kGone;
  Start(options);
  device = ZEMROMAPI_OpenDevice(1);
  ASSERT_NE(device, nullptr);
  const std::uint32_t before = system().clockMilliseconds;
  EXPECT_EQ(ZEMROMAPI_LoadUpdater(device, WriteFile("updater.bin", SomeBytes(600)).c_str()), 1);
  EXPECT_EQ(system().clockMilliseconds - before, 300720U);
  EXPECT_EQ(system().OpenVolumePaths(), std::vector<std::wstring>());
}

TEST_F(RecoveryTest, MiniUvcBecomesTheCamera) {
  BootLoaderOptions options = SmallOptions();
  options.afterJump = BootStage::kCamera;
  Start(options);
  device = ZEMROMAPI_OpenDevice(1);
  ASSERT_NE(device, nullptr);
  EXPECT_EQ(ZEMROMAPI_LoadMiniUVC(device, WriteFile("code.bin", SomeBytes(600)).c_str()), 1);
  EXPECT_EQ(loader->stage(), BootStage::kCamera);
  EXPECT_EQ(ZEMROMAPI_OpenDevice(1), nullptr);
}

TEST_F(RecoveryTest, EveryBurnerLeavesWhatItsFileSays) {
  unsigned int address = 0;
  OpenStorage(SmallOptions());

  Bytes package = SomeBytes(30 + 40000, 5);
  StoreLe32(&package[10], 20);
  StoreLe32(&package[14], 40000);
  EXPECT_EQ(ZEMROMAPI_BurnPcCamFw(device, WriteFile("a", package).c_str(), &address), 1);
  EXPECT_EQ(Flash(0, 40000), PartOf(package, 30, 40000));

  OpenStorage(SmallOptions());
  EXPECT_EQ(ZEMROMAPI_BurnPcCamFwPnsV2(device, WriteFile("b", package).c_str(), &address), 1);
  EXPECT_EQ(Flash(0, 40000), PartOf(package, 30, 40000));

  OpenStorage(SmallOptions());
  Bytes linux = SomeBytes(8192 + 33000, 6);
  StoreLe32(&linux[8], 12);
  StoreLe32(&linux[16], 16);
  const std::wstring linuxPath = WriteFile("c", linux);
  EXPECT_EQ(ZEMROMAPI_UpdateLinuxFwPkg_(device, linuxPath.c_str(), 0x2000), 1);
  EXPECT_EQ(Flash(0x2000, 8192), PartOf(linux, 0, 8192));
  EXPECT_EQ(Flash(0x10000, 33000), PartOf(linux, 8192, 33000));

  OpenStorage(SmallOptions());
  address = 0x3000;
  EXPECT_EQ(ZEMROMAPI_PartialUpdateWithHeader(device, linuxPath.c_str(), &address), 1);
  EXPECT_EQ(Flash(0x3000, linux.size()), linux);
  address = 0x20000;
  EXPECT_EQ(ZEMROMAPI_PartialUpdate(device, linuxPath.c_str(), &address), 1);
  EXPECT_EQ(Flash(0x20000, linux.size()), linux);
  EXPECT_EQ(ZEMROMAPI_Erase(device, 0x3000, 600), 0);
  EXPECT_EQ(Flash(0x3000, 1024), Bytes(1024, 0xFF));
  EXPECT_EQ(Flash(0x3400, 512), PartOf(linux, 1024, 512));

  EXPECT_EQ(ZEMROMAPI_SwitchModePCAM_DRAM(device), 0);
  EXPECT_EQ(ZEMROMAPI_LoadFW2Memory(device, linuxPath.c_str(), &address), 1);
  const auto memory = loader->FindStorage(StorageType::kDram)->bytes();
  EXPECT_TRUE(std::equal(linux.begin(), linux.end(), memory.begin()));
}

TEST_F(RecoveryTest, BurnThatBreaksOffLeavesNoHeaderBlock) {
  const Bytes image = Image(70000);
  const std::wstring path = WriteFile("image.bin", image);
  OpenStorage(SmallOptions());
  const int before = commands;
  unsigned int address = 0;
  ASSERT_EQ(ZEMROMAPI_BurnFw(device, path.c_str(), &address), 1);
  const int total = commands - before;
  EXPECT_EQ(total, 5) << "erase, three pieces of payload, header block";

  // The first command is the erase, whose failure BurnFw passes over.
  for (int broken = 2; broken <= total; ++broken) {
    OpenStorage(SmallOptions());
    // Firmware that was there before.
    loader->FindStorage(StorageType::kSerialFlash)->Write(0, Bytes(4096, 0x11));
    loader->AddFault(
        {simulator::Fault::Kind::kUnplug, static_cast<std::uint32_t>(commands + broken), 1, 0});
    address = 0;
    EXPECT_EQ(ZEMROMAPI_BurnFw(device, path.c_str(), &address), ZEM_E_FAIL) << broken;
    EXPECT_EQ(Flash(0, 4096), Bytes(4096, 0xFF)) << broken;
  }
}

TEST_F(RecoveryTest, StalledCommandsAreRepeatedUntilTheyPass) {
  const Bytes image = Image(512);
  const std::wstring path = WriteFile("image.bin", image);
  OpenStorage(SmallOptions());
  const auto next = static_cast<std::uint32_t>(commands + 1);
  loader->AddFault({simulator::Fault::Kind::kFail, next + 1, 5, 0});
  TakeSleeps();
  unsigned int address = 0;
  EXPECT_EQ(ZEMROMAPI_BurnFw(device, path.c_str(), &address), 1);
  EXPECT_EQ(TakeSleeps(), (std::vector<std::uint32_t>{10, 10, 500, 500, 500, 500, 500, 10}));
  EXPECT_EQ(Flash(0, 4608), PartOf(image, 18, 4608));

  OpenStorage(SmallOptions());
  loader->AddFault({simulator::Fault::Kind::kFail, static_cast<std::uint32_t>(commands + 2), 6, 0});
  EXPECT_EQ(ZEMROMAPI_BurnFw(device, path.c_str(), &address), ZEM_E_FAIL) << "six times in a row";
}

TEST_F(RecoveryTest, DividerIsToldAndStaysOne) {
  device = ZEMROMAPI_OpenDevice(0x11);
  ASSERT_NE(device, nullptr);
  EXPECT_EQ(commands, 3) << "inquiry, identify, divider";
  EXPECT_EQ(loader->addressDivider, 1U);
}

TEST_F(RecoveryTest, RegistersAreaAndRawCommands) {
  BootLoaderOptions options = SmallOptions();
  options.storages.push_back({StorageType::kEmmc, 512, ""});
  Start(options);
  device = ZEMROMAPI_OpenDevice(1);
  ASSERT_NE(device, nullptr);
  unsigned char value = 0;
  EXPECT_EQ(ZEMROMAPI_WriteRegister(device, 0x80001234, 0x5A), 0);
  EXPECT_EQ(ZEMROMAPI_ReadRegister(device, 0x80001234, &value), 0);
  EXPECT_EQ(value, 0x5A);
  EXPECT_EQ(ZEMROMAPI_SetFwDownloadAddr(device, 0x01020304), 0);
  EXPECT_EQ(loader->downloadAddress, 0x01020304U);
  EXPECT_EQ(ZEMROMAPI_SwitchModePCAM_EMMC(device, 9), 0);
  EXPECT_EQ(loader->selected, StorageType::kEmmc);
  EXPECT_EQ(loader->selectOption, 9);
  EXPECT_EQ(ZEMROMAPI_MkEmmcEhancedArea(device, 5, 6), 1);
  EXPECT_EQ(loader->enhancedArea, (std::array<std::uint32_t, 2>{5, 6}));
  EXPECT_EQ(ZEMROMAPI_SwitchModePCAM_SPI_NAND(device, 0), ZEM_E_FAIL) << "has none";
  unsigned char cdb[16] = {0xFA, 0x55, 0x66, 0x01};
  Bytes reply(16);
  EXPECT_EQ(ZEMROMAPI_ScsiCommand(device, 1, 16, cdb, reply.data()), 0);
  EXPECT_EQ(reply, (Bytes{0xAA, 0x55, 0, 0, 'V', 'S', 'N', '3', 0, 0, 0, 0, 0, 0, 0, 0}));
}

}  // namespace
}  // namespace zem::testing
