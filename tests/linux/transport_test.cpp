// Requests to extension units over the driver: lengths, short answers, failures.
#include <linux/uvcvideo.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <vector>

#include "device/extension_units.h"
#include "device/topology.h"
#include "platform/com_ptr.h"
#include "tests/linux/linux_test.h"

namespace {

using zem::ComPtr;
using zem::testing::FakeCamera;
using zem::testing::FakeControl;
using zem::testing::kAccessDeniedResult;
using zem::testing::kInvalidFunctionResult;
using zem::testing::kInvalidParameterResult;
using zem::testing::kMoreDataResult;
using zem::testing::kNoAccessResult;
using zem::testing::kNotConnectedResult;
using zem::testing::kNotFoundResult;
using zem::testing::kSetNotFoundResult;
using zem::testing::kTimeoutResult;
using zem::testing::LinuxTest;
using Bytes = std::vector<std::uint8_t>;
using Lines = std::vector<std::string>;

constexpr ZemULong kUntouchedCount = 0xDEADBEEF;

class LinuxTransportTest : public LinuxTest {
 protected:
  LinuxTransportTest() {
    camera_ = AddCamera(0, "1-1");
    camera_->controls[{3, 2}] = {8, {1, 2, 3, 4, 5, 6, 7, 8}};
    EXPECT_EQ(ZEMAPI_OpenDevice(0, &handle_), ZEM_OK);
    kernel.calls.clear();
  }
  ~LinuxTransportTest() override { ZEMAPI_CloseDevice(&handle_); }

  FakeCamera& camera() { return *camera_; }
  FakeControl& control() { return camera_->controls[{3, 2}]; }

  ZemResult Get(Bytes& data, ZemULong& count, unsigned short selector = 2) {
    count = kUntouchedCount;
    return ZEMAPI_ZemExtGet(handle_, selector, data.data(), static_cast<ZemULong>(data.size()),
                            &count);
  }
  ZemResult Set(Bytes data, ZemULong& count, unsigned short selector = 2) {
    count = kUntouchedCount;
    return ZEMAPI_ZemExtSet(handle_, selector, data.data(), static_cast<ZemULong>(data.size()),
                            &count);
  }

  void* handle_ = nullptr;

 private:
  std::shared_ptr<FakeCamera> camera_;
};

TEST_F(LinuxTransportTest, ReadsAControlOfItsOwnLength) {
  Bytes data(8);
  ZemULong count = 0;
  EXPECT_EQ(Get(data, count), ZEM_OK);
  EXPECT_EQ(count, 8U);
  EXPECT_EQ(data, (Bytes{1, 2, 3, 4, 5, 6, 7, 8}));
  EXPECT_EQ(camera().queries, (Lines{"GET_LEN 3.2 2", "GET_CUR 3.2 8"}));
}

TEST_F(LinuxTransportTest, WritesAControlOfItsOwnLength) {
  ZemULong count = 0;
  EXPECT_EQ(Set({0xA0, 0xA1, 0xA2, 0xA3, 0xA4, 0xA5, 0xA6, 0xA7}, count), ZEM_OK);
  EXPECT_EQ(count, 8U);
  EXPECT_EQ(camera().queries, (Lines{"GET_LEN 3.2 2", "SET_CUR 3.2 8 a0 a1 a2 a3 a4 a5 a6 a7"}));
}

TEST_F(LinuxTransportTest, AnImageGoesOutChunkByChunk) {
  camera().controls[{3, 3}] = {64, Bytes(64)};
  Bytes image(128, 0xA1);
  std::fill(image.begin() + 64, image.end(), std::uint8_t{0xA2});
  EXPECT_EQ(ZEMUVCEXT_WriteFWData(image.data(), 128, nullptr, 0), ZEM_OK);
  const auto chunk = [](const char* byte) {
    std::string line = "SET_CUR 3.3 64";
    for (int count = 0; count < 64; ++count) {
      line += byte;
    }
    return line;
  };
  EXPECT_EQ(camera().queries, (Lines{"GET_LEN 3.3 2", "GET_CUR 3.3 64", "GET_LEN 3.3 2",
                                     chunk(" a1"), "GET_LEN 3.3 2", chunk(" a2")}));
}

TEST_F(LinuxTransportTest, AShorterBufferIsToldTheLengthAndNothingMoves) {
  for (const std::size_t length : {0U, 1U, 7U}) {
    camera().queries.clear();
    Bytes data(length, 0x55);
    ZemULong count = 0;
    EXPECT_EQ(Get(data, count), kMoreDataResult);
    EXPECT_EQ(count, 8U);
    EXPECT_EQ(data, Bytes(length, 0x55));
    EXPECT_EQ(Set(Bytes(length), count), kMoreDataResult);
    EXPECT_EQ(count, 8U);
    EXPECT_EQ(camera().queries, (Lines{"GET_LEN 3.2 2", "GET_LEN 3.2 2"})) << length;
  }
}

TEST_F(LinuxTransportTest, ALongerBufferIsFilledAndTheCountTold) {
  Bytes data(11, 0x55);
  ZemULong count = 0;
  EXPECT_EQ(Get(data, count), ZEM_OK);
  EXPECT_EQ(count, 8U);
  EXPECT_EQ(data, (Bytes{1, 2, 3, 4, 5, 6, 7, 8, 0x55, 0x55, 0x55}));
  EXPECT_EQ(Set(Bytes(11, 0x77), count), ZEM_OK);
  EXPECT_EQ(count, 8U);
  EXPECT_EQ(control().value, Bytes(8, 0x77));
}

TEST_F(LinuxTransportTest, AShortAnswersCountIsTold) {
  control().value = {0x31, 0x32, 0x33};
  Bytes data(8, 0x55);
  ZemULong count = 0;
  EXPECT_EQ(Get(data, count), ZEM_OK);
  EXPECT_EQ(count, 3U);
  EXPECT_EQ(data, (Bytes{0x31, 0x32, 0x33, 0, 0, 0, 0, 0}));
}

TEST_F(LinuxTransportTest, TheLongestControlMovesWhole) {
  Bytes content(65535);
  for (std::size_t index = 0; index < content.size(); ++index) {
    content[index] = static_cast<std::uint8_t>(index * 7);
  }
  control() = {65535, content};
  Bytes data(65535);
  ZemULong count = 0;
  EXPECT_EQ(Get(data, count), ZEM_OK);
  EXPECT_EQ(count, 65535U);
  EXPECT_EQ(data, content);
}

TEST_F(LinuxTransportTest, NullDataWithALengthIsRefusedAndWithoutOneAsksForTheLength) {
  ZemULong count = 0;
  EXPECT_EQ(ZEMAPI_ZemExtGet(handle_, 2, nullptr, 8, &count), kNoAccessResult);
  EXPECT_EQ(count, 0U);
  EXPECT_TRUE(camera().queries.empty());
  EXPECT_EQ(ZEMAPI_ZemExtGet(handle_, 2, nullptr, 0, &count), kMoreDataResult);
  EXPECT_EQ(count, 8U);
}

TEST_F(LinuxTransportTest, AControlOfLength0) {
  camera().controls[{3, 9}] = {0, {}};
  ZemULong count = 0;
  EXPECT_EQ(ZEMAPI_ZemExtSet(handle_, 9, nullptr, 0, &count), ZEM_OK);
  EXPECT_EQ(count, 0U);
  EXPECT_EQ(camera().queries.back(), "SET_CUR 3.9 0");
}

TEST_F(LinuxTransportTest, UnknownSelectorsAreNotFound) {
  Bytes data(8);
  ZemULong count = 0;
  EXPECT_EQ(Get(data, count, 7), kNotFoundResult);
  EXPECT_EQ(count, 0U);
  EXPECT_EQ(camera().queries, (Lines{"GET_LEN 3.7 2"}));
  camera().queries.clear();
  // 258 must not become 2.
  EXPECT_EQ(Get(data, count, 258), kNotFoundResult);
  EXPECT_TRUE(camera().queries.empty());
}

TEST_F(LinuxTransportTest, DirectionsThatTheControlLacks) {
  control().isRead = false;
  Bytes data(8);
  ZemULong count = 0;
  EXPECT_EQ(Get(data, count), kInvalidFunctionResult);
  EXPECT_EQ(count, 0U);
  control().isWritten = false;
  EXPECT_EQ(Set(Bytes(8), count), kInvalidFunctionResult);
}

TEST_F(LinuxTransportTest, UnitsByTheirGuid) {
  camera().controls[{4, 3}] = {2, {0x12, 0x34}};
  Bytes data(2);
  ZemULong count = 0;
  EXPECT_EQ(ZEMAPI_UvcExtGet(handle_, &zem::EncodingUnitXu, 3, data.data(), 2, &count), ZEM_OK);
  EXPECT_EQ(data, (Bytes{0x12, 0x34}));
  EXPECT_EQ(camera().queries, (Lines{"GET_LEN 4.3 2", "GET_CUR 4.3 2"}));
  EXPECT_EQ(ZEMAPI_UvcCheckXuGuid(handle_, &zem::VendorXu), ZEM_OK);
  EXPECT_EQ(ZEMAPI_UvcCheckXuGuid(handle_, &zem::EncodingUnitXu), ZEM_OK);
  EXPECT_EQ(ZEMAPI_UvcCheckXuGuid(handle_, &zem::TirellaXu), 1);
  EXPECT_EQ(ZEMAPI_UvcExtGet(handle_, &zem::TirellaXu, 1, data.data(), 2, &count), kNotFoundResult);
}

TEST_F(LinuxTransportTest, AnotherUnitsSetAtANodeIsNotFound) {
  auto* const filter = *reinterpret_cast<IBaseFilter**>(static_cast<void**>(handle_) + 1);
  ComPtr<IKsTopologyInfo> topology;
  ASSERT_EQ(filter->QueryInterface(zem::IID_IKsTopologyInfo, topology.ReceiveVoid()), S_OK);
  const auto request = [&](DWORD instance, DWORD node, const GUID& set, ULONG id, ULONG flags,
                           ULONG size = sizeof(KSP_NODE)) {
    ComPtr<IKsControl> control;
    EXPECT_EQ(topology->CreateNodeInstance(instance, zem::IID_IKsControl, control.ReceiveVoid()),
              S_OK);
    KSP_NODE property = {{set, id, flags}, node, 0};
    Bytes data(32, 0x55);
    ULONG count = 0;
    return control->KsProperty(&property.Property, size, data.data(), 32, &count);
  };
  constexpr ULONG kGet = 0x10000001;
  constexpr ULONG kSet = 0x10000002;
  EXPECT_EQ(request(2, 2, zem::VendorXu, 0, kGet), S_OK);
  EXPECT_EQ(request(2, 2, zem::VendorXu, 2, kGet), S_OK);
  EXPECT_EQ(request(2, 2, zem::EncodingUnitXu, 2, kGet), kSetNotFoundResult);
  EXPECT_EQ(request(0, 0, zem::VendorXu, 2, kGet), kNotFoundResult) << "a terminal";
  EXPECT_EQ(request(5, 5, zem::VendorXu, 2, kGet), kNotFoundResult) << "behind the last node";
  EXPECT_EQ(request(0xFFFFFFFF, 0xFFFFFFFF, zem::VendorXu, 2, kGet), kNotFoundResult);
  EXPECT_EQ(request(2, 3, zem::VendorXu, 2, kGet), kNotFoundResult) << "of another node";
  EXPECT_EQ(request(2, 2, zem::VendorXu, 0, kSet), kInvalidParameterResult);
  EXPECT_EQ(request(2, 2, zem::VendorXu, 2, 0x10000003), kNotFoundResult) << "neither get nor set";
  EXPECT_EQ(request(2, 2, zem::VendorXu, 2, kGet, 24), kInvalidParameterResult);
}

TEST_F(LinuxTransportTest, AUnitsInformationIsItsGuid) {
  ZemULong count = 0;
  Bytes data(32, 0x55);
  EXPECT_EQ(ZEMAPI_ZemExtGet(handle_, 0, nullptr, 0, &count), kMoreDataResult);
  EXPECT_EQ(count, 16U);
  EXPECT_EQ(ZEMAPI_ZemExtGet(handle_, 0, data.data(), 15, &count), kMoreDataResult);
  EXPECT_EQ(ZEMAPI_ZemExtGet(handle_, 0, nullptr, 16, &count), kNoAccessResult);
  EXPECT_EQ(ZEMAPI_ZemExtGet(handle_, 0, data.data(), 32, &count), ZEM_OK);
  EXPECT_EQ(count, 16U);
  Bytes expected = {0xD0, 0x9E, 0xE4, 0x23, 0x78, 0x11, 0x31, 0x4F,
                    0xAE, 0x52, 0xD2, 0xFB, 0x8A, 0x8D, 0x3B, 0x48};
  expected.resize(32, 0x55);
  EXPECT_EQ(data, expected);
  EXPECT_TRUE(camera().queries.empty()) << "it stands in the descriptors";
}

TEST_F(LinuxTransportTest, NodesAreTheEntitiesInTheirOrder) {
  auto* const filter = *reinterpret_cast<IBaseFilter**>(static_cast<void**>(handle_) + 1);
  EXPECT_EQ(zem::FindXuNode(filter, zem::VendorXu), 2U);
  EXPECT_EQ(zem::FindXuNode(filter, zem::EncodingUnitXu), 3U);
  EXPECT_EQ(zem::FindXuNode(filter, zem::OrvaXu), 5U) << "as many as there are nodes";
  ComPtr<IKsTopologyInfo> topology;
  ASSERT_EQ(filter->QueryInterface(zem::IID_IKsTopologyInfo, topology.ReceiveVoid()), S_OK);
  const ULONG kTypes[] = {0xDFF229E6, 0xDFF229E5, 0x941C7AC0, 0x941C7AC0, 0xDFF229E3};
  for (DWORD node = 0; node < 5; ++node) {
    GUID type = {};
    EXPECT_EQ(topology->get_NodeType(node, &type), S_OK);
    EXPECT_EQ(type.Data1, kTypes[node]) << node;
  }
  GUID type = zem::VendorXu;
  EXPECT_EQ(topology->get_NodeType(5, &type), kNotFoundResult);
  EXPECT_TRUE(type == GUID{});
  // The kernel-streaming interface of a processing unit exists on Windows only.
  void* processing = nullptr;
  EXPECT_EQ(ZEMAPI_Get_IVideoProcAmp_Interface(handle_, &processing), E_NOINTERFACE);
  EXPECT_EQ(processing, nullptr);
}

TEST_F(LinuxTransportTest, AnUnpluggedCameraSaysSoInEveryRequest) {
  camera().unplugged = true;
  Bytes data(8);
  ZemULong count = 0;
  EXPECT_EQ(Get(data, count), kNotConnectedResult);
  EXPECT_EQ(Set(Bytes(8), count), kNotConnectedResult);
}

// Each ioctl of a read and of a write failing in turn, with what the kernel may say.
TEST_F(LinuxTransportTest, EveryRequestOfATransferFails) {
  for (const bool isSet : {false, true}) {
    for (int call = 0; call < 2; ++call) {
      for (const auto& [error, expected] :
           std::vector<std::pair<int, ZemResult>>{{ESHUTDOWN, kNotConnectedResult},
                                                  {ETIMEDOUT, kTimeoutResult},
                                                  {EPIPE, static_cast<ZemResult>(0x8007001FU)},
                                                  {ENOENT, kNotFoundResult},
                                                  {EPERM, kAccessDeniedResult}}) {
        kernel.calls.clear();
        kernel.failingCall = call;
        kernel.failure = -error;
        Bytes data(8, 0x55);
        ZemULong count = 0;
        EXPECT_EQ(isSet ? Set(data, count) : Get(data, count), expected);
        EXPECT_EQ(count, 0U);
        EXPECT_EQ(data, Bytes(8, 0x55));
        EXPECT_EQ(kernel.calls.size(), static_cast<std::size_t>(call) + 1);
      }
    }
  }
}

TEST_F(LinuxTransportTest, AStallIsToldByItsReason) {
  const std::pair<int, std::uint32_t> kReasons[] = {
      {EBUSY, 0x800700AA}, {EILSEQ, 0x8007139F}, {EREMOTE, 0x80070015}, {ERANGE, 0x80070057},
      {EIO, 0x8007045D},   {EINVAL, 0x80070057}, {EPIPE, 0x8007001F}};
  for (const auto& [error, expected] : kReasons) {
    control().stall = error;
    Bytes data(8);
    ZemULong count = 0;
    EXPECT_EQ(static_cast<std::uint32_t>(Get(data, count)), expected) << error;
  }
}

// The command set above it, byte by byte: the wall is the only thing that differs.
TEST_F(LinuxTransportTest, ARegisterIsReadOverTheCommandChannel) {
  camera().controls[{3, 1}] = {8, {}};
  control().value = {0, 0, 0, 0, 0, 0xAB, 0, 0};
  unsigned short value = 0;
  EXPECT_EQ(ZEMAPI_GetRegister(handle_, 0x1234, &value), ZEM_OK);
  ASSERT_EQ(camera().queries.size(), 4U);
  EXPECT_EQ(camera().queries[0], "GET_LEN 3.1 2");
  EXPECT_EQ(camera().queries[1].substr(0, 13), "SET_CUR 3.1 8");
  EXPECT_EQ(camera().queries[2], "GET_LEN 3.2 2");
  EXPECT_EQ(camera().queries[3], "GET_CUR 3.2 8");
}

TEST_F(LinuxTransportTest, WithoutAHandleTheDefaultCameraIsOpenedForEachAccess) {
  camera().controls[{3, 1}] = {8, {}};
  control().value = Bytes(8);
  std::uint8_t value = 0;
  EXPECT_EQ(ZEMUVCEXT_GetRegister(0x1234, &value), ZEM_OK);
  int opened = 0;
  for (const std::string& call : kernel.calls) {
    opened += call == "open video0 2" ? 1 : 0;
  }
  EXPECT_EQ(opened, 4) << "twice each: what the file is for, and the camera";
  EXPECT_EQ(kernel.openFiles(), 1) << "the fixture's own";
}

}  // namespace
