// How sysfs is read, and what of it cannot be read.
#include "platform/linux/sysfs.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "platform/linux/usb_device.h"
#include "tests/linux/linux_test.h"
#include "tests/support/temporary_folder.h"

namespace {

using zem::platform::ListNumbered;
using zem::platform::PathText;
using zem::platform::ReadAttribute;
using zem::platform::ReadNumber;
using zem::platform::ReadSysFile;
using zem::platform::Resolve;
using zem::testing::LinuxTest;
using zem::testing::PortFolder;
using zem::testing::TemporaryFolder;

class SysfsTest : public ::testing::Test {
 protected:
  void Write(const std::string& name, const std::string& text) const {
    folder_.Write(name, {text.begin(), text.end()});
  }
  PathText Folder() const { return {folder_.path().string()}; }

 private:
  TemporaryFolder folder_;
};

TEST_F(SysfsTest, OnlyWholeNumbersCount) {
  for (const char* const name : {"sg10", "sg2", "sg", "sgx", "sg3x", "sg99999999999", "video0"}) {
    Write(name, "");
  }
  std::array<unsigned, 8> numbers = {};
  ASSERT_EQ(ListNumbered(Folder(), "sg", numbers), 2U);
  EXPECT_EQ(numbers[0], 2U);
  EXPECT_EQ(numbers[1], 10U);
}

TEST_F(SysfsTest, AsManyAsThereIsRoomForAndNoneWithoutAFolder) {
  for (const char* const name : {"sg0", "sg1", "sg2"}) {
    Write(name, "");
  }
  std::array<unsigned, 2> numbers = {};
  EXPECT_EQ(ListNumbered(Folder(), "sg", numbers), 2U);
  EXPECT_EQ(ListNumbered({Folder().view(), "/none"}, "sg", numbers), 0U);
}

TEST_F(SysfsTest, AFileIsReadAsFarAsThereIsRoom) {
  Write("long", std::string(300, 'x') + "\n");
  std::array<std::uint8_t, 4> content = {};
  EXPECT_EQ(ReadSysFile({Folder().view(), "/long"}, content), 4U);
  EXPECT_EQ(ReadSysFile({Folder().view(), "/none"}, content), 0U);
  EXPECT_EQ(ReadSysFile(Folder(), content), 0U) << "a folder can be opened, and not read";
  EXPECT_EQ(ReadAttribute(Folder(), "long").view(), std::string(256, 'x'));
}

TEST_F(SysfsTest, NumbersOfEitherBase) {
  Write("number", "1f\n");
  EXPECT_EQ(ReadNumber(Folder(), "number", 16), 0x1FU);
  EXPECT_EQ(ReadNumber(Folder(), "number", 10), std::nullopt);
  EXPECT_EQ(ReadNumber(Folder(), "none", 10), std::nullopt);
  EXPECT_TRUE(Resolve({Folder().view(), "/none"}).empty());
}

// A port's path for a device whose name is no port, and which hangs on no bus.
TEST_F(LinuxTest, ADeviceWithoutBusOrPortStillHasAPath) {
  zem::platform::UsbInterface interface = {};
  interface.device = {"devices/platform/odd"};
  interface.configuration = 1;
  EXPECT_EQ(zem::platform::UsbPortPath(interface).view(), "--usb-0::1.0");
}

}  // namespace
