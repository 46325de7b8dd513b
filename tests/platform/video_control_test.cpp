// The terminals and units in a camera's descriptors, whole and broken.
#include "platform/linux/video_control.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <vector>

#include "device/extension_units.h"
#include "tests/support/joined.h"

namespace {

using zem::platform::EntityKind;
using zem::platform::ReadVideoTopology;
using zem::platform::VideoTopology;
using zem::testing::Joined;
using Bytes = std::vector<std::uint8_t>;

const Bytes kDevice = {18, 1, 0, 2, 0xEF, 2, 1, 64, 0x45, 0x5A, 0, 0x8C, 0, 1, 1, 2, 0, 1};
const Bytes kVideoControl = {9, 4, 0, 0, 1, 0x0E, 1, 0, 0};
const Bytes kHeader = {13, 0x24, 1, 0x10, 1, 99, 0, 0, 0x6C, 0xDC, 2, 1, 1};
const Bytes kCamera = {18, 0x24, 2, 1, 0x01, 0x02, 0, 0, 0, 0, 0, 0, 0, 0, 3, 0, 0, 0};
const Bytes kSelector = {7, 0x24, 4, 8, 1, 1, 0};
const Bytes kProcessing = {12, 0x24, 5, 2, 1, 0, 0, 3, 0, 0, 0, 0};
const Bytes kVendorUnit = {27,   0x24, 6,    3,    0xD0, 0x9E, 0xE4, 0x23, 0x78,
                           0x11, 0x31, 0x4F, 0xAE, 0x52, 0xD2, 0xFB, 0x8A, 0x8D,
                           0x3B, 0x48, 16,   1,    2,    2,    0xFF, 0xFF, 0};
const Bytes kEncoding = {13, 0x24, 7, 6, 2, 0, 3, 0, 0, 0, 0, 0, 0};
const Bytes kOutput = {9, 0x24, 3, 5, 0x01, 0x01, 0, 3, 0};

// Configuration `number` with these descriptors behind its own.
Bytes Configuration(std::uint8_t number, const Bytes& content) {
  const std::size_t total = 9 + content.size();
  return Joined({{9, 2, static_cast<std::uint8_t>(total), static_cast<std::uint8_t>(total >> 8), 1,
                  number, 0, 0x80, 50},
                 content});
}

VideoTopology Read(const Bytes& descriptors, std::uint8_t configuration = 1,
                   std::uint8_t interfaceNumber = 0) {
  VideoTopology topology;
  ReadVideoTopology(descriptors, configuration, interfaceNumber, topology);
  return topology;
}

// "input 1, output 5"
std::string TextOf(const VideoTopology& topology) {
  static constexpr const char* kNames[] = {"input",      "output",    "selector",
                                           "processing", "extension", "encoding"};
  std::string text;
  for (const auto& entity : topology.all()) {
    text += (text.empty() ? "" : ", ") + std::string(kNames[static_cast<int>(entity.kind)]) + " " +
            std::to_string(entity.id);
  }
  return text;
}

TEST(VideoControlTest, EveryKindInTheOrderOfTheDescriptors) {
  const VideoTopology topology = Read(
      Joined({kDevice, Configuration(1, Joined({kVideoControl, kHeader, kCamera, kSelector,
                                                kProcessing, kVendorUnit, kEncoding, kOutput}))}));
  EXPECT_EQ(TextOf(topology),
            "input 1, selector 8, processing 2, extension 3, encoding 6, output 5");
  EXPECT_EQ(topology.entities[0].terminalType, 0x0201);
  EXPECT_EQ(topology.entities[1].terminalType, 0);
  EXPECT_EQ(topology.entities[5].terminalType, 0x0101);
  EXPECT_TRUE(topology.entities[3].extension == zem::VendorXu);
  EXPECT_TRUE(topology.entities[2].extension == GUID{});
}

TEST(VideoControlTest, OnlyTheActiveConfigurationCounts) {
  const Bytes descriptors =
      Joined({kDevice, Configuration(1, Joined({kVideoControl, kCamera})),
              Configuration(2, Joined({kVideoControl, kProcessing, kOutput}))});
  EXPECT_EQ(TextOf(Read(descriptors, 1)), "input 1");
  EXPECT_EQ(TextOf(Read(descriptors, 2)), "processing 2, output 5");
  EXPECT_EQ(TextOf(Read(descriptors, 3)), "");
}

TEST(VideoControlTest, ConfigurationsAndInterfacesTooShortForTheirFieldsAreNone) {
  Bytes shortConfiguration = Configuration(1, Joined({kVideoControl, kCamera}));
  shortConfiguration[0] = 8;
  shortConfiguration.erase(shortConfiguration.begin() + 8);
  EXPECT_EQ(TextOf(Read(Joined({kDevice, shortConfiguration}))), "");
  const Bytes shortInterface = {8, 4, 0, 0, 1, 0x0E, 1, 0};
  EXPECT_EQ(TextOf(Read(Joined({kDevice, Configuration(1, Joined({shortInterface, kCamera}))}))),
            "");
  const Bytes shortUnit = {2, 0x24};
  EXPECT_EQ(TextOf(Read(
                Joined({kDevice, Configuration(1, Joined({kVideoControl, shortUnit, kCamera}))}))),
            "input 1");
}

TEST(VideoControlTest, OnlyTheVideoControlInterfaceOfThatNumberCounts) {
  const Bytes second = {9, 4, 2, 0, 1, 0x0E, 1, 0, 0};
  const Bytes streaming = {9, 4, 1, 0, 1, 0x0E, 2, 0, 0};
  const Bytes audio = {9, 4, 0, 0, 1, 0x01, 1, 0, 0};
  const Bytes alternate = {9, 4, 0, 1, 1, 0x0E, 1, 0, 0};
  const Bytes descriptors = Joined(
      {kDevice, Configuration(1, Joined({kVideoControl, kCamera, streaming, kProcessing, second,
                                         kVendorUnit, audio, kOutput, alternate, kSelector}))});
  EXPECT_EQ(TextOf(Read(descriptors, 1, 0)), "input 1");
  EXPECT_EQ(TextOf(Read(descriptors, 1, 2)), "extension 3");
  EXPECT_EQ(TextOf(Read(descriptors, 1, 1)), "");
}

TEST(VideoControlTest, DescriptorsOfOtherTypesAndEndpointsArePassedOver) {
  const Bytes endpoint = {7, 5, 0x81, 3, 16, 0, 8};
  const Bytes ofEndpoint = {5, 0x25, 3, 16, 0};
  const Bytes unknown = {6, 0x24, 0x42, 9, 9, 9};
  EXPECT_EQ(
      TextOf(Read(Joined({kDevice, Configuration(1, Joined({kVideoControl, endpoint, ofEndpoint,
                                                            unknown, kOutput}))}))),
      "output 5");
}

// Cut behind each byte: what is whole stays, and nothing else is read (the sanitizer's word).
TEST(VideoControlTest, CutAnywhereWhatIsWholeStays) {
  const Bytes whole =
      Joined({kDevice, Configuration(1, Joined({kVideoControl, kHeader, kCamera, kProcessing,
                                                kVendorUnit, kOutput}))});
  const std::size_t ends[] = {18 + 9 + 9 + 13 + 18, 18 + 9 + 9 + 13 + 18 + 12,
                              18 + 9 + 9 + 13 + 18 + 12 + 27, whole.size()};
  for (std::size_t length = 0; length <= whole.size(); ++length) {
    const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
    std::size_t expected = 0;
    for (const std::size_t end : ends) {
      expected += length >= end ? 1 : 0;
    }
    EXPECT_EQ(Read(cut).count, expected) << length;
  }
}

TEST(VideoControlTest, UnitsTooShortForTheirFieldsAreNone) {
  for (const auto& [subtype, shortest] :
       std::initializer_list<std::pair<std::uint8_t, std::uint8_t>>{
           {2, 8}, {3, 9}, {4, 5}, {5, 8}, {6, 20}, {7, 10}}) {
    for (const std::uint8_t length : {static_cast<std::uint8_t>(shortest - 1), shortest}) {
      Bytes unit(length, 7);
      unit[0] = length;
      unit[1] = 0x24;
      unit[2] = subtype;
      EXPECT_EQ(
          Read(Joined({kDevice, Configuration(1, Joined({kVideoControl, unit, kOutput}))})).count,
          length == shortest ? 2U : 1U)
          << int{subtype};
    }
  }
}

TEST(VideoControlTest, ALengthOf0Or1EndsTheWalk) {
  for (const std::uint8_t length : {std::uint8_t{0}, std::uint8_t{1}}) {
    EXPECT_EQ(TextOf(Read(Joined(
                  {kDevice,
                   Configuration(1, Joined({kVideoControl, kCamera, {length, 0x24}, kOutput}))}))),
              "input 1");
  }
  EXPECT_EQ(Read(Bytes(2)).count, 0U);
  EXPECT_EQ(Read(Bytes()).count, 0U);
}

TEST(VideoControlTest, ATotalLengthBelowOrAboveWhatIsThereIsHarmless) {
  Bytes small = Joined({kDevice, Configuration(1, Joined({kVideoControl, kOutput}))});
  small[18 + 2] = 5;
  EXPECT_EQ(TextOf(Read(small)), "");
  Bytes large = Joined({kDevice, Configuration(1, Joined({kVideoControl, kOutput}))});
  large[18 + 3] = 0xFF;
  EXPECT_EQ(TextOf(Read(large)), "output 5");
}

TEST(VideoControlTest, MoreEntitiesThanCanBeNumberedAreCut) {
  Bytes many = kVideoControl;
  for (int index = 0; index < 300; ++index) {
    many.insert(many.end(), kSelector.begin(), kSelector.end());
  }
  EXPECT_EQ(Read(Joined({kDevice, Configuration(1, many)})).count, 255U);
}

}  // namespace
