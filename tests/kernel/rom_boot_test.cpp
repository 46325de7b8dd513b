// ROM boot through the kernel: the camera leaves, its boot loader comes as USB mass storage, and a
// reset brings the camera back.
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "include/ZemUVCExtApi.h"
#include "tests/kernel/plugged_camera.h"
#include "tests/windows/support/opened_camera.h"

namespace {

using zem::testing::EntriesOf;
using zem::testing::HeadsOf;
using zem::testing::IsCameraGone;
using zem::testing::IsCameraThere;
using zem::testing::IsStorageThere;
using zem::testing::kCameras;
using zem::testing::kInRomBoot;
using zem::testing::kStorages;
using zem::testing::Lines;
using zem::testing::OpenedCamera;
using zem::testing::PluggedCamera;
using zem::testing::ReadText;
using zem::testing::WaitUntil;
using zem::testing::WriteText;
using Bytes = std::vector<unsigned char>;

constexpr unsigned kBootLoader = 1;

// A session for the length of a test.
class RomBoot : public ::testing::Test {
 protected:
  ~RomBoot() override {
    Close();
    unsetenv("ZEM_DEBUG");
  }

  void Close() {
    ZEMROMAPI_CloseDevice(&device);
    device = nullptr;
  }

  void Open(unsigned mode) {
    Close();
    device = ZEMROMAPI_OpenDevice(mode);
    ASSERT_NE(device, nullptr);
  }

  // The library's debugger lines from now on.
  static void KeepDebuggerLines() {
    unlink("/tmp/debug.txt");
    setenv("ZEM_DEBUG", "/tmp/debug.txt", 1);
  }
  static std::string DebuggerLines() { return ReadText("/tmp/debug.txt"); }

  // Sends the running camera into ROM boot.
  static void Enter() {
    const OpenedCamera camera;
    EXPECT_FALSE(IsCameraGone());
    EXPECT_EQ(ZEMAPI_ResetToRomboot_VCP8(camera), 0);
    EXPECT_TRUE(WaitUntil(IsCameraGone));
  }

  // An image for the storage: 4,096 bytes of header block, and a payload.
  static void WriteImage() {
    std::string image = "VSN_V2FW";
    image += std::string("\x01\0\0\0\0\0", 6) + std::string("\x88\x13\0\0", 4);
    WriteText("/tmp/rom.image", image + std::string(4096, '\x11') + std::string(5000, '\x22'));
  }

  void* device = nullptr;
};

TEST_F(RomBoot, EnteredBurnedAndBack) {
  PluggedCamera plugged(R"({"bootLoader": {"start": "camera"}})");
  plugged.TakeTransfers();
  Enter();
  ASSERT_TRUE(WaitUntil(IsStorageThere));
  EXPECT_EQ(EntriesOf(kCameras), Lines{});
  EXPECT_EQ(plugged.TakeTransfers(),
            (Lines{"set 3.4 16 00 00 00 00 00 00 00",
                   "scsi 12 00 00 00 24 00 in 00 80 02 01 1f 00 00 00 5a 45 4d 20 20 20 20 20 42 "
                   "6f 6f 74 20 56 6f 6c 75 6d 65 20 20 20 20 20 31 2e 30 30"}));

  ASSERT_NO_FATAL_FAILURE(Open(kBootLoader));
  unsigned char value = 0;
  EXPECT_EQ(ZEMROMAPI_WriteRegister(device, 0x80001234, 0x5A), 0);
  EXPECT_EQ(ZEMROMAPI_ReadRegister(device, 0x80001234, &value), 0);
  EXPECT_EQ(value, 0x5A);
  EXPECT_EQ(plugged.TakeTransfers(),
            (Lines{"scsi 12 00 00 00 24 00 in 00 80 02 01 1f 00 00 00 5a 45 4d 20 20 20 20 20 42 "
                   "6f 6f 74 20 56 6f 6c 75 6d 65 20 20 20 20 20 31 2e 30 30",
                   "scsi fa 55 66 01 00 00 00 00 00 00 00 00 00 00 00 00 in aa 55 00 00 56 53 4e "
                   "33 00 00 00 00 00 00 00 00",
                   "scsi fa 55 66 05 80 00 12 34 5a 00 00 00 00 00 00 00 out",
                   "scsi fa 55 66 04 80 00 12 34 00 00 00 00 00 00 00 00 in 5a"}));

  WriteText("/tmp/updater.bin", std::string(70000, '\x33'));
  // The boot loader leaves, and the updater's storage comes in its place.
  EXPECT_EQ(ZEMROMAPI_LoadUpdater(device, L"/tmp/updater.bin"), 1);
  EXPECT_EQ(HeadsOf(plugged.TakeTransfers()),
            (Lines{"scsi fa 55 66 02 00 40 00 00 00 00 00 00 00 00 00 00 ou ... 98360",
                   "scsi fa 55 66 02 00 40 00 00 00 00 00 00 00 00 00 00 ou ... 98360",
                   "scsi fa 55 66 02 00 09 00 00 00 00 00 00 00 00 00 00 ou ... 13880",
                   "scsi fa 55 66 03 00 00 00 00 00 00 00 00 00 00 00 00 out",
                   "scsi 12 00 00 00 24 00 in 00 80 02 01 1f 00 00 00 5a 45 ... 133",
                   "scsi 12 00 00 00 24 00 in 00 80 02 01 1f 00 00 00 5a 45 ... 133",
                   "scsi fa 55 66 01 00 00 00 00 00 00 00 00 00 00 00 00 in ... 103"}));

  WriteImage();
  unsigned address = 0;
  EXPECT_EQ(ZEMROMAPI_SwitchModePCAM_SF(device), 0);
  EXPECT_EQ(ZEMROMAPI_BurnFw(device, L"/tmp/rom.image", &address), 1);
  EXPECT_EQ(address, 0x3000U);
  EXPECT_EQ(ZEMROMAPI_PartialRead(device, L"/tmp/rom.back", &address, 9096), 1);
  EXPECT_EQ(address, 9216U);
  EXPECT_TRUE(ReadText("/tmp/rom.back") ==
              std::string(4096, '\x11') + std::string(5000, '\x22') + std::string(120, '\0'));
  EXPECT_EQ(HeadsOf(plugged.TakeTransfers()),
            (Lines{"scsi fa 55 66 06 05 00 00 00 00 00 00 00 00 00 00 00 in 00 00 00 00",
                   "scsi fa 55 66 08 00 00 00 00 00 08 00 00 00 00 00 00 ou ... 12344",
                   "scsi fa 55 66 08 00 00 10 00 00 0a 00 00 00 00 00 00 ou ... 15416",
                   "scsi fa 55 66 08 00 00 00 00 00 08 00 00 00 00 00 00 ou ... 12344",
                   "scsi fa 55 66 07 00 00 00 00 00 12 00 00 00 00 00 00 in ... 27703"}));
  EXPECT_EQ(ZEMROMAPI_ResetSystem(device), 1);
  Close();
  ASSERT_TRUE(WaitUntil(IsCameraThere));
  const OpenedCamera camera;
  Bytes version(6);
  EXPECT_EQ(ZEMAPI_GetFWVersion(camera, version.data()), 0);
  EXPECT_EQ(version, (Bytes{1, 2, 3, 4, 5, 6}));
}

TEST_F(RomBoot, TenRoundTrips) {
  // Its storage holds firmware, so that a reset starts it.
  WriteText("/tmp/storage.bin", std::string(4096, '\x11'));
  const PluggedCamera plugged(R"({"bootLoader": {"start": "camera",
      "storages": [{"type": "sf", "size": 65536, "file": "/tmp/storage.bin"}]}})");
  for (int trip = 0; trip < 10; ++trip) {
    Enter();
    ASSERT_TRUE(WaitUntil(IsStorageThere)) << trip;
    ASSERT_NO_FATAL_FAILURE(Open(kBootLoader)) << trip;
    ASSERT_EQ(ZEMROMAPI_ResetSystem(device), 1) << trip;
    ASSERT_TRUE(WaitUntil(IsCameraThere)) << trip;
  }
}

TEST_F(RomBoot, RefusedAndLostCommands) {
  // The first five commands are inquiries of the kernel and of the search, and the search's
  // identify.
  PluggedCamera plugged(R"({"cameras": [], "bootLoader": {"faults": ["fail@4"]}})");
  ASSERT_NO_FATAL_FAILURE(Open(kBootLoader));
  plugged.TakeTransfers();
  KeepDebuggerLines();
  unsigned char value = 0x55;
  EXPECT_EQ(ZEMROMAPI_ReadRegister(device, 0x10, &value), 0) << "repeated behind a phase error";
  EXPECT_EQ(value, 0);
  EXPECT_EQ(plugged.TakeTransfers(),
            (Lines{"scsi fa 55 66 04 00 00 00 10 00 00 00 00 00 00 00 00 in",
                   "scsi fa 55 66 04 00 00 00 10 00 00 00 00 00 00 00 00 in 00"}));
  Bytes cdb = {0xFA, 0x55, 0x66, 0x7E, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  Bytes data(16);
  EXPECT_EQ(ZEMROMAPI_ScsiCommand(device, 1, 16, cdb.data(), data.data()), ZEM_E_FAIL);
  EXPECT_EQ(plugged.TakeTransfers(),
            Lines{"scsi fa 55 66 7e 00 00 00 00 00 00 00 00 00 00 00 00 in"});
  EXPECT_EQ(DebuggerLines(),
            "SendScsiCmdIIn Failed, Erroe=0x45D The request could not be carried out because of a "
            "device error.\n");
}

TEST_F(RomBoot, UnpluggedInACommand) {
  PluggedCamera plugged(R"({"cameras": [], "bootLoader": {"faults": ["unplug@8"]}})");
  ASSERT_NO_FATAL_FAILURE(Open(kBootLoader));
  KeepDebuggerLines();
  unsigned char value = 0;
  int done = 0;
  while (done < 20 && ZEMROMAPI_ReadRegister(device, 0, &value) == 0) {
    ++done;
  }
  EXPECT_LT(done, 20);
  EXPECT_EQ(DebuggerLines(), "SendScsiCmdIIn Failed, Erroe=0x48F The device is not connected.\n");
  EXPECT_TRUE(WaitUntil([] { return EntriesOf(kStorages).empty(); }));
  EXPECT_EQ(ZEMROMAPI_OpenDevice(kBootLoader), nullptr);
}

}  // namespace
