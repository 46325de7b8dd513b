// The simulated camera's end of the data channel, met through its vendor unit's controls.
#include "simulator/data_channel.h"

#include <gtest/gtest.h>

#include <memory>
#include <numeric>
#include <string>
#include <vector>

#include "simulator/vendor_unit.h"

namespace {

using zem::simulator::DataChannelSettings;
using zem::simulator::FlashMemory;
using zem::simulator::KeptMemory;
using zem::simulator::Outcome;
using zem::simulator::VendorSettings;
using zem::simulator::VendorUnit;
using Bytes = std::vector<std::uint8_t>;

Bytes Counting(std::size_t size, std::uint8_t first) {
  Bytes bytes(size);
  std::iota(bytes.begin(), bytes.end(), first);
  return bytes;
}

class SimulatedDataChannelTest : public ::testing::Test {
 protected:
  void Make(const DataChannelSettings& data,
            VendorSettings::Chip chip = VendorSettings::Chip::k516x) {
    unit = std::make_unique<VendorUnit>(VendorSettings{chip, data});
  }

  Outcome Control(const Bytes& control) { return unit->Set(4, control); }
  Bytes Status() { return Read(5, 8); }
  Bytes Read(std::uint16_t selector, std::size_t length) {
    Bytes bytes;
    EXPECT_EQ(unit->Get(selector, length, bytes), Outcome::kDone);
    return bytes;
  }
  Bytes Flash(std::size_t at, std::size_t size) {
    const auto part = unit->state.flash.bytes().subspan(at, size);
    return {part.begin(), part.end()};
  }

  std::unique_ptr<VendorUnit> unit = std::make_unique<VendorUnit>(
      VendorSettings{VendorSettings::Chip::k516x, DataChannelSettings()});
};

TEST_F(SimulatedDataChannelTest, WritesAndBurnsAnArea) {
  EXPECT_EQ(Control({1, 0, 3, 5, 0, 0, 0, 0}), Outcome::kDone);
  EXPECT_EQ(Status(), (Bytes{0, 0, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(unit->Set(13, Bytes(512, 0x11)), Outcome::kDone);
  EXPECT_EQ(unit->Set(3, Bytes(32, 0x22)), Outcome::kDone);
  EXPECT_EQ(Flash(0xE0000, 2), (Bytes{0xFF, 0xFF})) << "burned without an order";
  EXPECT_EQ(Control({1, 1, 3, 5, 0, 0, 0, 0}), Outcome::kDone);
  EXPECT_EQ(Status()[0], 0);
  EXPECT_EQ(Flash(0xE01FE, 4), (Bytes{0x11, 0x11, 0x22, 0x22}));
  EXPECT_EQ(Flash(0xE021F, 2), (Bytes{0x22, 0xFF}));
}

TEST_F(SimulatedDataChannelTest, KindBytesNameTheArea) {
  const struct {
    std::uint8_t kind;
    std::uint8_t subKind;
    std::size_t address;
  } kinds[] = {{0, 0, 0},       {0, 1, 0},       {3, 0, 0},       {3, 7, 0},
               {1, 0, 0x80000}, {2, 9, 0xC0000}, {3, 5, 0xE0000}, {3, 4, 0xF0000}};
  for (const auto& [kind, subKind, address] : kinds) {
    Make({});
    Control({1, 0, kind, subKind, 0, 0, 0, 0});
    unit->Set(3, Bytes(32, 0x5A));
    Control({1, 1, kind, subKind, 0, 0, 0, 0});
    EXPECT_EQ(Status()[0], 0) << int{kind} << " " << int{subKind};
    EXPECT_EQ(Flash(address, 1), Bytes{0x5A}) << int{kind} << " " << int{subKind};
  }
  Control({1, 0, 4, 0, 0, 0, 0, 0});
  EXPECT_EQ(Status()[0], 1) << "no such area";
  EXPECT_EQ(unit->Set(3, Bytes(32)), Outcome::kFailed);
}

TEST_F(SimulatedDataChannelTest, TheBurnOrderNamesTheArea) {
  Control({1, 0, 0, 0, 0, 0, 0, 0});
  unit->Set(3, Bytes(32, 0x5A));
  Control({1, 1, 3, 4, 0, 0, 0, 0});
  EXPECT_EQ(Status()[0], 0);
  EXPECT_EQ(Flash(0xF0000, 1), Bytes{0x5A});
}

TEST_F(SimulatedDataChannelTest, ABurnedTableImageIsTheNvmem) {
  unit->state.nvmem[100] = 0x11;
  Control({1, 0, 3, 4, 0, 0, 0, 0});
  unit->Set(3, Bytes(32, 0x5A));
  Control({1, 1, 3, 4, 0, 0, 0, 0});
  EXPECT_EQ(Status()[0], 0);
  Bytes expected(32, 0x5A);
  expected.resize(8192, 0xFF);
  EXPECT_EQ(unit->state.nvmem, expected);
  KeptMemory memory;
  unit->SaveMemory(memory);
  Make({});
  unit->LoadMemory(memory);
  EXPECT_EQ(unit->state.nvmem, expected);
}

TEST_F(SimulatedDataChannelTest, BusyForSomePollsThenDone) {
  Make({.burnPolls = 2});
  Control({1, 0, 3, 5, 0, 0, 0, 0});
  unit->Set(3, Bytes(32, 0x5A));
  Control({1, 1, 3, 5, 0, 0, 0, 0});
  EXPECT_EQ(Status()[0], 0x81);
  EXPECT_EQ(Flash(0xE0000, 1), Bytes{0xFF}) << "erased, not written yet";
  EXPECT_EQ(Control({1, 0, 3, 0, 0, 0, 0, 0}), Outcome::kDone) << "passed over while it burns";
  EXPECT_EQ(Status()[0], 0x81);
  EXPECT_EQ(Status()[0], 0);
  EXPECT_EQ(Flash(0xE0000, 1), Bytes{0x5A});
}

TEST_F(SimulatedDataChannelTest, ABurnEndsByItself) {
  Make({.burnPolls = 1000});
  Control({1, 0, 3, 5, 0, 0, 0, 0});
  unit->Set(3, Bytes(32, 0x5A));
  Control({1, 1, 3, 5, 0, 0, 0, 0});
  unit->Settle();
  EXPECT_EQ(Flash(0xE0000, 1), Bytes{0x5A});
  EXPECT_EQ(Status()[0], 0);
}

TEST_F(SimulatedDataChannelTest, BurnErrorLeavesTheAreaErased) {
  Make({.burnError = true});
  Control({1, 0, 3, 0, 0, 0, 0, 0});
  unit->Set(3, Bytes(32, 0x5A));
  Control({1, 1, 3, 0, 0, 0, 0, 0});
  EXPECT_EQ(Status()[0], 0x82);
  EXPECT_EQ(Status()[0], 0x82) << "until the next announcement";
  EXPECT_EQ(Flash(0, 2), (Bytes{0xFF, 0xFF}));
  EXPECT_EQ(unit->state.checkSumStatus, 0x80);
  Control({1, 0, 3, 0, 0, 0, 0, 0});
  EXPECT_EQ(Status()[0], 0);
}

TEST_F(SimulatedDataChannelTest, BusyWhenAnnounced) {
  Make({.busy = true});
  Control({1, 0, 3, 0, 0, 0, 0, 0});
  EXPECT_EQ(Status()[0], 0x81);
  EXPECT_EQ(unit->Set(3, Bytes(32)), Outcome::kFailed);
}

TEST_F(SimulatedDataChannelTest, BurnsNeedWhatWasAnnounced) {
  const struct {
    Bytes announce;
    std::size_t chunks;
    std::uint8_t status;
  } cases[] = {
      {{1, 0, 3, 0, 0x00, 0x04, 0, 0}, 2, 0},       // all of 1024
      {{1, 0, 3, 0, 0x00, 0x04, 0, 0}, 1, 0x82},    // a chunk lost
      {{1, 0, 3, 0, 0x00, 0x04, 0, 0}, 3, 0x82},    // one too many
      {{1, 0, 2, 0, 0xE8, 0x03, 0, 0}, 2, 0},       // 1000, padded on the way
      {{1, 0, 2, 0, 0xE8, 0x03, 0, 0}, 1, 0x82},    // a chunk lost
      {{1, 0, 2, 0, 0x00, 0x00, 0, 0}, 1, 0},       // not announced
      {{1, 0, 3, 0, 0x00, 0x00, 1, 0}, 128, 0},     // 65536, in full
      {{1, 0, 3, 0, 0x00, 0x00, 1, 0}, 127, 0x82},  // and a chunk lost
      {{1, 0, 2, 0, 0x70, 0x11, 0, 0}, 137, 0},     // 70000, cut to 16 bits
      {{1, 0, 2, 0, 0x70, 0x11, 0, 0}, 136, 0x82},  // and a chunk lost
      {{1, 0, 3, 5, 0x00, 0x00, 0, 0}, 128, 0},     // the whole area
      {{1, 0, 3, 5, 0x00, 0x00, 0, 0}, 129, 0x82},  // more than the area
  };
  for (const auto& [announce, chunks, status] : cases) {
    Make({});
    Control(announce);
    for (std::size_t chunk = 0; chunk < chunks; ++chunk) {
      ASSERT_EQ(unit->Set(13, Bytes(512, 0x5A)), Outcome::kDone);
    }
    Bytes order = announce;
    order[1] = 1;
    Control(order);
    EXPECT_EQ(Status()[0], status) << chunks << " chunks";
  }
}

TEST_F(SimulatedDataChannelTest, NothingIsBurnedWithoutAnAnnouncement) {
  Control({1, 1, 3, 5, 0, 0, 0, 0});
  EXPECT_EQ(Status()[0], 0x82);
  EXPECT_EQ(unit->Set(3, Bytes(32)), Outcome::kFailed);
}

TEST_F(SimulatedDataChannelTest, ProtectionKeepsTheFirmwareOnly) {
  Make({}, VendorSettings::Chip::k517x);
  for (const std::uint8_t subKind : Bytes{0, 5}) {
    Control({1, 0, 3, subKind, 0, 0, 0, 0});
    unit->Set(3, Bytes(32, 0x5A));
    Control({1, 1, 3, subKind, 0, 0, 0, 0});
    EXPECT_EQ(Status()[0], subKind == 0 ? 0x82 : 0);
  }
  EXPECT_EQ(Flash(0, 2), (Bytes{'Z', 'E'}));
  EXPECT_EQ(unit->state.checkSumStatus, 0);
}

TEST_F(SimulatedDataChannelTest, LengthsOfTheDataControls) {
  Bytes bytes;
  Control({1, 0, 3, 5, 0, 0, 0, 0});
  EXPECT_EQ(Read(3, 4096), Bytes(32));
  EXPECT_EQ(Read(13, 512), Bytes(512));
  EXPECT_EQ(unit->Set(3, Bytes(31)), Outcome::kWrongLength);
  EXPECT_EQ(unit->Set(3, Bytes(64)), Outcome::kWrongLength);
  EXPECT_EQ(unit->Set(13, Bytes(32)), Outcome::kWrongLength);

  Make({.dataLength = 64, .highSpeed = false});
  Control({1, 0, 3, 5, 0, 0, 0, 0});
  EXPECT_EQ(Read(3, 64), Bytes(64));
  EXPECT_EQ(unit->Set(3, Bytes(64)), Outcome::kDone);
  EXPECT_EQ(unit->Set(3, Bytes(32)), Outcome::kWrongLength);
  EXPECT_EQ(unit->Get(13, 512, bytes), Outcome::kNoSuchControl);
  EXPECT_EQ(unit->Set(13, Bytes(512)), Outcome::kNoSuchControl);
}

TEST_F(SimulatedDataChannelTest, OffersWhatWasSent) {
  EXPECT_EQ(Control({1, 2, 0, 0, 0, 0, 0, 0}), Outcome::kDone);
  EXPECT_EQ(Status(), (Bytes{0, 0, 0, 0, 0, 0, 0, 0})) << "nothing was sent yet";
  Control({1, 0, 0, 0, 40, 0, 0, 0});
  unit->Set(3, Counting(32, 1));
  unit->Set(3, Counting(32, 33));
  Control({1, 2, 0, 0, 0, 0, 0, 0});
  EXPECT_EQ(Status(), (Bytes{0, 0, 40, 0, 0, 0, 0, 0}));
  EXPECT_EQ(Read(3, 32), Counting(32, 1));
  Bytes rest = Counting(8, 33);
  rest.resize(32);
  EXPECT_EQ(Read(3, 32), rest);
  EXPECT_EQ(Read(3, 32), Bytes(32)) << "past the end";
}

TEST_F(SimulatedDataChannelTest, ReadsTheFlashBack) {
  Control({1, 0, 3, 5, 0, 0, 0, 0});
  unit->Set(13, Bytes(512, 0x5A));
  unit->Set(13, Bytes(512, 0xA5));
  Control({1, 1, 3, 5, 0, 0, 0, 0});
  EXPECT_EQ(Status()[0], 0);

  EXPECT_EQ(Control({1, 0x10, 0x00, 0x01, 0x0E, 0x00, 0x00, 0x03}), Outcome::kDone);
  EXPECT_EQ(Status(), (Bytes{0, 0, 0, 0, 0, 0, 0, 0}));
  Bytes expected(256, 0x5A);
  expected.resize(512, 0xA5);
  EXPECT_EQ(Read(8, 512), expected);
  expected.assign(256, 0xA5);
  expected.resize(512, 0xFF);
  EXPECT_EQ(Read(8, 512), expected) << "the last chunk is whole";
  EXPECT_EQ(Read(8, 512), Bytes(512, 0xFF)) << "more than was announced";

  Control({1, 0x10, 0xF0, 0x01, 0x0E, 0x00, 0x20, 0x00});
  expected.assign(16, 0x5A);
  expected.resize(32, 0xA5);
  EXPECT_EQ(Read(11, 32), expected);
  EXPECT_EQ(Read(11, 32), Bytes(32, 0xFF)) << "more than was announced";
}

TEST_F(SimulatedDataChannelTest, FlashEndsAndReadsNeedTheirAnnouncement) {
  Bytes bytes;
  Control({1, 0, 3, 5, 0, 0, 0, 0});
  EXPECT_EQ(unit->Get(8, 512, bytes), Outcome::kFailed);
  EXPECT_EQ(unit->Get(11, 32, bytes), Outcome::kFailed);
  Control({1, 0x10, 0xF0, 0xFF, 0x0F, 0x00, 0x00, 0x10});
  EXPECT_EQ(Read(8, 512), Bytes(512, 0xFF));
  Control({1, 0x10, 0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x10});
  EXPECT_EQ(Read(8, 512), Bytes(512, 0xFF));
  Make({.highSpeed = false});
  Control({1, 0x10, 0, 0, 0, 0, 0, 0x10});
  EXPECT_EQ(unit->Get(8, 512, bytes), Outcome::kNoSuchControl);
  EXPECT_EQ(Read(11, 32).size(), 32U);
}

TEST_F(SimulatedDataChannelTest, UnknownActionsAreRefused) {
  Control({1, 3, 0, 0, 0, 0, 0, 0});
  EXPECT_EQ(Status(), (Bytes{1, 0, 0, 0, 0, 0, 0, 0}));
}

TEST_F(SimulatedDataChannelTest, KeepsItsMemoryWhileSwitchedOff) {
  const std::string mark = "ZEMFWIMG";
  Bytes image(mark.begin(), mark.end());
  image.insert(image.end(), {2, 0, 0, 0, 0, 9, 0x07, 0x00, 22, 0, 0, 0, 3, 4});
  image.resize(32);
  Make({}, VendorSettings::Chip::k516x);
  int changes = 0;
  unit->SetFlashObserver([&] { ++changes; });
  Control({1, 0, 3, 0, 0, 0, 0, 0});
  unit->Set(3, image);
  Control({1, 1, 3, 0, 0, 0, 0, 0});
  EXPECT_EQ(Status()[0], 0);
  EXPECT_EQ(changes, 2);
  EXPECT_EQ(unit->state.checkSumStatus, 0);
  EXPECT_EQ(unit->state.firmwareVersion, (zem::simulator::FirmwareVersion{1, 2, 3, 4, 5, 6}))
      << "the new firmware runs from the next start";

  KeptMemory memory;
  unit->SaveMemory(memory);
  EXPECT_EQ(memory.at("data"), image);
  EXPECT_EQ(memory.at("flashStatus"), Bytes{0});
  Make({});
  unit->LoadMemory(memory);
  EXPECT_EQ(unit->state.firmwareVersion, (zem::simulator::FirmwareVersion{2, 0, 0, 0, 0, 9}));
  EXPECT_EQ(unit->state.checkSumStatus, 0);
  EXPECT_EQ(Flash(0, 32), image);
  Control({1, 2, 0, 0, 0, 0, 0, 0});
  EXPECT_EQ(Status(), (Bytes{0, 0, 32, 0, 0, 0, 0, 0}));

  memory.at("flash")[21] = 5;
  Make({});
  unit->LoadMemory(memory);
  EXPECT_EQ(unit->state.checkSumStatus, 0x80);
  memory.at("flash")[0] = 'X';
  Make({});
  unit->LoadMemory(memory);
  EXPECT_EQ(unit->state.firmwareVersion, (zem::simulator::FirmwareVersion{}));
}

TEST_F(SimulatedDataChannelTest, MemoryOfAnotherCameraIsRefused) {
  EXPECT_THROW(unit->LoadMemory({{"flash", Bytes(10)}}), std::invalid_argument);
  EXPECT_THROW(unit->LoadMemory({{"flashStatus", Bytes(2)}}), std::invalid_argument);
  EXPECT_THROW(unit->LoadMemory({{"nvmem", Bytes(2)}}), std::invalid_argument);
  EXPECT_NO_THROW(unit->LoadMemory({}));
}

}  // namespace
