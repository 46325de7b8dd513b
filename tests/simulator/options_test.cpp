// The options of the simulator, and the camera they make.
#include "simulator/options.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace {

using zem::simulator::Options;
using zem::simulator::ParseOptions;

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

TEST(SimulatorOptionsTest, WrongOptionsAreRefusedWithAReason) {
  for (const char* const text :
       {"nonsense", "[]", R"({"camera": []})", R"({"cameras": [{"vid": 1}]})",
        R"({"cameras": [{"vendorId": 65536}]})", R"({"cameras": [{"vendorId": "x"}]})",
        R"({"cameras": [{"faults": ["x"]}]})", R"({"cameras": [1]})"}) {
    EXPECT_THROW(ParseOptions(text), std::invalid_argument) << text;
  }
}

TEST(SimulatorOptionsTest, VendorUnitIsTheThirdNode) {
  zem::simulator::CameraOptions options;
  const auto camera = zem::simulator::MakeCamera(options);
  EXPECT_EQ(camera->nodeCount(), 3U);
  EXPECT_NE(camera->UnitAt(2), nullptr);
  options.vendorUnit = false;
  EXPECT_EQ(zem::simulator::MakeCamera(options)->nodeCount(), 2U);
}

}  // namespace
