// The options of the simulator, and the camera they make.
#include "simulator/options.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "device/extension_units.h"

namespace {

using zem::simulator::BootStage;
using zem::simulator::Options;
using zem::simulator::ParseOptions;
using zem::simulator::StorageType;
using Bytes = std::vector<std::uint8_t>;

TEST(SimulatorOptionsTest, NothingIsOneDefaultCamera) {
  for (const char* const text : {"", "{}"}) {
    const Options options = ParseOptions(text);
    ASSERT_EQ(options.cameras.size(), 1U);
    EXPECT_EQ(options.cameras[0].vendorId, 0x5A45);
    EXPECT_EQ(options.cameras[0].productId, 0x8C00);
    EXPECT_TRUE(options.cameras[0].vendorUnit);
  }
}

TEST(SimulatorOptionsTest, CamerasAsTold) {
  const Options options = ParseOptions(
      R"({"cameras": [{"vendorId": 1, "productId": 2, "name": "x", "vendorUnit": false,
                       "faults": ["fail@3"]}, {}]})");
  ASSERT_EQ(options.cameras.size(), 2U);
  EXPECT_EQ(options.cameras[0].vendorId, 1);
  EXPECT_EQ(options.cameras[0].productId, 2);
  EXPECT_EQ(options.cameras[0].name, "x");
  EXPECT_FALSE(options.cameras[0].vendorUnit);
  ASSERT_EQ(options.cameras[0].faults.size(), 1U);
  EXPECT_EQ(options.cameras[0].faults[0].first, 3U);
  EXPECT_TRUE(ParseOptions(R"({"cameras": []})").cameras.empty());
}

TEST(SimulatorOptionsTest, NoBootLoaderUnlessAskedFor) {
  EXPECT_TRUE(ParseOptions("{}").bootLoaders.empty());
  const auto loaders = ParseOptions(R"({"bootLoader": {}})").bootLoaders;
  ASSERT_EQ(loaders.size(), 1U);
  const auto* const loader = &loaders.at(0);
  EXPECT_EQ(loader->letter, L'F');
  EXPECT_EQ(loader->start, BootStage::kBootLoader);
  EXPECT_EQ(loader->afterJump, BootStage::kZemStorage);
  EXPECT_EQ(loader->signature, "VSN3");
  EXPECT_EQ(loader->responseFormat, 1);
  EXPECT_EQ(loader->absentOpens, 1U);
  ASSERT_EQ(loader->storages.size(), 2U);
  EXPECT_EQ(loader->storages[0].type, StorageType::kSerialFlash);
  EXPECT_EQ(loader->storages[0].size, 4194304U);
  EXPECT_EQ(loader->storages[1].type, StorageType::kDram);
}

TEST(SimulatorOptionsTest, EachCameraMayHaveABootLoader) {
  const auto loaders = ParseOptions(R"({"bootLoader": {"letter": "K"}, "cameras": [{}, {},
      {"bootLoader": {"letter": "L", "start": "camera"}}]})")
                           .bootLoaders;
  ASSERT_EQ(loaders.size(), 2U);
  EXPECT_EQ(loaders.at(0).letter, L'K');
  EXPECT_EQ(loaders.at(2).letter, L'L');
  EXPECT_EQ(loaders.at(2).start, BootStage::kCamera);
}

TEST(SimulatorOptionsTest, BootLoaderAsTold) {
  const auto loaders = ParseOptions(R"({"bootLoader": {
      "letter": "Q", "start": "camera", "afterJump": "gone", "signature": "VSN2",
      "responseFormat": 2, "absentOpens": 7, "faults": ["fail@2+3=5"],
      "storages": [{"type": "emmc", "size": 1024, "file": "x"}, {"type": "sf"},
                   {"type": "spi-nand"}, {"type": "parallel-nand"}, {"type": "dram"}]}})")
                           .bootLoaders;
  ASSERT_EQ(loaders.size(), 1U);
  const auto* const loader = &loaders.at(0);
  EXPECT_EQ(loader->letter, L'Q');
  EXPECT_EQ(loader->start, BootStage::kCamera);
  EXPECT_EQ(loader->afterJump, BootStage::kGone);
  EXPECT_EQ(loader->signature, "VSN2");
  EXPECT_EQ(loader->responseFormat, 2);
  EXPECT_EQ(loader->absentOpens, 7U);
  ASSERT_EQ(loader->faults.size(), 1U);
  EXPECT_EQ(loader->faults[0].value, 5U);
  ASSERT_EQ(loader->storages.size(), 5U);
  EXPECT_EQ(loader->storages[0].type, StorageType::kEmmc);
  EXPECT_EQ(loader->storages[0].size, 1024U);
  EXPECT_EQ(loader->storages[0].file, "x");
  EXPECT_EQ(loader->storages[2].type, StorageType::kSpiNand);
  EXPECT_EQ(loader->storages[3].type, StorageType::kParallelNand);
}

TEST(SimulatorOptionsTest, DataChannelAsTold) {
  const Options options = ParseOptions(
      R"({"cameras": [{"chip": "516x", "dataLength": 64, "highSpeed": false, "burnPolls": 7,
                       "burnError": true, "busy": true, "state": "s"}, {}]})");
  const auto& told = options.cameras.at(0);
  EXPECT_EQ(told.vendor.chip, zem::simulator::VendorSettings::Chip::k516x);
  EXPECT_EQ(told.vendor.data.dataLength, 64U);
  EXPECT_FALSE(told.vendor.data.highSpeed);
  EXPECT_EQ(told.vendor.data.burnPolls, 7U);
  EXPECT_TRUE(told.vendor.data.burnError);
  EXPECT_TRUE(told.vendor.data.busy);
  EXPECT_EQ(told.stateFile, "s");
  const auto& standing = options.cameras.at(1);
  EXPECT_EQ(standing.vendor.chip, zem::simulator::VendorSettings::Chip::k517x);
  EXPECT_EQ(standing.vendor.data.dataLength, 32U);
  EXPECT_TRUE(standing.vendor.data.highSpeed);
  EXPECT_EQ(standing.vendor.data.burnPolls, 0U);
  EXPECT_FALSE(standing.vendor.data.burnError);
  EXPECT_FALSE(standing.vendor.data.busy);
  EXPECT_TRUE(standing.stateFile.empty());
}

TEST(SimulatorOptionsTest, WrongOptionsAreRefusedWithAReason) {
  for (const char* const text :
       {"nonsense",
        "[]",
        R"({"camera": []})",
        R"({"cameras": [{"vid": 1}]})",
        R"({"cameras": [{"vendorId": 65536}]})",
        R"({"cameras": [{"vendorId": "x"}]})",
        R"({"cameras": [{"skypeVersion": 256}]})",
        R"({"cameras": [{"h264Formats": [1]}]})",
        R"({"cameras": [{"h264Formats": [{"fps": 1}]}]})",
        R"({"cameras": [{"h264Formats": [{"index": 256}]}]})",
        R"({"cameras": [{"h264Formats": [{"maxBitRate": 4294967296}]}]})",
        R"({"cameras": [{"h264Formats": [{"width": -1}]}]})",
        R"({"cameras": [{"faults": ["x"]}]})",
        R"({"cameras": [{"chip": "518x"}]})",
        R"({"cameras": [{"dataLength": 512}]})",
        R"({"cameras": [{"burnPolls": -1}]})",
        R"({"cameras": [1]})",
        R"({"cameras": {"a": {}}})",
        R"({"cameras": null})",
        R"({"cameras": [{"h264Formats": {"a": {}}}]})",
        R"({"cameras": [{"tables": {"a": {"id": 1}}}]})",
        R"({"bootLoader": {"storages": {"a": {}}}})",
        R"({"bootLoader": {"x": 1}})",
        R"({"cameras": [{"bootLoader": {}}, {"bootLoader": {}}]})",
        R"({"cameras": [{"bootLoader": {"letter": "G"}}], "bootLoader": {}})",
        R"({"bootLoader": {"letter": "B"}})",
        R"({"bootLoader": {"letter": "FG"}})",
        R"({"bootLoader": {"start": "x"}})",
        R"({"bootLoader": {"faults": ["x"]}})",
        R"({"bootLoader": {"storages": [{"type": "x"}]}})",
        R"({"bootLoader": {"storages": [{"size": -1}]}})",
        R"({"bootLoader": {"storages": [{"size": 268435457}]}})"}) {
    EXPECT_THROW(ParseOptions(text), std::invalid_argument) << text;
  }
}

TEST(SimulatorOptionsTest, MemoryAsToldOrFromTheFactory) {
  const auto memoryOf = [](const char* text) { return ParseOptions(text).cameras[0].nvmem; };
  const Bytes factory = memoryOf(R"({"cameras": [{}]})");
  ASSERT_EQ(factory.size(), 88U);
  EXPECT_EQ(Bytes(factory.begin(), factory.begin() + 17),
            (Bytes{0xEE, 0, 88, 0, 0, 1, 12, 0, 1, 2, 3, 4, 5, 6, 7, 8, 0}));
  EXPECT_EQ(memoryOf(R"({"cameras": [{"nvmem": []}]})"), Bytes());
  EXPECT_EQ(memoryOf(R"({"cameras": [{"nvmem": [1, 255]}]})"), (Bytes{1, 255}));
  EXPECT_EQ(memoryOf(R"({"cameras": [{"tables": []}]})"), (Bytes{0xEE, 0, 4, 0}));
  EXPECT_EQ(memoryOf(R"({"cameras": [{"tables": [{"id": 7, "data": [1, 2]}, {"id": 8}]}]})"),
            (Bytes{0xEE, 0, 14, 0, 0, 7, 6, 0, 1, 2, 0, 8, 4, 0}));
  for (const char* const wrong :
       {R"({"cameras": [{"nvmem": [256]}]})", R"({"cameras": [{"nvmem": [-1]}]})",
        R"({"cameras": [{"nvmem": 1}]})", R"({"cameras": [{"nvmem": [], "tables": []}]})",
        R"({"cameras": [{"tables": [{"data": []}]}]})",
        R"({"cameras": [{"tables": [{"id": 256}]}]})",
        R"({"cameras": [{"tables": [{"id": 1, "size": 2}]}]})"}) {
    EXPECT_THROW(ParseOptions(wrong), std::invalid_argument) << wrong;
  }
}

TEST(SimulatorOptionsTest, MemoryHas8192Bytes) {
  EXPECT_EQ(zem::simulator::MakeTableImage({{1, Bytes(8184)}}).size(), 8192U);
  EXPECT_THROW(zem::simulator::MakeTableImage({{1, Bytes(8185)}}), std::invalid_argument);
  const auto withMemory = [](std::size_t size) {
    std::string text = R"({"cameras": [{"nvmem": [0)";
    for (std::size_t index = 1; index < size; ++index) {
      text += ",0";
    }
    return text + "]}]}";
  };
  EXPECT_EQ(ParseOptions(withMemory(8192)).cameras[0].nvmem.size(), 8192U);
  EXPECT_THROW(ParseOptions(withMemory(8193)), std::invalid_argument);
}

TEST(SimulatorOptionsTest, TirellaUnitIsTheFourthNode) {
  zem::simulator::CameraOptions options;
  options.tirellaUnit = true;
  const auto camera = zem::simulator::MakeCamera(options);
  ASSERT_EQ(camera->nodeCount(), 4U);
  EXPECT_TRUE(camera->UnitAt(3)->id() == zem::TirellaXu);
}

TEST(SimulatorOptionsTest, VendorUnitIsTheThirdNode) {
  zem::simulator::CameraOptions options;
  const auto camera = zem::simulator::MakeCamera(options);
  EXPECT_EQ(camera->nodeCount(), 3U);
  EXPECT_NE(camera->UnitAt(2), nullptr);
  options.vendorUnit = false;
  EXPECT_EQ(zem::simulator::MakeCamera(options)->nodeCount(), 2U);
}

TEST(SimulatorOptionsTest, FormatsAsTold) {
  const Options options = ParseOptions(
      R"({"cameras": [{"skypeVersion": 20, "h264Formats": [{}, {"type": 2, "index": 3, "width": 4,
          "height": 5, "subWidth": 6, "subHeight": 7, "maxBitRate": 4294967295, "minBitRate": 9,
          "maxFps": 10, "minFps": 11}]}]})");
  const auto& camera = options.cameras.at(0);
  EXPECT_EQ(camera.skypeVersion, 20);
  ASSERT_EQ(camera.h264Formats.size(), 2U);
  EXPECT_EQ(camera.h264Formats[0].type, 1);
  EXPECT_EQ(camera.h264Formats[0].maxFps, 30);
  const auto& format = camera.h264Formats[1];
  EXPECT_EQ(format.type, 2);
  EXPECT_EQ(format.frameIndex, 3);
  EXPECT_EQ(format.width, 4);
  EXPECT_EQ(format.height, 5);
  EXPECT_EQ(format.subWidth, 6);
  EXPECT_EQ(format.subHeight, 7);
  EXPECT_EQ(format.maxBitRate, 4294967295U);
  EXPECT_EQ(format.minBitRate, 9U);
  EXPECT_EQ(format.maxFps, 10);
  EXPECT_EQ(format.minFps, 11);
}

TEST(SimulatorOptionsTest, UnitsInTheirOrder) {
  zem::simulator::CameraOptions options;
  options.h264Unit = true;
  options.skypeUnit = true;
  options.orvaUnit = true;
  const auto camera = zem::simulator::MakeCamera(options);
  ASSERT_EQ(camera->nodeCount(), 6U);
  EXPECT_TRUE(camera->UnitAt(2)->id() == zem::VendorXu);
  EXPECT_TRUE(camera->UnitAt(3)->id() == zem::H264Xu);
  EXPECT_TRUE(camera->UnitAt(4)->id() == zem::SkypeXu);
  EXPECT_TRUE(camera->UnitAt(5)->id() == zem::OrvaXu);
}

TEST(SimulatorOptionsTest, EncodingUnitAndStreamProbeUnitAreNodesWhereAskedFor) {
  const Options options =
      ParseOptions(R"({"cameras": [{"encodingUnit": true, "streamProbeUnit": true}, {}]})");
  const auto camera = zem::simulator::MakeCamera(options.cameras[0]);
  ASSERT_EQ(camera->nodeCount(), 5U);
  EXPECT_TRUE(camera->UnitAt(3)->id() == zem::EncodingUnitXu);
  EXPECT_TRUE(camera->UnitAt(4)->id() == zem::StreamProbeXu);
  EXPECT_EQ(zem::simulator::MakeCamera(options.cameras[1])->nodeCount(), 3U);
}

TEST(SimulatorOptionsTest, StandardControlsAndMicrophoneUnlessSwitchedOff) {
  using zem::simulator::ControlFamily;
  const Options options = ParseOptions(
      R"({"cameras": [{}, {"videoControls": false, "cameraControls": false, "microphone": false,
                           "mixer": false}]})");
  const auto camera = zem::simulator::MakeCamera(options.cameras[0]);
  EXPECT_TRUE(camera->HasControls(ControlFamily::kVideoProcessing));
  EXPECT_TRUE(camera->HasControls(ControlFamily::kCameraTerminal));
  EXPECT_TRUE(camera->IsProcessingNode(1));
  EXPECT_TRUE(options.cameras[0].microphone);
  EXPECT_TRUE(options.cameras[0].mixer);
  const auto bare = zem::simulator::MakeCamera(options.cameras[1]);
  EXPECT_FALSE(bare->HasControls(ControlFamily::kVideoProcessing));
  EXPECT_FALSE(bare->HasControls(ControlFamily::kCameraTerminal));
  EXPECT_FALSE(bare->IsProcessingNode(1));
  EXPECT_FALSE(options.cameras[1].microphone);
  EXPECT_FALSE(options.cameras[1].mixer);
}

}  // namespace
