// A camera's life on its bus: camera, mass storage, away.
#include "simulator/usb/plugged_camera.h"

#include <gtest/gtest.h>

#include <string>

#include "simulator/kept_memory.h"
#include "tests/support/joined.h"
#include "tests/support/temporary_folder.h"

namespace {

using zem::simulator::BootLoaderOptions;
using zem::simulator::BootStage;
using zem::simulator::CameraOptions;
using zem::simulator::ParseFault;
using zem::simulator::usb::Answer;
using zem::simulator::usb::Bytes;
using zem::simulator::usb::PluggedCamera;
using zem::simulator::usb::UsbDevice;
using zem::testing::Joined;

using Form = PluggedCamera::Form;

BootLoaderOptions RunningFirmware() {
  BootLoaderOptions options;
  options.start = BootStage::kCamera;
  return options;
}

// The command of the VCP channel that sends it into ROM boot.
Answer EnterRomBoot(UsbDevice& device) {
  return device.Control({0x21, 1, 0, 4, 0, 3, 8, 0}, Bytes{0x16, 0, 0, 0, 0, 0, 0, 0});
}

// A register of the processor is read: two transfers.
Answer::Kind ReadRegister(UsbDevice& device) {
  static_cast<void>(
      device.Control({0x21, 1, 0, 1, 0, 3, 8, 0}, Bytes{0x0A, 0x01, 0, 0, 0, 0, 0, 0}));
  return device.Control({0xA1, 0x81, 0, 2, 0, 3, 8, 0}, {}).kind;
}

Bytes Vendor(std::uint8_t code, std::uint32_t length, bool isIn) {
  Bytes block = Joined({{'U', 'S', 'B', 'C', 1, 2, 3, 4, static_cast<std::uint8_t>(length),
                         static_cast<std::uint8_t>(length >> 8), 0, 0,
                         static_cast<std::uint8_t>(isIn ? 0x80 : 0), 0, 16, 0xFA, 0x55, 0x66, code},
                        Bytes(12)});
  if (code == 0x02) {
    block[20] = 1;  // one sector
  }
  return block;
}

// A command without data; whether it passed.
bool RunCommand(UsbDevice& device, std::uint8_t code) {
  EXPECT_EQ(device.Send(2, Vendor(code, 0, false)).kind, Answer::Kind::kDone);
  const auto status = device.Receive(0x81, 13, {});
  return status && status->data.size() == 13 && status->data[12] == 0;
}

std::uint8_t ClassOf(const UsbDevice& device) { return device.descriptors().configuration[14]; }

TEST(PluggedCameraTest, WithoutABootLoaderItIsACamera) {
  PluggedCamera camera(CameraOptions(), std::nullopt);
  EXPECT_EQ(camera.form(), Form::kCamera);
  EXPECT_EQ(camera.bootLoader(), nullptr);
  ASSERT_NE(camera.device(), nullptr);
  EXPECT_EQ(ReadRegister(*camera.device()), Answer::Kind::kDone);
}

TEST(PluggedCameraTest, RomBootAndBack) {
  PluggedCamera camera(CameraOptions(), RunningFirmware());
  EXPECT_EQ(camera.form(), Form::kCamera);
  const auto first = camera.device();
  EXPECT_EQ(EnterRomBoot(*first).kind, Answer::Kind::kDone) << "the host hears of it";
  EXPECT_TRUE(first->isGone());
  EXPECT_EQ(camera.form(), Form::kStorage);
  const auto storage = camera.device();
  ASSERT_NE(storage, nullptr);
  EXPECT_EQ(ClassOf(*storage), 0x08);
  // Without firmware in its flash a reset leads to the boot loader again, as another device.
  EXPECT_TRUE(RunCommand(*storage, 0x21));
  EXPECT_TRUE(storage->isGone());
  const auto again = camera.device();
  ASSERT_NE(again, nullptr);
  EXPECT_NE(again, storage);
  EXPECT_EQ(camera.form(), Form::kStorage);
  // The updater is loaded and started.
  EXPECT_EQ(again->Send(2, Vendor(0x02, 512, false)).kind, Answer::Kind::kDone);
  EXPECT_EQ(again->Send(2, Bytes(512, 1)).kind, Answer::Kind::kDone);
  EXPECT_EQ(again->Receive(0x81, 13, {})->data[12], 0);
  EXPECT_TRUE(RunCommand(*again, 0x03));
  EXPECT_TRUE(again->isGone());
  const auto updater = camera.device();
  EXPECT_EQ(camera.bootLoader()->stage(), BootStage::kZemStorage);
  ASSERT_NE(updater, nullptr);
  camera.bootLoader()->FindStorage(zem::simulator::StorageType::kSerialFlash)->Write(0, Bytes{1});
  EXPECT_TRUE(RunCommand(*updater, 0x21));
  EXPECT_EQ(camera.form(), Form::kCamera);
  ASSERT_NE(camera.device(), nullptr);
  EXPECT_NE(camera.device(), first);
  EXPECT_EQ(ReadRegister(*camera.device()), Answer::Kind::kDone);
}

TEST(PluggedCameraTest, UnpluggedAndLeavingItStaysAway) {
  for (const char* const fault : {"unplug@2", "leave@2"}) {
    CameraOptions options;
    options.faults = {ParseFault(fault).value()};
    PluggedCamera camera(options, std::nullopt);
    const auto device = camera.device();
    EXPECT_EQ(ReadRegister(*device), fault[0] == 'u' ? Answer::Kind::kGone : Answer::Kind::kDone);
    EXPECT_EQ(camera.form(), Form::kAway) << fault;
    EXPECT_EQ(camera.device(), nullptr);
  }
}

TEST(PluggedCameraTest, PluggedInAgainItIsANewOneThatKeepsItsMemory) {
  const zem::testing::TemporaryFolder folder;
  CameraOptions options;
  options.stateFile = folder.path() / "state.json";
  options.faults = {ParseFault("replug@2").value()};
  PluggedCamera camera(options, std::nullopt);
  const auto first = camera.device();
  EXPECT_EQ(ReadRegister(*first), Answer::Kind::kGone);
  EXPECT_TRUE(first->isGone());
  EXPECT_EQ(camera.form(), Form::kCamera);
  EXPECT_EQ(ReadRegister(*camera.device()), Answer::Kind::kDone) << "once";
  camera.Save();
  EXPECT_FALSE(zem::simulator::ReadStateFile(options.stateFile).empty());
}

TEST(PluggedCameraTest, ABootLoaderThatGoesStaysAway) {
  BootLoaderOptions options;
  options.faults = {ParseFault("unplug@1").value()};
  PluggedCamera camera(CameraOptions(), options);
  EXPECT_EQ(camera.form(), Form::kStorage) << "it begins in its boot loader";
  EXPECT_EQ(camera.device()->Send(2, Vendor(0x01, 16, true)).kind, Answer::Kind::kGone);
  EXPECT_EQ(camera.form(), Form::kAway);
}

TEST(PluggedCameraTest, ABootLoaderWithoutACamera) {
  PluggedCamera camera(std::nullopt, BootLoaderOptions());
  EXPECT_EQ(camera.form(), Form::kStorage);
  camera.bootLoader()->FindStorage(zem::simulator::StorageType::kSerialFlash)->Write(0, Bytes{1});
  EXPECT_TRUE(RunCommand(*camera.device(), 0x21));
  EXPECT_EQ(camera.form(), Form::kAway) << "there is no camera that could come";
  camera.Save();
}

TEST(PluggedCameraTest, StreamsOfEveryNewCameraAreTold) {
  PluggedCamera camera(CameraOptions(), RunningFirmware());
  std::string told;
  camera.SetStreamObserver([&](bool runs) { told += runs ? "begins " : "ends "; });
  const auto stream = [&] {
    EXPECT_EQ(camera.device()->Control({0x21, 1, 0, 2, 1, 0, 34, 0}, Bytes(34)).kind,
              Answer::Kind::kDone);
    EXPECT_TRUE(camera.device()->Receive(0x82, 16384, {}).has_value());
  };
  stream();
  EnterRomBoot(*camera.device());
  camera.bootLoader()->FindStorage(zem::simulator::StorageType::kSerialFlash)->Write(0, Bytes{1});
  EXPECT_TRUE(RunCommand(*camera.device(), 0x21));
  stream();
  EXPECT_EQ(told, "begins begins ");
}

}  // namespace
