// What the platform knows its classes, categories and interfaces by, as the bytes in memory.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "platform/com.h"
#include "tests/support/device_test.h"

namespace {

std::string BytesOf(const GUID& id) {
  const auto* const first = reinterpret_cast<const std::uint8_t*>(&id);
  return zem::testing::HexText({first, first + sizeof(id)});
}

TEST(InterfaceIdsTest, ClassesAndCategories) {
  EXPECT_EQ(BytesOf(zem::CLSID_SystemDeviceEnum),
            "10 5d be 62 eb 60 d0 11 bd 3b 00 a0 c9 11 ce 86");
  EXPECT_EQ(BytesOf(zem::CLSID_VideoInputDeviceCategory),
            "10 b3 0b 86 01 5d d0 11 bd 3b 00 a0 c9 11 ce 86");
  EXPECT_EQ(BytesOf(zem::CLSID_AudioInputDeviceCategory),
            "62 a7 d9 33 c8 90 d0 11 bd 43 00 a0 c9 11 ce 86");
}

TEST(InterfaceIdsTest, Interfaces) {
  EXPECT_EQ(BytesOf(zem::IID_IUnknown), "00 00 00 00 00 00 00 00 c0 00 00 00 00 00 00 46");
  EXPECT_EQ(BytesOf(zem::IID_ICreateDevEnum), "22 08 84 29 84 5b d0 11 bd 3b 00 a0 c9 11 ce 86");
  EXPECT_EQ(BytesOf(zem::IID_IBaseFilter), "95 68 a8 56 d4 0a ce 11 b0 3a 00 20 af 0b a7 70");
  EXPECT_EQ(BytesOf(zem::IID_IPropertyBag), "00 2a 27 55 cb 42 ce 11 81 35 00 aa 00 4b b8 51");
  EXPECT_EQ(BytesOf(zem::IID_IKsTopologyInfo), "c0 4a 0d 72 33 75 d0 11 a5 d6 28 db 04 c1 00 00");
  EXPECT_EQ(BytesOf(zem::IID_IKsControl), "85 46 f5 28 fd 06 d2 11 b2 7a 00 a0 c9 22 31 96");
  EXPECT_EQ(BytesOf(zem::IID_IAMVideoProcAmp), "60 33 e1 c6 ac 30 d0 11 a1 8c 00 a0 c9 11 89 56");
  EXPECT_EQ(BytesOf(zem::IID_IAMCameraControl), "70 33 e1 c6 ac 30 d0 11 a1 8c 00 a0 c9 11 89 56");
  EXPECT_EQ(BytesOf(zem::IID_IAMAudioInputMixer),
            "21 92 c3 54 80 83 d0 11 b3 f0 00 aa 00 37 61 c5");
  EXPECT_EQ(BytesOf(zem::IID_IVideoProcAmp), "0e 56 50 40 a7 42 3a 41 85 c2 09 26 9a 2d 0f 44");
}

}  // namespace
