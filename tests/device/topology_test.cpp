// The walks over a device's topology: which node carries a unit, whether it is there.
#include "device/topology.h"

#include <cstring>
#include <functional>
#include <vector>

#include "device/unit_check.h"
#include "platform/com_ptr.h"
#include "simulator/com_camera.h"
#include "tests/support/bare_camera.h"
#include "tests/support/device_test.h"
#include "tests/support/stack_pattern.h"

namespace {

using zem::CheckXuGuid;
using zem::FindXuNode;
using zem::testing::DeviceTest;
using zem::testing::Lines;
using zem::testing::RecordingGate;

class TopologyTest : public DeviceTest {
 protected:
  TopologyTest()
      : filter_(zem::ComPtr<IBaseFilter>::Adopt(zem::simulator::MakeCameraFilter(
            std::shared_ptr<zem::simulator::Camera>(&camera(), [](auto*) {}), &gate))) {}

  IBaseFilter* filter() { return filter_.get(); }

 private:
  zem::ComPtr<IBaseFilter> filter_;
};

TEST_F(TopologyTest, FindXuNodeGivesTheFirstNodeThatCarriesTheUnit) {
  AddUnit(zem::H264Xu);
  AddUnit(zem::H264Xu);
  EXPECT_EQ(FindXuNode(filter(), zem::VendorXu), 1U);
  EXPECT_EQ(FindXuNode(filter(), zem::H264Xu), 2U);
}

TEST_F(TopologyTest, FindXuNodeWithoutTheUnitGivesTheNodeCount) {
  EXPECT_EQ(FindXuNode(filter(), zem::H264Xu), 2U);
}

TEST_F(TopologyTest, FindXuNodeAsksTypeSizeAndValueOfEachNode) {
  FindXuNode(filter(), zem::VendorXu);
  EXPECT_EQ(gate.calls, (Lines{"QueryInterface(IKsTopologyInfo)", "get_NumNodes", "get_NodeType",
                               "CreateNodeInstance", "KsProperty", "KsProperty", "get_NodeType",
                               "CreateNodeInstance", "KsProperty", "KsProperty"}));
}

TEST_F(TopologyTest, FindXuNodeOnUnreadableTopologies) {
  for (const char* const call :
       {"QueryInterface(IKsTopologyInfo)", "get_NumNodes", "CreateNodeInstance"}) {
    SCOPED_TRACE(call);
    RecordingGate fresh;
    std::swap(gate, fresh);
    gate.RefuseAll(call);
    EXPECT_EQ(FindXuNode(filter(), zem::VendorXu), 0xFFFFFFFFU);
    EXPECT_EQ(zem::simulator::liveComObjects, 1) << "the test's own filter";
  }
}

TEST_F(TopologyTest, FindXuNodeDoesNotLookAtFailuresOfTypeAndValue) {
  gate.RefuseAll("get_NodeType");
  EXPECT_EQ(FindXuNode(filter(), zem::VendorXu), 1U);
  gate.RefuseAll("KsProperty");
  EXPECT_EQ(FindXuNode(filter(), zem::VendorXu), 2U) << "as if no node had it";
}

TEST_F(TopologyTest, PositiveResultsAreNoFailures) {
  gate.AnswerEverything(7);
  EXPECT_EQ(FindXuNode(filter(), zem::VendorXu), 1U);
  EXPECT_EQ(CheckXuGuid(zem::VendorXu, filter()), 0);
  EXPECT_EQ(CheckXuGuid(zem::H264Xu, filter()), 1);
}

TEST_F(TopologyTest, CheckXuGuidPresentAndAbsent) {
  EXPECT_EQ(CheckXuGuid(zem::VendorXu, filter()), 0);
  EXPECT_EQ(CheckXuGuid(zem::H264Xu, filter()), 1);
}

TEST_F(TopologyTest, CheckXuGuidAsksOnceForEachValue) {
  CheckXuGuid(zem::VendorXu, filter());
  EXPECT_EQ(gate.calls, (Lines{"QueryInterface(IKsTopologyInfo)", "get_NumNodes", "get_NodeType",
                               "CreateNodeInstance", "KsProperty", "get_NodeType",
                               "CreateNodeInstance", "KsProperty"}));
}

TEST_F(TopologyTest, CheckXuGuidReturnsFailures) {
  for (const char* const call :
       {"QueryInterface(IKsTopologyInfo)", "get_NumNodes", "CreateNodeInstance"}) {
    SCOPED_TRACE(call);
    RecordingGate fresh;
    std::swap(gate, fresh);
    gate.RefuseAll(call);
    EXPECT_EQ(CheckXuGuid(zem::VendorXu, filter()), RecordingGate::kRefusal);
    EXPECT_EQ(zem::simulator::liveComObjects, 1) << "the test's own filter";
  }
}

TEST_F(TopologyTest, CheckXuGuidWithoutFilterAsksTheDefaultCamera) {
  EXPECT_EQ(CheckXuGuid(zem::VendorXu, nullptr), 0);
  EXPECT_EQ(system().profileReads.size(), 2U);
  EXPECT_EQ(system().ComBalance(), 1);
  ListNothing();
  EXPECT_EQ(CheckXuGuid(zem::VendorXu, nullptr), ZEM_E_FAIL);
}

TEST_F(TopologyTest, DeviceWithoutNodesCountsAsHavingEveryUnit) {
  const auto empty = zem::ComPtr<IBaseFilter>::Adopt(
      zem::simulator::MakeCameraFilter(std::make_shared<zem::simulator::Camera>(), nullptr));
  EXPECT_EQ(CheckXuGuid(zem::H264Xu, empty.get()), 0);
  EXPECT_EQ(FindXuNode(empty.get(), zem::H264Xu), 0U);
}

// One property request as the device gets it.
struct SeenRequest {
  KSP_NODE request;
  bool hasBuffer;
  ULONG length;
};

// Answers an information block that claims any size.
class InformationCamera : public zem::testing::BareCamera {
 public:
  InformationCamera() { nodeCount = 1; }

  HRESULT Request(const KSP_NODE& request, void* data, ULONG length,
                  ULONG* bytesReturned) override {
    seen.push_back({request, data != nullptr, length});
    if (data != nullptr) {
      std::memset(data, 0xEE, length);
      std::memcpy(data, &zem::VendorXu, std::min<std::size_t>(length, sizeof(GUID)));
    }
    *bytesReturned = claimedSize;
    return S_OK;
  }

  ULONG claimedSize = 16;
  std::vector<SeenRequest> seen;
};

TEST(TopologyRequestTest, SizeThenValueWithTheSizeThatWasReported) {
  InformationCamera camera;
  camera.claimedSize = 20;
  EXPECT_EQ(FindXuNode(&camera, zem::VendorXu), 0U);
  ASSERT_EQ(camera.seen.size(), 2U);
  for (const SeenRequest& seen : camera.seen) {
    EXPECT_TRUE(seen.request.Property.Set == zem::VendorXu);
    EXPECT_EQ(seen.request.Property.Id, 0U);
    EXPECT_EQ(seen.request.Property.Flags, 0x10000001U);
    EXPECT_EQ(seen.request.NodeId, 0U);
    EXPECT_EQ(seen.request.Reserved, 0U);
  }
  EXPECT_FALSE(camera.seen[0].hasBuffer);
  EXPECT_EQ(camera.seen[0].length, 0U);
  EXPECT_EQ(camera.seen[1].length, 20U);
  EXPECT_EQ(camera.references, 1);
}

TEST(TopologyRequestTest, ValueLongerThan32BytesIsCutToTheBuffer) {
  InformationCamera camera;
  for (const ULONG claimed : {32U, 33U, 4096U, 0xFFFFFFFFU}) {
    camera.claimedSize = claimed;
    EXPECT_EQ(FindXuNode(&camera, zem::VendorXu), 0U);
    EXPECT_EQ(camera.seen.back().length, 32U);
  }
}

TEST(TopologyRequestTest, ValueShorterThanAGuidIsNoMatch) {
  InformationCamera camera;
  for (const ULONG claimed : {0U, 15U}) {
    camera.claimedSize = claimed;
    EXPECT_EQ(FindXuNode(&camera, zem::VendorXu), 1U);
  }
}

TEST(TopologyRequestTest, CheckReads32BytesAtOnce) {
  InformationCamera camera;
  EXPECT_EQ(CheckXuGuid(zem::VendorXu, &camera), 0);
  ASSERT_EQ(camera.seen.size(), 1U);
  EXPECT_EQ(camera.seen[0].length, 32U);
  EXPECT_EQ(camera.seen[0].request.Property.Flags, 0x10000001U);
  EXPECT_EQ(camera.references, 1);
}

// A camera that succeeds without handing out what it was asked for.
class EmptyHandedCamera : public InformationCamera {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (!withTopology) {
      *object = nullptr;
      return S_OK;
    }
    return InformationCamera::QueryInterface(iid, object);
  }
  HRESULT STDMETHODCALLTYPE CreateNodeInstance(DWORD /*node*/, REFIID /*iid*/,
                                               void** object) override {
    *object = nullptr;
    return S_OK;
  }
  bool withTopology = false;
};

TEST(TopologyRequestTest, SuccessWithoutAnInterface) {
  EmptyHandedCamera camera;
  EXPECT_EQ(FindXuNode(&camera, zem::VendorXu), 0xFFFFFFFFU);
  EXPECT_EQ(CheckXuGuid(zem::VendorXu, &camera), 0);
  camera.withTopology = true;
  EXPECT_EQ(FindXuNode(&camera, zem::VendorXu), 0xFFFFFFFFU);
  EXPECT_EQ(CheckXuGuid(zem::VendorXu, &camera), static_cast<ZemResult>(0x80004002U));
  EXPECT_EQ(camera.references, 1);
}

// A camera whose requests for interfaces fail and leave a pointer behind all the same.
class LeavingCamera : public InformationCamera {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    static_cast<void>(InformationCamera::QueryInterface(iid, object));
    return topologyResult;
  }
  HRESULT STDMETHODCALLTYPE CreateNodeInstance(DWORD node, REFIID iid, void** object) override {
    static_cast<void>(InformationCamera::CreateNodeInstance(node, iid, object));
    return controlResult;
  }
  HRESULT topologyResult = S_OK;
  HRESULT controlResult = S_OK;
};

TEST(TopologyRequestTest, PointerOfAFailedRequestIsNotUsed) {
  LeavingCamera camera;
  camera.controlResult = E_NOTIMPL;
  EXPECT_EQ(FindXuNode(&camera, zem::VendorXu), 0xFFFFFFFFU);
  EXPECT_EQ(CheckXuGuid(zem::VendorXu, &camera), E_NOTIMPL);
  camera.controlResult = S_OK;
  camera.topologyResult = E_NOTIMPL;
  EXPECT_EQ(FindXuNode(&camera, zem::VendorXu), 0xFFFFFFFFU);
  EXPECT_EQ(CheckXuGuid(zem::VendorXu, &camera), E_NOTIMPL);
  EXPECT_EQ(camera.seen.size(), 0U);
  EXPECT_EQ(camera.references, 1);
}

// A camera that reports an information block and moves nothing of it.
class SilentCamera : public zem::testing::BareCamera {
 public:
  SilentCamera() { nodeCount = 1; }
  HRESULT Request(const KSP_NODE& /*request*/, void* /*data*/, ULONG /*length*/,
                  ULONG* bytesReturned) override {
    *bytesReturned = 32;
    return S_OK;
  }
  __attribute__((no_sanitize("address"))) HRESULT STDMETHODCALLTYPE
  CreateNodeInstance(DWORD node, REFIID iid, void** object) override {
    const HRESULT result = BareCamera::CreateNodeInstance(node, iid, object);
    zem::testing::FillStackBelow();
    return result;
  }
};

TEST(TopologyRequestTest, InformationThatIsNotMovedIsZero) {
  SilentCamera camera;
  GUID pattern = {};
  std::memset(&pattern, zem::testing::kStackPattern, sizeof(pattern));
  EXPECT_EQ(FindXuNode(&camera, pattern), 1U) << "no node carries it";
  EXPECT_EQ(CheckXuGuid(pattern, &camera), 1);
}

}  // namespace
