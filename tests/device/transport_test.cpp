// One transfer to or from a control of an extension unit.
#include "device/transport.h"

#include <vector>

#include "tests/support/bare_camera.h"
#include "tests/support/device_test.h"

namespace {

using zem::testing::DeviceTest;
using zem::testing::kFailedTransfer;
using zem::testing::kUnknownControl;
using zem::testing::Lines;
using zem::testing::RecordingGate;
using zem::testing::SetLine;
using zem::testing::WideLines;

using TransportTest = DeviceTest;

// Calls on the platform for one search of the vendor unit's node, and for the transfer behind it.
const Lines kNodeSearch = {"QueryInterface(IKsTopologyInfo)",
                           "get_NumNodes",
                           "get_NodeType",
                           "CreateNodeInstance",
                           "KsProperty",
                           "KsProperty",
                           "get_NodeType",
                           "CreateNodeInstance",
                           "KsProperty",
                           "KsProperty"};
const Lines kTransfer = {"QueryInterface(IKsTopologyInfo)", "CreateNodeInstance", "KsProperty"};

Lines operator+(Lines left, const Lines& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

TEST_F(TransportTest, SetSendsTheBytesAndWritesOneLine) {
  unsigned char data[3] = {0x11, 0x22, 0x33};
  ZemULong moved = 99;
  EXPECT_EQ(ZEMAPI_UvcExtSet(handle(), &zem::VendorXu, 9, data, 3, &moved), 0);
  EXPECT_EQ(moved, 3U);
  EXPECT_EQ(TakeWire(), Lines{"set vendor 9: 11 22 33"});
  EXPECT_EQ(TakeDebuggerLines(), WideLines{L"[EXT_Set]Node ID = 1, hr = 0, Len:3\r\n"});
  EXPECT_EQ(gate.calls, kNodeSearch + kTransfer);
  EXPECT_EQ(system().comInitializations, 1) << "the open's; a write initialises nothing";
}

TEST_F(TransportTest, GetFillsTheBufferInitialisesComAndWritesNoLine) {
  vendor().Answer(9, {0xAA, 0xBB});
  unsigned char data[4] = {1, 2, 3, 4};
  ZemULong moved = 99;
  EXPECT_EQ(ZEMAPI_UvcExtGet(handle(), &zem::VendorXu, 9, data, 4, &moved), 0);
  EXPECT_EQ(moved, 2U);
  EXPECT_EQ(data[0], 0xAA);
  EXPECT_EQ(data[1], 0xBB);
  EXPECT_EQ(data[2], 3);
  EXPECT_EQ(TakeWire(), Lines{"get vendor 9 [4]"});
  EXPECT_EQ(TakeDebuggerLines(), WideLines());
  EXPECT_EQ(gate.calls, kNodeSearch + kTransfer);
  EXPECT_EQ(system().comInitializations, 2);
  EXPECT_EQ(system().comUninitializations, 0);
}

TEST_F(TransportTest, VendorUnitForms) {
  unsigned char data[1] = {0x5A};
  ZemULong moved = 0;
  EXPECT_EQ(ZEMAPI_ZemExtSet(handle(), 4, data, 1, &moved), 0);
  EXPECT_EQ(moved, 1U);
  vendor().Answer(5, {0x77});
  EXPECT_EQ(ZEMAPI_ZemExtGet(handle(), 5, data, 1, &moved), 0);
  EXPECT_EQ(data[0], 0x77);
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 4: 5a", "get vendor 5 [1]"}));
}

TEST_F(TransportTest, AnyUnitIsReached) {
  AddUnit(zem::SkypeXu);
  unsigned char data[1] = {1};
  EXPECT_EQ(ZEMAPI_UvcExtSet(handle(), &zem::SkypeXu, 15, data, 1, nullptr), 0);
  EXPECT_EQ(TakeWire(), Lines{"set skype 15: 01"});
  EXPECT_EQ(TakeDebuggerLines(), WideLines{L"[EXT_Set]Node ID = 2, hr = 0, Len:1\r\n"});
}

TEST_F(TransportTest, FailingWriteAlsoGivesOneLine) {
  handle();
  FailTransfer(1);
  unsigned char data[2] = {};
  ZemULong moved = 99;
  EXPECT_EQ(ZEMAPI_ZemExtSet(handle(), 1, data, 2, &moved), kFailedTransfer);
  EXPECT_EQ(moved, 0U);
  EXPECT_EQ(TakeDebuggerLines(), WideLines{L"[EXT_Set]Node ID = 1, hr = 8007001F, Len:2\r\n"});
}

TEST_F(TransportTest, FailingReadIsReturnedUnchanged) {
  handle();
  FailTransfer(1);
  unsigned char data[2] = {};
  EXPECT_EQ(ZEMAPI_ZemExtGet(handle(), 1, data, 2, nullptr), kFailedTransfer);
}

TEST_F(TransportTest, WriteToAnAbsentUnitIsIssuedToTheNodeCount) {
  unsigned char data[1] = {};
  EXPECT_EQ(ZEMAPI_UvcExtSet(handle(), &zem::H264Xu, 1, data, 1, nullptr), kUnknownControl);
  EXPECT_EQ(TakeDebuggerLines(), WideLines{L"[EXT_Set]Node ID = 2, hr = 80070490, Len:1\r\n"});
  EXPECT_EQ(gate.calls.back(), "KsProperty") << "the request was issued";
}

TEST_F(TransportTest, PositiveResultsAreNoFailuresAndThatOfTheRequestIsReturned) {
  handle();
  vendor().Answer(9, {0xAA});
  gate.AnswerEverything(7);
  unsigned char data[1] = {0x11};
  ZemULong moved = 99;
  EXPECT_EQ(ZEMAPI_ZemExtSet(handle(), 9, data, 1, &moved), 7);
  EXPECT_EQ(ZEMAPI_ZemExtGet(handle(), 9, data, 1, &moved), 7);
  EXPECT_EQ(data[0], 0xAA);
  EXPECT_EQ(moved, 1U);
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 9: 11", "get vendor 9 [1]"}));
  EXPECT_EQ(TakeDebuggerLines(), WideLines{SetLine(7, 1)});
}

TEST_F(TransportTest, LengthZeroIsPassedOn) {
  EXPECT_EQ(ZEMAPI_ZemExtSet(handle(), 3, nullptr, 0, nullptr), 0);
  EXPECT_EQ(TakeWire(), Lines{"set vendor 3: "});
  EXPECT_EQ(TakeDebuggerLines(), WideLines{L"[EXT_Set]Node ID = 1, hr = 0, Len:0\r\n"});
}

TEST_F(TransportTest, NullHandleTouchesNothing) {
  unsigned char data[1] = {0x42};
  ZemULong moved = 99;
  EXPECT_EQ(ZEMAPI_UvcExtSet(nullptr, &zem::VendorXu, 1, data, 1, &moved), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ZEMAPI_UvcExtGet(nullptr, &zem::VendorXu, 1, data, 1, &moved), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ZEMAPI_ZemExtSet(nullptr, 1, data, 1, &moved), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ZEMAPI_ZemExtGet(nullptr, 1, data, 1, &moved), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ZEMAPI_UvcCheckXuGuid(nullptr, &zem::VendorXu), ZEM_E_NO_DEVICE);
  EXPECT_EQ(data[0], 0x42);
  EXPECT_EQ(moved, 99U);
  EXPECT_EQ(system().profileReads, WideLines()) << "no fallback on the default camera";
  EXPECT_EQ(system().comInitializations, 0);
  EXPECT_EQ(gate.calls, Lines());
}

TEST_F(TransportTest, NullUnitIsRefused) {
  unsigned char data[1] = {};
  EXPECT_EQ(ZEMAPI_UvcExtSet(handle(), nullptr, 1, data, 1, nullptr), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMAPI_UvcExtGet(handle(), nullptr, 1, data, 1, nullptr), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMAPI_UvcCheckXuGuid(handle(), nullptr), ZEM_E_REFUSED);
  EXPECT_EQ(TakeWire(), Lines());
}

TEST_F(TransportTest, CheckXuGuidOfTheHandlesDevice) {
  EXPECT_EQ(ZEMAPI_UvcCheckXuGuid(handle(), &zem::VendorXu), 0);
  EXPECT_EQ(ZEMAPI_UvcCheckXuGuid(handle(), &zem::H264Xu), 1);
  gate.RefuseAll("CreateNodeInstance");
  EXPECT_EQ(ZEMAPI_UvcCheckXuGuid(handle(), &zem::VendorXu), RecordingGate::kRefusal);
}

TEST_F(TransportTest, WithoutFilterTheDefaultCameraServesOneTransfer) {
  unsigned char data[1] = {0x12};
  ULONG moved = 0;
  EXPECT_EQ(zem::XuSetControl(zem::VendorXu, 1, data, 1, &moved, nullptr), 0);
  EXPECT_EQ(TakeWire(), Lines{"set vendor 1: 12"});
  EXPECT_EQ(system().comInitializations, 1) << "the search's, which stays";
  EXPECT_EQ(system().profileReads.size(), 2U);
  EXPECT_EQ(zem::simulator::liveComObjects, 0);
  EXPECT_EQ(zem::XuGetControl(zem::VendorXu, 1, data, 1, &moved, nullptr), 0);
  EXPECT_EQ(system().comInitializations, 3) << "the read's own and the search's";
  EXPECT_EQ(system().comUninitializations, 0);
  EXPECT_EQ(zem::simulator::liveComObjects, 0);
}

TEST_F(TransportTest, WithoutFilterAndDefaultCameraTheSearchsFailure) {
  ListNothing();
  unsigned char data[1] = {};
  EXPECT_EQ(zem::XuSetControl(zem::VendorXu, 1, data, 1, nullptr, nullptr), ZEM_E_FAIL);
  EXPECT_EQ(system().ComBalance(), 0);
  EXPECT_EQ(zem::XuGetControl(zem::VendorXu, 1, data, 1, nullptr, nullptr), ZEM_E_FAIL);
  EXPECT_EQ(system().ComBalance(), 1) << "the read's own";
  EXPECT_EQ(TakeDebuggerLines(), WideLines());
}

TEST_F(TransportTest, FailureOfEachPlatformCallOfAWrite) {
  handle();
  // Behind the search come the request for the topology, the node's control and the transfer. A
  // failure in the search makes the node id 0xFFFFFFFF or leads past the unit, and the request is
  // issued all the same.
  const std::size_t calls = kNodeSearch.size() + kTransfer.size();
  for (std::size_t index = 0; index < calls; ++index) {
    SCOPED_TRACE(index);
    gate.calls.clear();
    gate.RefuseCall(index);
    unsigned char data[1] = {7};
    ZemULong moved = 99;
    const ZemResult result = ZEMAPI_ZemExtSet(handle(), 1, data, 1, &moved);
    const WideLines lines = TakeDebuggerLines();
    if (index == 10 || index == 11) {
      EXPECT_EQ(result, RecordingGate::kRefusal) << "no request can be issued";
      EXPECT_EQ(lines, WideLines());
      EXPECT_EQ(moved, 99U);
    } else if (index == 12) {
      EXPECT_EQ(result, RecordingGate::kRefusal);
      EXPECT_EQ(lines, WideLines{SetLine(RecordingGate::kRefusal, 1)});
      EXPECT_EQ(moved, 0U);
    } else if (index == 0 || index == 1 || index == 3 || index == 7) {
      EXPECT_EQ(result, kUnknownControl);
      EXPECT_EQ(lines, WideLines{L"[EXT_Set]Node ID = -1, hr = 80070490, Len:1\r\n"});
    } else if (index == 8 || index == 9) {
      EXPECT_EQ(result, kUnknownControl);
      EXPECT_EQ(lines, WideLines{L"[EXT_Set]Node ID = 2, hr = 80070490, Len:1\r\n"});
    } else {
      EXPECT_EQ(result, 0) << "node types and the plain node's information do not matter";
      EXPECT_EQ(lines, WideLines{SetLine(0, 1)});
    }
    EXPECT_EQ(zem::simulator::liveComObjects, 1) << "the handle's filter";
  }
}

TEST_F(TransportTest, FailureOfEachPlatformCallOfARead) {
  handle();
  vendor().AlwaysAnswer(2, {0x77});
  const std::size_t calls = kNodeSearch.size() + kTransfer.size();
  for (std::size_t index = 0; index < calls; ++index) {
    SCOPED_TRACE(index);
    gate.calls.clear();
    gate.RefuseCall(index);
    const int before = system().comInitializations;
    unsigned char data[1] = {7};
    const ZemResult result = ZEMAPI_ZemExtGet(handle(), 2, data, 1, nullptr);
    const bool issued = index < 10;
    const bool reached = index == 2 || index == 4 || index == 5 || index == 6;
    EXPECT_EQ(result, reached ? 0 : issued ? kUnknownControl : RecordingGate::kRefusal);
    EXPECT_EQ(data[0], reached ? 0x77 : 7);
    EXPECT_EQ(system().comInitializations - before, 1) << "whatever becomes of the read";
    EXPECT_EQ(TakeDebuggerLines(), WideLines());
    EXPECT_EQ(zem::simulator::liveComObjects, 1) << "the handle's filter";
  }
}

// Takes down the request that reaches the node.
class RequestCamera : public zem::testing::BareCamera {
 public:
  HRESULT Request(const KSP_NODE& request, void* data, ULONG length,
                  ULONG* bytesReturned) override {
    last = request;
    lastData = data;
    lastLength = length;
    countAtStart = *bytesReturned;
    *bytesReturned = length;
    ++requests;
    return S_FALSE;
  }
  KSP_NODE last = {};
  void* lastData = nullptr;
  ULONG lastLength = 0;
  ULONG countAtStart = 99;
  int requests = 0;
};

TEST(TransportRequestTest, AllFieldsOfTheRequest) {
  zem::platform::simulated::Reset();
  RequestCamera camera;
  unsigned char data[600] = {};
  ULONG moved = 0;
  EXPECT_EQ(zem::XuSetControl(zem::OrvaXu, 0xABCD, data, 600, &moved, &camera), 1)
      << "a positive result is no failure and is passed on";
  const unsigned char expected[32] = {0xB4, 0x21, 0x53, 0xBD, 0x35, 0xD6, 0x45, 0xCA, 0xB2,
                                      0x03, 0x4E, 0x01, 0x49, 0xB3, 0x01, 0xBC,  // the unit's GUID
                                      0xCD, 0xAB, 0x00, 0x00,                    // the selector
                                      0x02, 0x00, 0x00, 0x10,                    // set, topology
                                      0x00, 0x00, 0x00, 0x00,  // the node: the count of none
                                      0x00, 0x00, 0x00, 0x00};
  EXPECT_EQ(std::memcmp(&camera.last, expected, sizeof(expected)), 0);
  EXPECT_EQ(camera.lastData, data) << "the caller's own buffer";
  EXPECT_EQ(camera.lastLength, 600U);
  EXPECT_EQ(zem::XuGetControl(zem::OrvaXu, 0xABCD, data, 600, &moved, &camera), 1);
  EXPECT_EQ(camera.last.Property.Flags, 0x10000001U);
  EXPECT_EQ(camera.references, 1);
}

// Without nodes; its requests for interfaces come out as told.
class OddCamera : public RequestCamera {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    *object = nullptr;
    if (givesTopology) {
      static_cast<void>(RequestCamera::QueryInterface(iid, object));
    }
    return topologyResult;
  }
  HRESULT STDMETHODCALLTYPE CreateNodeInstance(DWORD node, REFIID iid, void** object) override {
    *object = nullptr;
    if (givesControl) {
      static_cast<void>(RequestCamera::CreateNodeInstance(node, iid, object));
    }
    return controlResult;
  }
  HRESULT topologyResult = S_OK;
  bool givesTopology = true;
  HRESULT controlResult = S_OK;
  bool givesControl = true;
};

class OddCameraTest : public ::testing::Test {
 protected:
  OddCameraTest() { zem::platform::simulated::Reset(); }
  ~OddCameraTest() override { EXPECT_EQ(camera.references, 1); }

  // Reads and writes, which end alike, and gives the result.
  ZemResult Transfer() {
    unsigned char data[1] = {};
    ULONG moved = 99;
    const ZemResult result = zem::XuSetControl(zem::OrvaXu, 1, data, 1, &moved, &camera);
    EXPECT_EQ(zem::XuGetControl(zem::OrvaXu, 1, data, 1, &moved, &camera), result);
    return result;
  }
  static WideLines DebuggerLines() { return zem::platform::simulated::TheSystem().debuggerLines; }

  OddCamera camera;
};

TEST_F(OddCameraTest, TopologyIsUsedWhateverTheResultOfItsRequest) {
  camera.topologyResult = E_NOTIMPL;
  EXPECT_EQ(Transfer(), 1);
  EXPECT_EQ(camera.requests, 2);
  EXPECT_EQ(camera.last.NodeId, 0xFFFFFFFFU) << "the search for the node looks at the result";
  EXPECT_EQ(DebuggerLines(), WideLines{SetLine(1, 1, -1)});
}

TEST_F(OddCameraTest, WithoutATopologyItsFailureAndNothingIsSent) {
  camera.givesTopology = false;
  camera.topologyResult = E_NOTIMPL;
  EXPECT_EQ(Transfer(), E_NOTIMPL);
  camera.topologyResult = S_OK;
  EXPECT_EQ(Transfer(), E_NOINTERFACE);
  EXPECT_EQ(camera.requests, 0);
  EXPECT_EQ(DebuggerLines(), WideLines());
}

TEST_F(OddCameraTest, WithoutANodeControlItsFailureAndNothingIsSent) {
  camera.controlResult = E_NOTIMPL;
  EXPECT_EQ(Transfer(), E_NOTIMPL) << "though a pointer was left behind";
  camera.givesControl = false;
  EXPECT_EQ(Transfer(), E_NOTIMPL);
  camera.controlResult = S_OK;
  EXPECT_EQ(Transfer(), E_NOINTERFACE);
  EXPECT_EQ(camera.requests, 0);
  EXPECT_EQ(DebuggerLines(), WideLines());
}

TEST(TransportRequestTest, ReturnedByteCountIsZeroFirstAndStandsInForANullOne) {
  zem::platform::simulated::Reset();
  RequestCamera camera;
  unsigned char data[5] = {};
  ULONG moved = 99;
  EXPECT_EQ(zem::XuSetControl(zem::OrvaXu, 1, data, 5, &moved, &camera), 1);
  EXPECT_EQ(camera.countAtStart, 0U);
  EXPECT_EQ(moved, 5U);
  camera.countAtStart = 99;
  EXPECT_EQ(zem::XuGetControl(zem::OrvaXu, 1, nullptr, 5, nullptr, &camera), 1);
  EXPECT_EQ(camera.countAtStart, 0U)
      << "the platform gets a count also where the caller wants none";
  EXPECT_EQ(camera.lastData, nullptr) << "null data goes on as it is";
  EXPECT_EQ(camera.lastLength, 5U);
}

TEST(ExtensionUnitTest, GuidsByTheirBytes) {
  const auto bytes = [](const GUID& id) {
    std::vector<std::uint8_t> text(sizeof(id));
    std::memcpy(text.data(), &id, sizeof(id));
    return zem::testing::HexText(text);
  };
  EXPECT_EQ(bytes(zem::VendorXu), "d0 9e e4 23 78 11 31 4f ae 52 d2 fb 8a 8d 3b 48");
  EXPECT_EQ(bytes(zem::H264Xu), "41 76 9e a2 04 de e3 47 8b 2b f4 34 1a ff 00 3b");
  EXPECT_EQ(bytes(zem::SkypeXu), "bd 53 21 b4 d6 35 ca 45 b2 03 4e 01 49 b3 01 bc");
  EXPECT_EQ(bytes(zem::TirellaXu), "5b ef 79 f6 df 54 fc 4b b8 cb ca 7e 89 a5 23 3f");
  EXPECT_EQ(bytes(zem::OrvaXu), "b4 21 53 bd 35 d6 45 ca b2 03 4e 01 49 b3 01 bc");
  EXPECT_EQ(bytes(zem::EncodingUnitXu), "62 86 eb 38 45 65 df 4b 91 a1 52 c7 f3 bf bd c6");
  EXPECT_EQ(bytes(zem::StreamProbeXu), "cb 16 85 ea a5 dd 3f 4c 97 78 13 6f 27 f8 0d 93");
}

}  // namespace
