// Opening the device object, and the transfers of the encoding-unit family.
#include <array>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "tests/encoding/log_test.h"

namespace {

using zem::testing::Header;
using zem::testing::kFailedTransfer;
using zem::testing::kUnknownControl;
using zem::testing::kUnpluggedTransfer;
using zem::testing::Lines;
using zem::testing::LogTest;
using zem::testing::RecordingGate;
using zem::testing::ScriptedUnit;
using zem::testing::WideLines;

using Block = std::array<std::uint8_t, 51>;

class EncodingUnitTest : public LogTest {
 protected:
  ~EncodingUnitTest() override { WREN_CloseDevice(&device_); }

  // The device object, opened on first use; what that called is forgotten.
  void* device() {
    if (device_ == nullptr) {
      EXPECT_EQ(WREN_OpenDevice(0, &device_), 0);
      gate.calls.clear();
    }
    return device_;
  }

  ScriptedUnit& encoding = AddUnit(zem::EncodingUnitXu);
  ScriptedUnit& probe = AddUnit(zem::StreamProbeXu);

 private:
  void* device_ = nullptr;
};

// ---- Opening and closing ----

TEST_F(EncodingUnitTest, OpenHandsOutTheDeviceObjectItself) {
  void* opened = nullptr;
  EXPECT_EQ(WREN_OpenDevice(0, &opened), 0);
  ASSERT_EQ(boundFilters.size(), 1U);
  EXPECT_EQ(opened, boundFilters[0]);
  EXPECT_EQ(system().ComBalance(), 1);
  const WideLines settings = {L"C:\\Host\\zem_setting.ini", L"C:\\Host\\zem_setting.ini"};
  EXPECT_EQ(system().profileReads, settings);
  WREN_CloseDevice(&opened);
  EXPECT_EQ(opened, nullptr);
  EXPECT_EQ(zem::simulator::liveComObjects, 0);
  EXPECT_EQ(system().ComBalance(), 1) << "closing leaves COM alone";
  EXPECT_EQ(TakeLog(), "") << "neither is logged";
}

TEST_F(EncodingUnitTest, OpenThatFindsNothingLeavesThePointer) {
  void* opened = this;
  EXPECT_EQ(WREN_OpenDevice(1, &opened), ZEM_E_FAIL);
  EXPECT_EQ(opened, this);
  EXPECT_EQ(system().ComBalance(), 0);
  // The match that the index skipped keeps its reference, as by every search.
  boundFilters[0]->Release();
}

TEST_F(EncodingUnitTest, OpenCountsTheMatchesBeforeTheIndex) {
  for (int more = 0; more < 3; ++more) {
    List(zem::testing::DisplayName(0x5A45, 0x8C00), std::make_shared<zem::simulator::Camera>());
  }
  void* opened = nullptr;
  EXPECT_EQ(WREN_OpenDevice(2, &opened), 0);
  ASSERT_EQ(boundFilters.size(), 3U);
  EXPECT_EQ(opened, boundFilters[2]);
  WREN_CloseDevice(&opened);
  // The matches that the index skipped keep their references, as by every search.
  boundFilters[0]->Release();
  boundFilters[1]->Release();
}

TEST_F(EncodingUnitTest, OpenUsesTheSettingsFile) {
  system().profileFiles[L"C:\\Host\\zem_setting.ini"] = L"[AP]\nDeviceVid=0x1234\n";
  void* opened = this;
  EXPECT_EQ(WREN_OpenDevice(0, &opened), ZEM_E_FAIL);
  List(zem::testing::DisplayName(0x1234, 0x8C00), std::make_shared<zem::simulator::Camera>());
  EXPECT_EQ(WREN_OpenDevice(0, &opened), 0);
  WREN_CloseDevice(&opened);
}

TEST_F(EncodingUnitTest, FailureOfEachPlatformCallOfTheSearch) {
  // The enumerator, its category, the device, its name, its filter; a nameless device is passed
  // over.
  for (std::size_t index = 0; index < 5; ++index) {
    SCOPED_TRACE(index);
    gate.RefuseCall(index);
    void* opened = this;
    EXPECT_EQ(WREN_OpenDevice(0, &opened), index == 3 ? ZEM_E_FAIL : RecordingGate::kRefusal);
    EXPECT_EQ(opened, this);
    EXPECT_EQ(zem::simulator::liveComObjects, 0);
  }
}

TEST_F(EncodingUnitTest, NullAddresses) {
  EXPECT_EQ(WREN_OpenDevice(0, nullptr), ZEM_E_REFUSED);
  WREN_CloseDevice(nullptr);
  void* closed = nullptr;
  WREN_CloseDevice(&closed);
  EXPECT_EQ(system().comInitializations, 0);
}

// ---- Transfers ----

TEST_F(EncodingUnitTest, EuSetAndGetMoveTheCallersBytes) {
  std::array<std::uint8_t, 3> data = {1, 2, 3};
  EXPECT_EQ(WREN_EuSet(device(), 5, data.data(), 3), 0);
  encoding.Answer(0xFFFF, {9, 8});
  EXPECT_EQ(WREN_EuGet(device(), 0xFFFF, data.data(), 3), 0);
  EXPECT_EQ(data, (std::array<std::uint8_t, 3>{9, 8, 3}));
  EXPECT_EQ(TakeWire(), (Lines{"set encoding 5: 01 02 03", "get encoding 65535 [3]"}));
  EXPECT_EQ(TakeDebuggerLines(), WideLines{zem::testing::SetLine(0, 3, 2)});
}

TEST_F(EncodingUnitTest, ProbeAndCommitMove51Bytes) {
  Block block = {};
  for (std::size_t index = 0; index < block.size(); ++index) {
    block[index] = static_cast<std::uint8_t>(index);
  }
  const std::string bytes =
      "00 01 02 03 04 05 06 07 08 09 0a 0b 0c 0d 0e 0f 10 11 12 13 14 15 16 17 18 19 1a 1b 1c 1d "
      "1e 1f 20 21 22 23 24 25 26 27 28 29 2a 2b 2c 2d 2e 2f 30 31 32";
  EXPECT_EQ(WREN_ProbeSet(device(), block.data()), 0);
  EXPECT_EQ(WREN_CommitSet(device(), block.data()), 0);
  probe.Answer(23, ScriptedUnit::Bytes(51, 0x77));
  EXPECT_EQ(WREN_ProbeGet(device(), block.data()), 0);
  EXPECT_EQ(block[50], 0x77);
  probe.Answer(24, ScriptedUnit::Bytes(51, 0x88));
  EXPECT_EQ(WREN_CommitGet(device(), block.data()), 0);
  EXPECT_EQ(block[50], 0x88);
  EXPECT_EQ(TakeWire(), (Lines{"set probe 23: " + bytes, "set probe 24: " + bytes,
                               "get probe 23 [51]", "get probe 24 [51]"}));
}

TEST_F(EncodingUnitTest, WhatWasReadIsLogged) {
  encoding.Answer(3, ScriptedUnit::Bytes(28, 0xA7));
  std::array<std::uint8_t, 28> rate = {};
  EXPECT_EQ(WREN_EuGet(device(), 3, rate.data(), 28), 0);
  EXPECT_EQ(TakeLog(),
            "2024/3/5 7:8:9 : Get : HRESULT=0x00000000 :EU Rate Control \r\n"
            "\t\tdwSliceMode=0xA7A7A7A7\r\n"
            "\t\tdwAverageBitRate=0xA7A7A7A7\r\n"
            "\t\tdwPeakBitRate=0xA7A7A7A7\r\n"
            "\t\tdwLeakyBucketSize=0xA7A7A7A7\r\n"
            "\t\tdwQpPrime_I[3]=0xA7, 0xA7, 0xA7\r\n"
            "\t\tdwQpPrime_P[3]=0xA7, 0xA7, 0xA7\r\n"
            "\t\tdwQpPrime_B[3]=0xA7, 0xA7, 0xA7\r\n"
            "\t\tbRateControlMethod=0xA7\r\n"
            "\t\twLayerID=0xA7A7\r\n");
  Block block = {};
  probe.Answer(23, ScriptedUnit::Bytes(51, 0xB8));
  EXPECT_EQ(WREN_ProbeGet(device(), block.data()), 0);
  EXPECT_TRUE(TakeLog().starts_with(Header("Get") + "H264 Probe \r\n\t\tbmHint=0xB8B8\r\n"));
  probe.Answer(24, ScriptedUnit::Bytes(51, 0xC9));
  EXPECT_EQ(WREN_CommitGet(device(), block.data()), 0);
  EXPECT_TRUE(TakeLog().starts_with(Header("Get") + "H264 Commit \r\n\t\tbmHint=0xC9C9\r\n"));
}

TEST_F(EncodingUnitTest, SelectorsAbove16BitsAreRefusedBeforeAnything) {
  std::uint8_t data = 7;
  constexpr std::uint32_t kSelectors[] = {0x10000, 0x10003, 0xFFFFFFFF};
  for (const std::uint32_t selector : kSelectors) {
    EXPECT_EQ(WREN_EuSet(device(), selector, &data, 1), ZEM_E_REFUSED);
    EXPECT_EQ(WREN_EuGet(device(), selector, &data, 1), ZEM_E_REFUSED);
  }
  EXPECT_EQ(TakeWire(), Lines());
  EXPECT_EQ(TakeLog(), "");
}

TEST_F(EncodingUnitTest, NullDataIsRefusedUnlessThereIsNone) {
  EXPECT_EQ(WREN_EuSet(device(), 1, nullptr, 1), ZEM_E_REFUSED);
  EXPECT_EQ(WREN_EuGet(device(), 1, nullptr, 1), ZEM_E_REFUSED);
  EXPECT_EQ(WREN_ProbeSet(device(), nullptr), ZEM_E_REFUSED);
  EXPECT_EQ(WREN_ProbeGet(device(), nullptr), ZEM_E_REFUSED);
  EXPECT_EQ(WREN_CommitSet(device(), nullptr), ZEM_E_REFUSED);
  EXPECT_EQ(WREN_CommitGet(device(), nullptr), ZEM_E_REFUSED);
  EXPECT_EQ(TakeWire(), Lines());
  EXPECT_EQ(TakeLog(), "");
  EXPECT_EQ(WREN_EuSet(device(), 1, nullptr, 0), 0);
  EXPECT_EQ(WREN_EuGet(device(), 1, nullptr, 0), 0);
  EXPECT_EQ(TakeWire(), (Lines{"set encoding 1: ", "get encoding 1 [0]"}));
}

TEST_F(EncodingUnitTest, NullDeviceIsTheDefaultCameraForThatAccess) {
  std::uint8_t data = 7;
  EXPECT_EQ(WREN_EuSet(nullptr, 6, &data, 1), 0);
  EXPECT_EQ(WREN_EuGet(nullptr, 6, &data, 1), 0);
  EXPECT_EQ(TakeWire(), (Lines{"set encoding 6: 07", "get encoding 6 [1]"}));
  EXPECT_EQ(zem::simulator::liveComObjects, 0);
  Block block = {};
  EXPECT_EQ(WREN_ProbeSet(nullptr, block.data()), 0);
  EXPECT_EQ(WREN_ProbeGet(nullptr, block.data()), 0);
  EXPECT_EQ(WREN_CommitSet(nullptr, block.data()), 0);
  EXPECT_EQ(WREN_CommitGet(nullptr, block.data()), 0);
  EXPECT_EQ(TakeWire(), (Lines{"set probe 23:" + zem::testing::Zeros(51), "get probe 23 [51]",
                               "set probe 24:" + zem::testing::Zeros(51), "get probe 24 [51]"}));
  EXPECT_EQ(zem::simulator::liveComObjects, 0);
  ListNothing();
  EXPECT_EQ(WREN_EuSet(nullptr, 6, &data, 1), ZEM_E_FAIL);
  EXPECT_EQ(WREN_EuGet(nullptr, 6, &data, 1), ZEM_E_NO_DEVICE);
  EXPECT_EQ(WREN_ProbeSet(nullptr, block.data()), ZEM_E_NO_DEVICE);
  EXPECT_EQ(WREN_CommitGet(nullptr, block.data()), ZEM_E_NO_DEVICE);
}

// Every transfer behaves alike but for what becomes of a failure.
struct Transfer {
  const char* name;
  bool isSet;
  bool keepsFailure;
  const char* title;
  std::function<ZemResult(void* device, Block& block)> run;
};
void PrintTo(const Transfer& transfer, std::ostream* out) { *out << transfer.name; }

const std::vector<Transfer> kTransfers = {
    {"EuSet", true, true, "EU Sync Frame Control \r\n",
     [](void* device, Block& block) { return WREN_EuSet(device, 4, block.data(), 4); }},
    {"EuGet", false, false, "EU Sync Frame Control \r\n",
     [](void* device, Block& block) { return WREN_EuGet(device, 4, block.data(), 4); }},
    {"ProbeSet", true, false, "H264 Probe \r\n",
     [](void* device, Block& block) { return WREN_ProbeSet(device, block.data()); }},
    {"ProbeGet", false, false, "H264 Probe \r\n",
     [](void* device, Block& block) { return WREN_ProbeGet(device, block.data()); }},
    {"CommitSet", true, false, "H264 Commit \r\n",
     [](void* device, Block& block) { return WREN_CommitSet(device, block.data()); }},
    {"CommitGet", false, false, "H264 Commit \r\n",
     [](void* device, Block& block) { return WREN_CommitGet(device, block.data()); }},
};

class TransferTest : public EncodingUnitTest, public ::testing::WithParamInterface<Transfer> {
 protected:
  // Runs the transfer and looks at what the log begins with.
  ZemResult Run(const std::string& loggedResult) {
    Block block = {};
    const ZemResult result = GetParam().run(device(), block);
    const std::string begin =
        Header(GetParam().isSet ? "Set" : "Get", loggedResult) + GetParam().title;
    EXPECT_EQ(TakeLog().substr(0, begin.size()), begin);
    return result;
  }

  ZemResult Expected(ZemResult failure) const {
    return GetParam().keepsFailure ? failure : ZEM_E_NO_DEVICE;
  }
};

TEST_P(TransferTest, Success) { EXPECT_EQ(Run("00000000"), 0); }

TEST_P(TransferTest, FailedTransferIsLoggedWithItsOwnCode) {
  device();
  FailTransfer(1);
  EXPECT_EQ(Run("8007001F"), Expected(kFailedTransfer));
  EXPECT_EQ(TakeWire().size(), 1U);
}

TEST_P(TransferTest, AbsentUnit) {
  ListNothing();
  auto bare = std::make_shared<zem::simulator::Camera>();
  bare->AddPlainNode();
  List(zem::testing::DisplayName(0x5A45, 0x8C00), bare);
  EXPECT_EQ(Run("80070490"), Expected(kUnknownControl));
}

TEST_P(TransferTest, UnpluggedCamera) {
  device();
  camera().Unplug();
  EXPECT_EQ(Run("8007048F"), Expected(kUnpluggedTransfer));
}

TEST_P(TransferTest, LogThatCannotBeOpenedChangesNothing) {
  system().refuseFile = [](const std::wstring&) { return true; };
  Block block = {};
  EXPECT_EQ(GetParam().run(device(), block), 0);
  EXPECT_EQ(TakeWire().size(), 1U);
  FailTransfer(1);
  EXPECT_EQ(GetParam().run(device(), block), Expected(kFailedTransfer));
  EXPECT_FALSE(std::filesystem::exists(LogPath()));
}

TEST_P(TransferTest, FailureOfTheRequestForTheNodesControl) {
  device();
  gate.RefuseAll("CreateNodeInstance");
  EXPECT_EQ(Run("8000BEEF"), Expected(RecordingGate::kRefusal));
  EXPECT_EQ(TakeWire(), Lines());
  EXPECT_EQ(zem::simulator::liveComObjects, 1) << "the device object";
}

INSTANTIATE_TEST_SUITE_P(Exports, TransferTest, ::testing::ValuesIn(kTransfers),
                         [](const auto& parameters) { return parameters.param.name; });

}  // namespace
