// The kernel's USB/IP host, as its files in sysfs show it.
#include "tools/usb_camera/vhci.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/support/temporary_folder.h"

namespace {

using zem::testing::TemporaryFolder;
using zem::usb_camera::ParseVhciStatus;
using zem::usb_camera::Vhci;
using zem::usb_camera::VhciPort;

constexpr std::string_view kStatus =
    "hub port sta spd dev      sockfd local_busid\n"
    "hs  0000 006 003 00010001 000005 1-1\n"
    "hs  0001 004 000 00000000 000000 0-0\n"
    "hs  0010 004 000 00000000 000000 0-0\n"
    "ss  0015 004 000 00000000 000000 0-0\n";

class VhciTest : public ::testing::Test {
 protected:
  void Write(const std::string& name, std::string_view text) const {
    folder_.Write(name, {text.begin(), text.end()});
  }
  std::string FailureOf(const std::vector<unsigned>& reserved) const {
    try {
      return "port " + std::to_string(host_.FindPort(reserved));
    } catch (const std::runtime_error& error) {
      return error.what();
    }
  }

  TemporaryFolder folder_;
  Vhci host_{folder_.path()};
};

TEST_F(VhciTest, PortsOfBothSpeeds) {
  const std::vector<VhciPort> ports = ParseVhciStatus(kStatus);
  ASSERT_EQ(ports.size(), 4U);
  EXPECT_EQ(ports[0].number, 0U);
  EXPECT_FALSE(ports[0].isFree);
  EXPECT_EQ(ports[2].number, 10U) << "decimal, with zeros in front";
  EXPECT_TRUE(ports[2].isFree);
  EXPECT_FALSE(ports[2].isSuperSpeed);
  EXPECT_EQ(ports[3].number, 15U);
  EXPECT_TRUE(ports[3].isSuperSpeed);
  EXPECT_TRUE(ParseVhciStatus("").empty());
  EXPECT_TRUE(ParseVhciStatus("hs\nhs x\nother 0001 004\n").empty());
}

TEST_F(VhciTest, AFreePortOfItsSpeedThatNobodyElseGets) {
  Write("status", kStatus);
  EXPECT_EQ(host_.FindPort({}), 1U);
  EXPECT_EQ(host_.FindPort({1}), 10U);
  EXPECT_TRUE(host_.IsFree(1));
  EXPECT_FALSE(host_.IsFree(0));
  EXPECT_FALSE(host_.IsFree(2)) << "there is none";
  EXPECT_EQ(FailureOf({1, 10}),
            "all 3 high-speed ports of the kernel's USB/IP host are in use; a camera does not fit "
            "into its super-speed ports");
}

TEST_F(VhciTest, PortsOfTheOtherControllers) {
  Write("status", "hs  0000 006 003 00010001 000005 1-1\n");
  Write("status.1", "hs  0016 006 003 00010001 000005 1-1\n");
  Write("status.2", "hs  0032 004 000 00000000 000000 0-0\n");
  EXPECT_EQ(host_.FindPort({}), 32U);
}

TEST_F(VhciTest, WithoutTheModule) {
  EXPECT_EQ(FailureOf({}),
            "the kernel has no USB/IP host: its module vhci-hcd is not loaded (modprobe vhci-hcd)");
}

TEST_F(VhciTest, Attach) {
  Write("attach", "");
  EXPECT_TRUE(host_.Attach(3, 7, 0x00010002));
  const auto written = folder_.Read("attach");
  EXPECT_EQ(std::string(written.begin(), written.end()), "3 7 65538 3\n");
}

TEST_F(VhciTest, AttachWithoutAHost) {
  try {
    host_.Attach(3, 7, 0x00010002);
    ADD_FAILURE() << "attached";
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(),
                 "the kernel's USB/IP host cannot be used: No such file or directory");
  }
}

}  // namespace
