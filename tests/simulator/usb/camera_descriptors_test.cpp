// The simulated camera's USB descriptors, byte by byte, and read back.
#include "simulator/usb/camera_descriptors.h"

#include <gtest/gtest.h>

#include "device/extension_units.h"
#include "platform/linux/video_control.h"

namespace {

using zem::platform::EntityKind;
using zem::platform::ReadVideoTopology;
using zem::platform::VideoTopology;
using zem::simulator::CameraOptions;
using zem::simulator::usb::Bytes;
using zem::simulator::usb::DescribeCamera;
using zem::simulator::usb::DescribeLanguages;
using zem::simulator::usb::DescribeText;
using zem::simulator::usb::DeviceDescriptors;

VideoTopology Topology(const DeviceDescriptors& camera) {
  Bytes all = camera.device;
  all.insert(all.end(), camera.configuration.begin(), camera.configuration.end());
  VideoTopology topology;
  ReadVideoTopology(all, 1, 0, topology);
  return topology;
}

TEST(CameraDescriptorsTest, TheDeviceLiterally) {
  CameraOptions options;
  options.vendorId = 0x1234;
  options.productId = 0x5678;
  const DeviceDescriptors camera = DescribeCamera(options);
  EXPECT_EQ(camera.device,
            (Bytes{18, 1, 0, 2, 0xEF, 2, 1, 64, 0x34, 0x12, 0x78, 0x56, 0, 1, 1, 2, 3, 1}));
  EXPECT_EQ(camera.qualifier, (Bytes{10, 6, 0, 2, 0xEF, 2, 1, 64, 1, 0}));
  EXPECT_EQ(camera.strings,
            (std::vector<std::string>{"ZEM", "ZEM Simulated Camera", "0000000000000000"}));
}

TEST(CameraDescriptorsTest, TheConfigurationLiterally) {
  // clang-format off
  const Bytes kExpected = {
      // The configuration and its two interfaces' association.
      9, 2, 210, 0, 2, 1, 0, 0x80, 50,
      8, 11, 0, 2, 0x0E, 3, 0, 0,
      // Video control: header, camera terminal, processing unit, vendor unit, output terminal.
      9, 4, 0, 0, 1, 0x0E, 1, 0, 0,
      13, 0x24, 1, 0x10, 1, 79, 0, 0x00, 0x6C, 0xDC, 0x02, 1, 1,
      18, 0x24, 2, 1, 0x01, 0x02, 0, 0, 0, 0, 0, 0, 0, 0, 3, 0x2A, 0x0A, 0x02,
      12, 0x24, 5, 2, 1, 0, 0, 2, 0x7F, 0x13, 0, 0,
      27, 0x24, 6, 3, 0xD0, 0x9E, 0xE4, 0x23, 0x78, 0x11, 0x31, 0x4F, 0xAE, 0x52, 0xD2, 0xFB, 0x8A,
      0x8D, 0x3B, 0x48, 15, 1, 2, 2, 0xFF, 0xF7, 0,
      9, 0x24, 3, 4, 0x01, 0x01, 0, 3, 0,
      7, 5, 0x81, 3, 16, 0, 8,
      5, 0x25, 3, 16, 0,
      // Streaming: input header, format, frame, colours, and the endpoint.
      9, 4, 1, 0, 1, 0x0E, 2, 0, 0,
      14, 0x24, 1, 1, 77, 0, 0x82, 0, 4, 0, 0, 0, 1, 0,
      27, 0x24, 4, 1, 1, 'Y', 'U', 'Y', '2', 0, 0, 0x10, 0, 0x80, 0, 0, 0xAA, 0, 0x38, 0x9B, 0x71,
      16, 1, 0, 0, 0, 0,
      30, 0x24, 5, 1, 0, 0x80, 0x02, 0xE0, 0x01, 0, 0, 0xCA, 8, 0, 0, 0xCA, 8, 0, 0x60, 9, 0,
      0x15, 0x16, 5, 0, 1, 0x15, 0x16, 5, 0,
      6, 0x24, 0x0D, 1, 1, 4,
      7, 5, 0x82, 2, 0, 2, 0,
  };
  // clang-format on
  EXPECT_EQ(DescribeCamera(CameraOptions()).configuration, kExpected);
}

TEST(CameraDescriptorsTest, EveryUnitInTheOrderOfTheModel) {
  CameraOptions options;
  options.h264Unit = true;
  options.skypeUnit = true;
  options.orvaUnit = true;
  options.encodingUnit = true;
  options.streamProbeUnit = true;
  options.tirellaUnit = true;
  const DeviceDescriptors camera = DescribeCamera(options);
  const VideoTopology topology = Topology(camera);
  ASSERT_EQ(topology.count, 10U);
  const GUID kUnits[] = {zem::VendorXu,       zem::H264Xu,        zem::SkypeXu,  zem::OrvaXu,
                         zem::EncodingUnitXu, zem::StreamProbeXu, zem::TirellaXu};
  for (std::size_t index = 0; index < std::size(kUnits); ++index) {
    EXPECT_EQ(topology.entities[index + 2].kind, EntityKind::kExtensionUnit) << index;
    EXPECT_EQ(topology.entities[index + 2].id, index + 3) << index;
    EXPECT_TRUE(topology.entities[index + 2].extension == kUnits[index]) << index;
  }
  EXPECT_EQ(topology.entities[9].kind, EntityKind::kOutputTerminal);
  EXPECT_EQ(topology.entities[9].id, 10);
  EXPECT_EQ(camera.configuration[2] | camera.configuration[3] << 8,
            static_cast<int>(camera.configuration.size()));
}

// What the model lacks is another entity of the same place, so that nodes keep their numbers.
TEST(CameraDescriptorsTest, WithoutStandardControls) {
  CameraOptions options;
  options.videoControls = false;
  options.cameraControls = false;
  options.vendorUnit = false;
  const VideoTopology topology = Topology(DescribeCamera(options));
  ASSERT_EQ(topology.count, 3U);
  EXPECT_EQ(topology.entities[0].kind, EntityKind::kInputTerminal);
  EXPECT_EQ(topology.entities[0].terminalType, 0x0200);
  EXPECT_EQ(topology.entities[1].kind, EntityKind::kSelectorUnit);
  EXPECT_EQ(topology.entities[2].kind, EntityKind::kOutputTerminal);
  EXPECT_EQ(topology.entities[2].id, 3);
}

TEST(CameraDescriptorsTest, Texts) {
  EXPECT_EQ(DescribeText("ZEM"), (Bytes{8, 3, 'Z', 0, 'E', 0, 'M', 0}));
  EXPECT_EQ(DescribeText(""), (Bytes{2, 3}));
  EXPECT_EQ(DescribeText(std::string(127, 'x')).size(), 254U);
  EXPECT_EQ(DescribeText(std::string(126, 'x')).size(), 254U);
  EXPECT_EQ(DescribeLanguages(), (Bytes{4, 3, 9, 4}));
}

}  // namespace
