// Firmware updates through the kernel.
#include <numeric>
#include <string>

#include "include/ZemUVCExtApi.h"
#include "tests/kernel/plugged_camera.h"
#include "tests/windows/support/opened_camera.h"

namespace {

using zem::testing::IsCameraGone;
using zem::testing::Lines;
using zem::testing::OpenedCamera;
using zem::testing::PluggedCamera;
using zem::testing::WaitUntil;
using Bytes = std::vector<unsigned char>;

// An image of 1,044 bytes that the simulated camera takes for firmware of version 02 00 00 00 00
// 01.
Bytes FirmwareImage() {
  constexpr std::size_t kHeader = 20;
  Bytes image = {'Z', 'E', 'M', 'F', 'W', 'I', 'M', 'G', 2, 0, 0, 0, 0, 1, 0, 0, 0x14, 0x04, 0, 0};
  image.resize(kHeader + 1024);
  std::iota(image.begin() + kHeader, image.end(), static_cast<unsigned char>(0));
  const auto sum = std::accumulate(image.begin() + kHeader, image.end(), 0U);
  image[14] = static_cast<unsigned char>(sum);
  image[15] = static_cast<unsigned char>(sum >> 8);
  return image;
}

constexpr const char* kState = "/tmp/state.json";

// The options of a camera that keeps its memory, with `more` behind.
std::string KeepingCamera(const std::string& more) {
  return R"({"cameras": [{"state": "/tmp/state.json", )" + more + "}]}";
}

class Updates : public ::testing::Test {
 protected:
  ~Updates() override { unlink(kState); }

  static void ExpectVersion(const Bytes& expected) {
    const OpenedCamera camera;
    Bytes version(6);
    EXPECT_EQ(ZEMAPI_GetFWVersion(camera, version.data()), 0);
    EXPECT_EQ(version, expected);
    EXPECT_EQ(ZEMAPI_GetCheckSumResult(camera), 0);
  }
};

TEST_F(Updates, FirmwareIsReadBackAndRunsFromTheNextStart) {
  const Bytes image = FirmwareImage();
  {
    PluggedCamera plugged(KeepingCamera(R"("chip": "516x", "burnPolls": 2)"));
    ExpectVersion({1, 2, 3, 4, 5, 6});
    const OpenedCamera camera;
    plugged.TakeTransfers();
    EXPECT_EQ(ZEMAPI_UpdateFW_516x(camera, image.data(), 1044, nullptr, 0, 0), 0);
    const Lines wire = zem::testing::HeadsOf(plugged.TakeTransfers());
    Bytes read(1536);
    std::uint32_t size = 0;
    EXPECT_EQ(ZEMAPI_ReadPartialFlashData(camera, 0, 1536, read.data(), &size, nullptr, 0), 0);
    EXPECT_EQ(size, 1536U);
    read.resize(image.size());
    EXPECT_EQ(read, image);
    EXPECT_EQ(wire, (Lines{"set 3.4 01 00 03 00 00 06 00 00", "get 3.5 00 00 00 00 00 00 00 00",
                           "get 3.13 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 0 ... 1544",
                           "set 3.13 5a 45 4d 46 57 49 4d 47 02 00 00 00 00 01 00 f ... 1544",
                           "set 3.13 ec ed ee ef f0 f1 f2 f3 f4 f5 f6 f7 f8 f9 fa f ... 1544",
                           "set 3.13 ec ed ee ef f0 f1 f2 f3 f4 f5 f6 f7 f8 f9 fa f ... 1544",
                           "set 3.4 01 01 03 00 00 06 00 00", "get 3.5 81 00 00 00 00 00 00 00",
                           "get 3.5 81 00 00 00 00 00 00 00", "get 3.5 00 00 00 00 00 00 00 00"}));
  }
  const PluggedCamera plugged(KeepingCamera(R"("chip": "516x")"));
  ExpectVersion({2, 0, 0, 0, 0, 1});
}

TEST_F(Updates, UnpluggedOnTheWay) {
  const Bytes image = FirmwareImage();
  {
    const PluggedCamera plugged(KeepingCamera(R"("chip": "516x", "faults": ["unplug@4"])"));
    const OpenedCamera camera;
    EXPECT_NE(ZEMAPI_UpdateFW_516x(camera, image.data(), 1044, nullptr, 0, 0), 0);
    EXPECT_TRUE(WaitUntil(IsCameraGone));
  }
  const PluggedCamera plugged(KeepingCamera(R"("chip": "516x")"));
  ExpectVersion({1, 2, 3, 4, 5, 6});
}

}  // namespace
