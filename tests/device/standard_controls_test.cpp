// Standard controls: one call on the device's interface each, arguments and result handed on.
#include "simulator/standard_controls.h"

#include <array>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "platform/com_ptr.h"
#include "tests/support/bare_camera.h"
#include "tests/support/device_test.h"

namespace {

using zem::testing::DeviceTest;
using zem::testing::Lines;
using zem::testing::RecordingGate;

// Either interface, with every call and its pointers written down and answered as told.
template <class Interface>
class RecordingControls : public Interface {
 public:
  virtual ~RecordingControls() = default;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID /*iid*/, void** object) override {
    *object = nullptr;
    return E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(++references); }
  ULONG STDMETHODCALLTYPE Release() override { return static_cast<ULONG>(--references); }

  HRESULT STDMETHODCALLTYPE GetRange(LONG property, LONG* minimum, LONG* maximum, LONG* step,
                                     LONG* defaultValue, LONG* capsFlags) override {
    calls.push_back("GetRange " + std::to_string(property));
    outputs = {minimum, maximum, step, defaultValue, capsFlags};
    return Write({-1, 2, 3, 4, 5});
  }
  HRESULT STDMETHODCALLTYPE Set(LONG property, LONG value, LONG flags) override {
    calls.push_back("Set " + std::to_string(property) + " " + std::to_string(value) + " " +
                    std::to_string(flags));
    return result;
  }
  HRESULT STDMETHODCALLTYPE Get(LONG property, LONG* value, LONG* flags) override {
    calls.push_back("Get " + std::to_string(property));
    outputs = {value, flags};
    return Write({-7, 8});
  }

  Lines calls;
  // Of the last call.
  std::vector<LONG*> outputs;
  HRESULT result = S_OK;
  int references = 0;

 private:
  HRESULT Write(const std::vector<LONG>& numbers) {
    for (std::size_t index = 0; index < numbers.size(); ++index) {
      if (outputs[index] != nullptr) {
        *outputs[index] = numbers[index];
      }
    }
    return result;
  }
};

// A camera that has both interfaces, unless told otherwise.
class ControlCamera : public zem::testing::BareCamera {
 public:
  HRESULT Request(const KSP_NODE& /*request*/, void* /*data*/, ULONG /*length*/,
                  ULONG* /*bytesReturned*/) override {
    return E_NOTIMPL;
  }

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    *object = nullptr;
    if (grant && iid == zem::IID_IAMVideoProcAmp) {
      *object = static_cast<IAMVideoProcAmp*>(&amplifier);
      amplifier.references += SUCCEEDED(asked) ? 1 : 0;
    } else if (grant && iid == zem::IID_IAMCameraControl) {
      *object = static_cast<IAMCameraControl*>(&terminal);
      terminal.references += SUCCEEDED(asked) ? 1 : 0;
    }
    return asked;
  }

  HRESULT asked = S_OK;
  // Whether a request leaves a pointer behind, with a reference if it does not fail.
  bool grant = true;
  RecordingControls<IAMVideoProcAmp> amplifier;
  RecordingControls<IAMCameraControl> terminal;
};

// The exports of one family; the two families behave alike.
struct Family {
  const char* name;
  ZemResult (*get)(void* handle, ZemLong property, ZemLong* value, ZemLong* flags);
  ZemResult (*set)(void* handle, ZemLong property, ZemLong value, ZemLong flags);
  ZemResult (*getRange)(void* handle, ZemLong property, ZemLong* minimum, ZemLong* maximum,
                        ZemLong* step, ZemLong* defaultValue, ZemLong* capsFlags);
  bool isAmplifier;
};
void PrintTo(const Family& family, std::ostream* out) { *out << family.name; }

class StandardControlsTest : public ::testing::TestWithParam<Family> {
 protected:
  StandardControlsTest() {
    zem::platform::simulated::Reset();
    EXPECT_EQ(ZEMAPI_OpenDeviceBySourceFilter(&camera, &handle), 0);
  }
  ~StandardControlsTest() override {
    ZEMAPI_CloseDevice(&handle);
    EXPECT_EQ(camera.references, 1);
    EXPECT_EQ(camera.amplifier.references, 0);
    EXPECT_EQ(camera.terminal.references, 0);
  }

  // Calls on this family's interface; the other's must see none.
  Lines TakeCalls() {
    const Lines& other = GetParam().isAmplifier ? camera.terminal.calls : camera.amplifier.calls;
    EXPECT_EQ(other, Lines());
    return std::exchange(GetParam().isAmplifier ? camera.amplifier.calls : camera.terminal.calls,
                         {});
  }

  // The pointers that the last call on this family's interface was given.
  const std::vector<LONG*>& Outputs() {
    return GetParam().isAmplifier ? camera.amplifier.outputs : camera.terminal.outputs;
  }

  void Answer(HRESULT result) { camera.amplifier.result = camera.terminal.result = result; }

  // Each of the three exports once, with valid arguments.
  std::vector<std::function<ZemResult(void*)>> AllExports() {
    return {
        [this](void* on) { return GetParam().get(on, 1, &numbers[0], &numbers[1]); },
        [](void* on) { return GetParam().set(on, 1, 2, 3); },
        [this](void* on) {
          return GetParam().getRange(on, 1, &numbers[0], &numbers[1], &numbers[2], &numbers[3],
                                     &numbers[4]);
        },
    };
  }

  ControlCamera camera;
  void* handle = nullptr;
  ZemLong numbers[5] = {99, 99, 99, 99, 99};
};

TEST_P(StandardControlsTest, Get) {
  EXPECT_EQ(GetParam().get(handle, -5, &numbers[0], &numbers[1]), 0);
  EXPECT_EQ(numbers[0], -7);
  EXPECT_EQ(numbers[1], 8);
  EXPECT_EQ(TakeCalls(), Lines{"Get -5"});
}

TEST_P(StandardControlsTest, Set) {
  EXPECT_EQ(GetParam().set(handle, 6, -70000, 2), 0);
  EXPECT_EQ(TakeCalls(), Lines{"Set 6 -70000 2"});
}

TEST_P(StandardControlsTest, GetRange) {
  EXPECT_EQ(GetParam().getRange(handle, 3, &numbers[0], &numbers[1], &numbers[2], &numbers[3],
                                &numbers[4]),
            0);
  EXPECT_EQ(numbers[0], -1);
  EXPECT_EQ(numbers[1], 2);
  EXPECT_EQ(numbers[2], 3);
  EXPECT_EQ(numbers[3], 4);
  EXPECT_EQ(numbers[4], 5);
  EXPECT_EQ(TakeCalls(), Lines{"GetRange 3"});
}

TEST_P(StandardControlsTest, ResultsAreHandedOnUnchanged) {
  for (const HRESULT result : {S_FALSE, static_cast<HRESULT>(0x80070490U), E_FAIL}) {
    Answer(result);
    for (const auto& call : AllExports()) {
      EXPECT_EQ(call(handle), result);
    }
  }
}

TEST_P(StandardControlsTest, NullHandle) {
  for (const auto& call : AllExports()) {
    EXPECT_EQ(call(nullptr), ZEM_E_NO_DEVICE);
  }
  EXPECT_EQ(numbers[0], 99);
  EXPECT_EQ(TakeCalls(), Lines());
}

TEST_P(StandardControlsTest, AbsentInterfaceIsNotThePlatformsCode) {
  camera.grant = false;
  for (const HRESULT asked : {E_NOINTERFACE, S_OK}) {
    camera.asked = asked;
    for (const auto& call : AllExports()) {
      EXPECT_EQ(call(handle), ZEM_E_DEVICE_REFUSED) << "0 is granted, but without a pointer";
    }
  }
  EXPECT_EQ(numbers[0], 99);
}

TEST_P(StandardControlsTest, PointerOfAFailedRequestIsNeitherUsedNorReleased) {
  camera.asked = E_NOINTERFACE;
  for (const auto& call : AllExports()) {
    EXPECT_EQ(call(handle), ZEM_E_DEVICE_REFUSED);
  }
  EXPECT_EQ(TakeCalls(), Lines());
  EXPECT_EQ(camera.amplifier.references, 0);
  EXPECT_EQ(camera.terminal.references, 0);
}

TEST_P(StandardControlsTest, PositiveResultOfTheRequestIsNoFailure) {
  camera.asked = S_FALSE;
  for (const auto& call : AllExports()) {
    EXPECT_EQ(call(handle), 0);
  }
  EXPECT_EQ(TakeCalls(), (Lines{"Get 1", "Set 1 2 3", "GetRange 1"}));
}

TEST_P(StandardControlsTest, PointersGoOnAsTheyAreAlsoNull) {
  using Pointers = std::vector<ZemLong*>;
  const Family& family = GetParam();
  Answer(E_POINTER);
  for (const Pointers& two :
       {Pointers{nullptr, &numbers[1]}, Pointers{&numbers[0], nullptr}, Pointers(2, nullptr)}) {
    EXPECT_EQ(family.get(handle, 1, two[0], two[1]), E_POINTER);
    EXPECT_EQ(Outputs(), two);
    EXPECT_EQ(TakeCalls(), Lines{"Get 1"});
  }
  for (std::size_t present = 0; present <= 5; ++present) {
    Pointers five(5, nullptr);
    if (present < 5) {
      five[present] = &numbers[present];
    }
    EXPECT_EQ(family.getRange(handle, 1, five[0], five[1], five[2], five[3], five[4]), E_POINTER);
    EXPECT_EQ(Outputs(), five);
    EXPECT_EQ(TakeCalls(), Lines{"GetRange 1"});
  }
}

TEST_P(StandardControlsTest, HandleAndInterfaceComeBeforeNullPointers) {
  const Family& family = GetParam();
  EXPECT_EQ(family.get(nullptr, 1, nullptr, nullptr), ZEM_E_NO_DEVICE);
  EXPECT_EQ(family.getRange(nullptr, 1, nullptr, nullptr, nullptr, nullptr, nullptr),
            ZEM_E_NO_DEVICE);
  camera.grant = false;
  EXPECT_EQ(family.get(handle, 1, nullptr, nullptr), ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(family.getRange(handle, 1, nullptr, nullptr, nullptr, nullptr, nullptr),
            ZEM_E_DEVICE_REFUSED);
}

INSTANTIATE_TEST_SUITE_P(
    Families, StandardControlsTest,
    ::testing::Values(Family{"VideoProcAmp", ZEMAPI_GetVideoProcAmp, ZEMAPI_SetVideoProcAmp,
                             ZEMAPI_GetVideoProcAmpRange, true},
                      Family{"CameraControl", ZEMAPI_GetCameraControl, ZEMAPI_SetCameraControl,
                             ZEMAPI_GetCameraControlRange, false}),
    [](const auto& parameters) { return parameters.param.name; });

// ---- The simulated camera's own controls ----

class SimulatedControlsTest : public DeviceTest {
 protected:
  SimulatedControlsTest() {
    for (const auto family : {zem::simulator::ControlFamily::kVideoProcessing,
                              zem::simulator::ControlFamily::kCameraTerminal}) {
      camera().AddControls(family, zem::simulator::DefaultControls(family));
    }
  }
};

TEST_F(SimulatedControlsTest, KeepWhatIsSetWithinTheirRange) {
  ZemLong value = 0;
  ZemLong flags = 0;
  EXPECT_EQ(ZEMAPI_SetVideoProcAmp(handle(), 0, 200, 2), 0);
  EXPECT_EQ(ZEMAPI_GetVideoProcAmp(handle(), 0, &value, &flags), 0);
  EXPECT_EQ(value, 200);
  EXPECT_EQ(flags, 2);
  constexpr auto kInvalid = static_cast<ZemResult>(0x80070057U);
  EXPECT_EQ(ZEMAPI_SetVideoProcAmp(handle(), 0, 256, 2), kInvalid);
  EXPECT_EQ(ZEMAPI_SetVideoProcAmp(handle(), 0, 200, 1), kInvalid) << "never automatic";
  EXPECT_EQ(ZEMAPI_SetVideoProcAmp(handle(), 77, 1, 2), zem::testing::kUnknownControl);
  EXPECT_EQ(ZEMAPI_SetCameraControl(handle(), 4, -9, 2), 0);
  EXPECT_EQ(ZEMAPI_GetCameraControl(handle(), 4, &value, &flags), 0);
  EXPECT_EQ(value, -9);
  EXPECT_EQ(flags, 2);
}

TEST_F(SimulatedControlsTest, FailureOfEachCallReleasesTheInterface) {
  handle();
  ZemLong numbers[5] = {99, 99, 99, 99, 99};
  const std::vector<std::function<ZemResult()>> calls = {
      [&] { return ZEMAPI_GetVideoProcAmp(handle(), 0, &numbers[0], &numbers[1]); },
      [&] { return ZEMAPI_SetVideoProcAmp(handle(), 0, 1, 2); },
      [&] {
        return ZEMAPI_GetVideoProcAmpRange(handle(), 0, &numbers[0], &numbers[1], &numbers[2],
                                           &numbers[3], &numbers[4]);
      },
      [&] { return ZEMAPI_GetCameraControl(handle(), 4, &numbers[0], &numbers[1]); },
      [&] { return ZEMAPI_SetCameraControl(handle(), 4, -5, 2); },
      [&] {
        return ZEMAPI_GetCameraControlRange(handle(), 4, &numbers[0], &numbers[1], &numbers[2],
                                            &numbers[3], &numbers[4]);
      },
  };
  for (const auto& call : calls) {
    gate.RefuseCall(0);
    EXPECT_EQ(call(), ZEM_E_DEVICE_REFUSED) << "the request for the interface";
    gate.RefuseCall(1);
    EXPECT_EQ(call(), RecordingGate::kRefusal) << "the call on it";
    EXPECT_EQ(numbers[0], 99);
    EXPECT_EQ(zem::simulator::liveComObjects, 1) << "the handle's filter";
  }
}

TEST_F(SimulatedControlsTest, NullPointersAreThePlatformsToRefuse) {
  ZemLong number = 99;
  ZemLong* const some = &number;
  EXPECT_EQ(ZEMAPI_GetVideoProcAmp(handle(), 0, nullptr, some), E_POINTER);
  EXPECT_EQ(ZEMAPI_GetVideoProcAmp(handle(), 0, some, nullptr), E_POINTER);
  EXPECT_EQ(ZEMAPI_GetCameraControl(handle(), 4, nullptr, some), E_POINTER);
  EXPECT_EQ(ZEMAPI_GetCameraControl(handle(), 4, some, nullptr), E_POINTER);
  for (std::size_t missing = 0; missing < 5; ++missing) {
    std::array<ZemLong*, 5> range = {some, some, some, some, some};
    range[missing] = nullptr;
    EXPECT_EQ(
        ZEMAPI_GetVideoProcAmpRange(handle(), 0, range[0], range[1], range[2], range[3], range[4]),
        E_POINTER);
    EXPECT_EQ(
        ZEMAPI_GetCameraControlRange(handle(), 4, range[0], range[1], range[2], range[3], range[4]),
        E_POINTER);
  }
  EXPECT_EQ(number, 99);
  EXPECT_EQ(zem::simulator::liveComObjects, 1) << "the handle's filter";
}

TEST_F(SimulatedControlsTest, UnpluggedCamera) {
  handle();
  camera().Unplug();
  EXPECT_EQ(ZEMAPI_SetVideoProcAmp(handle(), 0, 1, 2), zem::testing::kUnpluggedTransfer);
}

// ---- The node interface ----

class ProcessingNodeTest : public DeviceTest {
 protected:
  ~ProcessingNodeTest() override { Release(); }

  void Release() {
    if (node != nullptr) {
      static_cast<IUnknown*>(node)->Release();
      node = nullptr;
    }
  }

  void* node = nullptr;
};

TEST_F(ProcessingNodeTest, FirstNodeThatGivesTheInterface) {
  camera().AddProcessingNode();
  camera().AddProcessingNode();
  EXPECT_EQ(ZEMAPI_Get_IVideoProcAmp_Interface(handle(), &node), 0);
  EXPECT_NE(node, nullptr);
  EXPECT_EQ(gate.calls, (Lines{"QueryInterface(IKsTopologyInfo)", "get_NumNodes",
                               "CreateNodeInstance", "CreateNodeInstance", "CreateNodeInstance"}))
      << "the plain node, the vendor unit, the processing unit, and no further";
  EXPECT_EQ(zem::simulator::liveComObjects, 2) << "the handle's filter and the caller's interface";
}

TEST_F(ProcessingNodeTest, WithoutSuchANodeTheLastNodesFailure) {
  EXPECT_EQ(ZEMAPI_Get_IVideoProcAmp_Interface(handle(), &node), E_NOINTERFACE);
  EXPECT_EQ(node, nullptr);
}

TEST_F(ProcessingNodeTest, NullHandleAndNullPointer) {
  EXPECT_EQ(ZEMAPI_Get_IVideoProcAmp_Interface(nullptr, &node), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ZEMAPI_Get_IVideoProcAmp_Interface(nullptr, nullptr), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ZEMAPI_Get_IVideoProcAmp_Interface(handle(), nullptr), ZEM_E_REFUSED);
}

TEST_F(ProcessingNodeTest, FailureOfEachPlatformCall) {
  camera().AddProcessingNode();
  handle();
  for (std::size_t index = 0; index < 5; ++index) {
    SCOPED_TRACE(index);
    gate.RefuseCall(index);
    const ZemResult result = ZEMAPI_Get_IVideoProcAmp_Interface(handle(), &node);
    const bool found = index == 2 || index == 3;
    EXPECT_EQ(result, found ? 0 : RecordingGate::kRefusal) << "nodes before the right one may fail";
    EXPECT_EQ(node != nullptr, found);
    Release();
    EXPECT_EQ(zem::simulator::liveComObjects, 1);
  }
}

// A camera whose nodes refuse and leave the caller's pointer as it is, unless told otherwise.
class RefusingCamera : public zem::testing::BareCamera {
 public:
  HRESULT Request(const KSP_NODE& /*request*/, void* /*data*/, ULONG /*length*/,
                  ULONG* /*bytesReturned*/) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE CreateNodeInstance(DWORD /*node*/, REFIID iid, void** object) override {
    EXPECT_TRUE(iid == zem::IID_IVideoProcAmp);
    ++asked;
    if (leftBehind != nullptr) {
      *object = leftBehind;
    }
    return E_FAIL;
  }
  HRESULT STDMETHODCALLTYPE get_NumNodes(DWORD* count) override {
    return static_cast<void>(BareCamera::get_NumNodes(count)), countResult;
  }
  int asked = 0;
  void* leftBehind = nullptr;
  HRESULT countResult = S_OK;
};

TEST(ProcessingNodePointerTest, PointerIsNotClearedFirst) {
  zem::platform::simulated::Reset();
  RefusingCamera camera;
  void* handle = nullptr;
  ASSERT_EQ(ZEMAPI_OpenDeviceBySourceFilter(&camera, &handle), 0);
  void* node = &camera;
  EXPECT_EQ(ZEMAPI_Get_IVideoProcAmp_Interface(handle, &node), 0) << "no nodes";
  EXPECT_EQ(node, &camera);
  camera.countResult = S_FALSE;
  EXPECT_EQ(ZEMAPI_Get_IVideoProcAmp_Interface(handle, &node), 0) << "no nodes, positively";
  camera.nodeCount = 3;
  EXPECT_EQ(ZEMAPI_Get_IVideoProcAmp_Interface(handle, &node), E_FAIL);
  EXPECT_EQ(node, &camera);
  EXPECT_EQ(camera.asked, 1) << "a pointer that is set already ends the walk";
  node = nullptr;
  EXPECT_EQ(ZEMAPI_Get_IVideoProcAmp_Interface(handle, &node), E_FAIL);
  EXPECT_EQ(camera.asked, 4);
  camera.leftBehind = &camera;
  EXPECT_EQ(ZEMAPI_Get_IVideoProcAmp_Interface(handle, &node), E_FAIL);
  EXPECT_EQ(node, &camera);
  EXPECT_EQ(camera.asked, 5) << "a pointer ends the walk, whatever the result that came with it";
  ZEMAPI_CloseDevice(&handle);
  EXPECT_EQ(camera.references, 1);
}

TEST(GrantedWithoutAPointerTest, IsAnInterfaceThatIsMissing) {
  zem::platform::simulated::Reset();
  ControlCamera camera;
  camera.grant = false;
  void* handle = nullptr;
  ASSERT_EQ(ZEMAPI_OpenDeviceBySourceFilter(&camera, &handle), 0);
  constexpr auto kNoInterface = static_cast<ZemResult>(0x80004002U);
  void* node = &camera;
  EXPECT_EQ(ZEMAPI_Get_IVideoProcAmp_Interface(handle, &node), kNoInterface) << "the topology";
  EXPECT_EQ(node, &camera);
  EXPECT_EQ(ZEMAPI_AudioSetVolume(&camera, 50), kNoInterface) << "the mixer";
  ZEMAPI_CloseDevice(&handle);
}

}  // namespace
