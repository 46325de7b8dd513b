// zemctl, and the example that takes a frame, as users meet them in this machine's kernel.
#include <cstdio>
#include <string>

#include "include/ZemUVCExtApi.h"
#include "simulator/usb/test_picture.h"
#include "tests/kernel/plugged_camera.h"

namespace {

using zem::testing::EntriesOf;
using zem::testing::IsCameraThere;
using zem::testing::kInRomBoot;
using zem::testing::kStorages;
using zem::testing::PluggedCamera;
using zem::testing::ReadText;
using zem::testing::RunProgram;
using zem::testing::WaitUntil;
using zem::testing::WriteText;

constexpr uid_t kNobody = 1001;  // in no group that may use devices

class Tool : public ::testing::Test {
 protected:
  Tool() {
    std::string image = "VSN_V2FW" + std::string("\x01\0\0\0\0\0\x88\x13\0\0", 10);
    WriteText("/tmp/image.bin", image + std::string(4096, '\x11') + std::string(5000, '\x22'));
    WriteText("/tmp/updater.bin", std::string(70000, '\x33'));
  }

  // What a line of a program's output says behind its first words; empty without such a line.
  static std::string Field(const std::string& output, const std::string& words) {
    const std::size_t begin = output.find("\n" + words);
    if (begin == std::string::npos) {
      return {};
    }
    const std::size_t value = output.find_first_not_of(' ', begin + 1 + words.size());
    return output.substr(value, output.find('\n', value) - value);
  }
};

TEST_F(Tool, RecoverSendsARunningCameraIntoRomBootAndBringsItBack) {
  const PluggedCamera plugged(R"({"bootLoader": {"letter": "C", "start": "camera"}})");
  ASSERT_TRUE(IsCameraThere());
  const auto run = RunProgram(
      "zemctl recover image.bin --enter --storage sf --updater updater.bin --yes --wait 60");
  EXPECT_EQ(run.status, 0) << run.output << run.errors;
  EXPECT_EQ(Field(run.output, "verified:"), "9096 bytes read back, all as they should be");
  EXPECT_EQ(Field(run.output, "camera:"), "\"ZEM Simulated Camera\" (5a45:8c00) at 1-1");
  EXPECT_TRUE(WaitUntil(IsCameraThere));
}

TEST_F(Tool, RecoverSaysWhatIsThereWhenTheCameraIsUnplugged) {
  const PluggedCamera plugged(R"({"bootLoader": {"letter": "C", "faults": ["unplug@18"]}})");
  const auto run = RunProgram("zemctl recover image.bin --storage sf --updater updater.bin --yes");
  EXPECT_EQ(run.status, 7);
  EXPECT_NE(run.errors.find(
                "\n  Camera: its volume C: is gone; the code was loaded and started; nothing was "
                "erased or written in the storage sf. Next: This can be run again: zemctl recover "
                "image.bin --storage sf --updater updater.bin --yes\n"),
            std::string::npos)
      << run.errors;
  EXPECT_TRUE(WaitUntil([] { return EntriesOf(kStorages).empty(); }));
}

TEST_F(Tool, UpdateSaysWhatIsThereWhenTheCameraIsUnplugged) {
  WriteText("/tmp/firmware.bin", std::string(4096, '\x44'));
  const PluggedCamera plugged(R"({"cameras": [{"chip": "516x", "faults": ["unplug@12"]}]})");
  const auto run = RunProgram("zemctl update firmware --chip 516x firmware.bin --yes");
  EXPECT_EQ(run.status, 7);
  EXPECT_NE(run.errors.find(
                "\n  Camera: no burn order went through: the camera keeps what it had. Next: check "
                "that the camera is attached (zemctl list), then run this command once more.\n"),
            std::string::npos)
      << run.errors;
}

TEST_F(Tool, PermissionThatIsMissing) {
  {
    const PluggedCamera plugged;
    const auto run = RunProgram("zemctl info", kNobody);
    EXPECT_EQ(run.status, 7);
    EXPECT_EQ(
        run.errors,
        "zemctl: ZEMAPI_OpenDevice: \"ZEM Simulated Camera\" (5a45:8c00) at 1-1 may not be opened "
        "by this user (platform failure, 0x80070005).\n  Camera: it was not opened, and nothing "
        "was sent. Next: Install the project's udev rules, packaging/60-zem-cameras.rules, and "
        "plug the camera in again; or run this as root.\n");
    const auto list = RunProgram("zemctl list", kNobody);
    EXPECT_EQ(list.status, 7);
    EXPECT_EQ(Field(list.output, "  vendor unit:"),
              "not read: ZEMAPI_OpenDeviceByPath: \"ZEM Simulated Camera\" (5a45:8c00) at 1-1 may "
              "not be opened by this user (platform failure, 0x80070005)");
    EXPECT_EQ(Field(list.output, "  place:"), "1-1");
  }
  const PluggedCamera plugged(kInRomBoot);
  const auto run = RunProgram("zemctl rom info", kNobody);
  EXPECT_EQ(run.status, 3);
  EXPECT_EQ(run.errors,
            "zemctl: ZEMROMAPI_OpenDevice: no camera in ROM boot was found among the volumes C: to "
            "Z:; C: (/dev/sg0) may not be opened by this user (ZEM_E_FAIL, 0x80004005).\n  Camera: "
            "no volume has answered. Next: Install the project's udev rules, "
            "packaging/60-zem-cameras.rules, and plug the camera in again; or run this as root. "
            "This can be run again: zemctl rom info\n");
}

TEST_F(Tool, ExampleMakesAPictureOfAFrame) {
  const PluggedCamera plugged;
  const auto run =
      RunProgram(std::string("/zem/grab_frame ") + zem::testing::kVideoFile + " /tmp/frame.bmp");
  ASSERT_EQ(run.status, 0) << run.output << run.errors;
  const std::string picture = ReadText("/tmp/frame.bmp");
  ASSERT_EQ(picture.size(), 54U + 640U * 480U * 3U);
  // A camera that has just begun to stream is at one of its first frames.
  bool isFound = false;
  for (std::uint32_t number = 0; number < 64 && !isFound; ++number) {
    const auto frame = zem::simulator::usb::DrawTestPicture(640, 480, number);
    ASSERT_EQ(ConvertYUY2toBMP(L"/tmp/expected.bmp", frame.data(), 640, 480), 1);
    isFound = ReadText("/tmp/expected.bmp") == picture;
  }
  EXPECT_TRUE(isFound);
}

}  // namespace
