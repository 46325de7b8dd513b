// Opening by display name, by device path, by filter, and the search for the vendor unit.
#include <array>
#include <functional>

#include "device/device_handle.h"
#include "device/discovery.h"
#include "platform/com_ptr.h"
#include "platform/memory.h"
#include "simulator/com_camera.h"
#include "tests/support/device_test.h"
#include "tests/support/memory_limit.h"

namespace {

using zem::simulator::Camera;
using zem::testing::DeviceTest;
using zem::testing::DisplayName;
using zem::testing::kNothingDetected;
using zem::testing::RecordingGate;
using zem::testing::WideLines;

std::shared_ptr<Camera> CameraWithVendorUnitAt(std::size_t node, std::size_t nodeCount) {
  auto camera = std::make_shared<Camera>();
  for (std::size_t index = 0; index < nodeCount; ++index) {
    if (index == node) {
      camera->AddUnit(std::make_unique<zem::testing::ScriptedUnit>(zem::VendorXu));
    } else {
      camera->AddPlainNode();
    }
  }
  return camera;
}

// The two exports that open by a text run through the same cases.
struct ByText {
  const char* name;
  ZemResult (*open)(const wchar_t* text, void** handle);
};

void PrintTo(const ByText& byText, std::ostream* out) { *out << byText.name; }

class OpenByTextTest : public DeviceTest, public ::testing::WithParamInterface<ByText> {
 protected:
  OpenByTextTest() { ListNothing(); }

  zem::simulator::ListedDevice& ListCamera(const std::wstring& text,
                                           const std::shared_ptr<Camera>& camera) {
    const bool byPath = GetParam().open == &ZEMAPI_OpenDeviceByDevPath;
    return List(byPath ? L"name" : text, camera, byPath ? std::optional(text) : std::nullopt);
  }

  ZemResult Open(const std::wstring& text, void** handle) {
    return GetParam().open(text.c_str(), handle);
  }

  // Opens, expects no handle, and gives the result.
  ZemResult FailToOpen(const std::wstring& text) {
    void* handle = this;
    const ZemResult result = Open(text, &handle);
    EXPECT_EQ(handle, nullptr);
    return result;
  }
};

TEST_P(OpenByTextTest, ComparesTheWholeTextInAnyCase) {
  ListCamera(L"Camera\\ONE#global", CameraWithVendorUnitAt(1, 2));
  void* handle = nullptr;
  EXPECT_EQ(Open(L"cAMERA\\one#GLOBAL", &handle), 0);
  EXPECT_NE(handle, nullptr);
  EXPECT_EQ(system().ComBalance(), 1) << "the search's, until the handle is closed";
  ZEMAPI_CloseDevice(&handle);
  EXPECT_EQ(FailToOpen(L"Camera\\ONE"), ZEM_E_FAIL);
  EXPECT_EQ(FailToOpen(L"Camera\\ONE#global2"), ZEM_E_FAIL);
  EXPECT_EQ(FailToOpen(L""), ZEM_E_FAIL);
}

TEST_P(OpenByTextTest, FirstOfTwoEqualOnesIsTaken) {
  ListCamera(L"other", CameraWithVendorUnitAt(0, 1));
  ListCamera(L"same", CameraWithVendorUnitAt(1, 2));
  ListCamera(L"same", CameraWithVendorUnitAt(5, 2));
  void* handle = nullptr;
  EXPECT_EQ(Open(L"same", &handle), 0);
  ZEMAPI_CloseDevice(&handle);
}

TEST_P(OpenByTextTest, CameraWithoutVendorUnitGivesOneAndBalancesCom) {
  ListCamera(L"camera", CameraWithVendorUnitAt(9, 2));
  EXPECT_EQ(FailToOpen(L"camera"), 1);
  EXPECT_EQ(system().ComBalance(), 0);
}

TEST_P(OpenByTextTest, FailureOfTheCheckAlsoGivesOne) {
  ListCamera(L"camera", CameraWithVendorUnitAt(1, 2));
  gate.RefuseAll("QueryInterface(IKsTopologyInfo)");
  EXPECT_EQ(FailToOpen(L"camera"), 1);
  EXPECT_EQ(system().ComBalance(), 0);
}

TEST_P(OpenByTextTest, NoSuchDeviceLeavesComInitialised) {
  ListCamera(L"camera", CameraWithVendorUnitAt(1, 2));
  EXPECT_EQ(FailToOpen(L"another"), ZEM_E_FAIL);
  EXPECT_EQ(system().comInitializations, 1);
  EXPECT_EQ(system().comUninitializations, 0);
  EXPECT_EQ(TakeDebuggerLines(), WideLines());
}

TEST_P(OpenByTextTest, EmptyCategoryIsReported) {
  EXPECT_EQ(FailToOpen(L"camera"), ZEM_E_FAIL);
  EXPECT_EQ(system().ComBalance(), 1);
  EXPECT_EQ(TakeDebuggerLines(), kNothingDetected);
}

TEST_P(OpenByTextTest, NullTextIsLikeANameThatNoDeviceHas) {
  ListCamera(L"camera", CameraWithVendorUnitAt(1, 2));
  void* handle = this;
  EXPECT_EQ(GetParam().open(nullptr, &handle), ZEM_E_FAIL);
  EXPECT_EQ(handle, nullptr);
  EXPECT_EQ(system().comInitializations, 0);
}

TEST_P(OpenByTextTest, FailureOfEachEnumeratingCallIsReturnedAndComStays) {
  ListCamera(L"camera", CameraWithVendorUnitAt(1, 2));
  for (const char* const call :
       {"CreateDeviceEnumerator", "CreateClassEnumerator", "Next", "BindToObject"}) {
    SCOPED_TRACE(call);
    RecordingGate fresh;
    std::swap(gate, fresh);
    gate.RefuseAll(call);
    const int before = system().ComBalance();
    EXPECT_EQ(FailToOpen(L"camera"), RecordingGate::kRefusal);
    EXPECT_EQ(system().ComBalance() - before, 1);
    EXPECT_EQ(zem::simulator::liveComObjects, 0);
  }
}

TEST_P(OpenByTextTest, PositiveResultsAreNoFailures) {
  ListCamera(L"camera", CameraWithVendorUnitAt(1, 2));
  gate.AnswerEverything(7);
  void* handle = nullptr;
  EXPECT_EQ(Open(L"camera", &handle), 0);
  EXPECT_NE(handle, nullptr);
  EXPECT_EQ(system().ComBalance(), 1);
  ZEMAPI_CloseDevice(&handle);
}

TEST_P(OpenByTextTest, FilterOfAFailedBindingIsGivenBack) {
  ListCamera(L"camera", CameraWithVendorUnitAt(1, 2)).bindResult = E_NOTIMPL;
  EXPECT_EQ(FailToOpen(L"camera"), E_NOTIMPL);
  EXPECT_EQ(boundFilters.size(), 1U);
  EXPECT_EQ(zem::simulator::liveComObjects, 0);
}

TEST_P(OpenByTextTest, BindingWithoutAFilterIsNoDevice) {
  ListCamera(L"camera", CameraWithVendorUnitAt(1, 2)).bind = [] { return nullptr; };
  EXPECT_EQ(FailToOpen(L"camera"), ZEM_E_FAIL);
}

TEST_P(OpenByTextTest, WithoutMemoryForTheHandleAllIsGivenBack) {
  ListCamera(L"camera", CameraWithVendorUnitAt(1, 2));
  const zem::testing::MemoryExhausted exhausted;
  EXPECT_EQ(FailToOpen(L"camera"), ZEM_E_FAIL);
  EXPECT_EQ(system().comInitializations, 1);
  EXPECT_EQ(system().ComBalance(), 0);
  EXPECT_EQ(zem::simulator::liveComObjects, 0);
}

INSTANTIATE_TEST_SUITE_P(Exports, OpenByTextTest,
                         ::testing::Values(ByText{"Name", &ZEMAPI_OpenDeviceByPath},
                                           ByText{"DevicePath", &ZEMAPI_OpenDeviceByDevPath}),
                         [](const auto& parameters) { return parameters.param.name; });

using OpenByNameTest = DeviceTest;

TEST_F(OpenByNameTest, NamesOver255CharactersAreComparedByTheirFirst255) {
  const std::wstring start(255, L'n');
  ListNothing();
  List(start + L"tail", CameraWithVendorUnitAt(1, 2));
  void* handle = nullptr;
  EXPECT_EQ(ZEMAPI_OpenDeviceByPath((start + L"another tail").c_str(), &handle), 0);
  ZEMAPI_CloseDevice(&handle);
  EXPECT_EQ(ZEMAPI_OpenDeviceByPath(start.substr(1).c_str(), &handle), ZEM_E_FAIL);
}

TEST_F(OpenByNameTest, DevicesWhoseNameCannotBeReadArePassedOver) {
  gate.RefuseAll("GetDisplayName");
  void* handle = nullptr;
  EXPECT_EQ(ZEMAPI_OpenDeviceByPath(DisplayName(0x5A45, 0x8C00).c_str(), &handle), ZEM_E_FAIL);
}

TEST_F(OpenByNameTest, NameThatIsNullIsNone) {
  ListNothing();
  List(L"", CameraWithVendorUnitAt(1, 2)).hasNullName = true;
  void* handle = this;
  EXPECT_EQ(ZEMAPI_OpenDeviceByPath(L"", &handle), ZEM_E_FAIL);
  EXPECT_EQ(handle, nullptr);
  EXPECT_EQ(boundFilters.size(), 0U);
}

TEST_F(OpenByNameTest, AnotherCategoryIsSearchedWhenGiven) {
  constexpr GUID kOther = {1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
  List(L"microphone", CameraWithVendorUnitAt(1, 2), std::nullopt, kOther);
  zem::ComPtr<IBaseFilter> filter;
  EXPECT_EQ(zem::FindDeviceByDisplayName(filter.Receive(), L"microphone", nullptr), ZEM_E_FAIL);
  EXPECT_EQ(zem::FindDeviceByDisplayName(filter.Receive(), L"microphone", &kOther), 0);
  constexpr GUID kEmpty = {9, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
  EXPECT_EQ(zem::FindDeviceByDisplayName(filter.Receive(), L"microphone", &kEmpty), ZEM_E_FAIL);
  EXPECT_EQ(TakeDebuggerLines(), kNothingDetected) << "the text speaks of video all the same";
}

TEST_F(OpenByNameTest, FailedBindingSetsTheOutputToNull) {
  gate.RefuseAll("BindToObject");
  auto* filter = reinterpret_cast<IBaseFilter*>(this);
  EXPECT_EQ(zem::FindDeviceByDisplayName(&filter, DisplayName(0x5A45, 0x8C00).c_str(), nullptr),
            RecordingGate::kRefusal);
  EXPECT_EQ(filter, nullptr);
}

using OpenByDevicePathTest = DeviceTest;

TEST_F(OpenByDevicePathTest, DevicesWithoutBagOrPropertyArePassedOver) {
  ListNothing();
  List(L"a", CameraWithVendorUnitAt(1, 2));
  List(L"b", CameraWithVendorUnitAt(1, 2), L"path");
  void* handle = nullptr;
  EXPECT_EQ(ZEMAPI_OpenDeviceByDevPath(L"path", &handle), 0);
  ZEMAPI_CloseDevice(&handle);
  for (const char* const call : {"BindToStorage", "Read"}) {
    SCOPED_TRACE(call);
    gate.RefuseAll(call);
    EXPECT_EQ(ZEMAPI_OpenDeviceByDevPath(L"path", &handle), ZEM_E_FAIL);
  }
}

TEST_F(OpenByDevicePathTest, ABagThatIsGrantedWithoutAPointerIsNone) {
  ListNothing();
  List(L"a", CameraWithVendorUnitAt(1, 2), L"path").hasNullBag = true;
  void* handle = nullptr;
  EXPECT_EQ(ZEMAPI_OpenDeviceByDevPath(L"path", &handle), ZEM_E_FAIL);
  List(L"b", CameraWithVendorUnitAt(1, 2), L"path");
  EXPECT_EQ(ZEMAPI_OpenDeviceByDevPath(L"path", &handle), 0) << "the device is passed over";
  ZEMAPI_CloseDevice(&handle);
}

TEST_F(OpenByDevicePathTest, PathThatIsNoTextOrNullIsNone) {
  std::wstring text = L"path";
  constexpr VARTYPE kNumber = 3;
  for (const VARIANT& odd : {VARIANT{kNumber, text.data()}, VARIANT{VT_BSTR, nullptr}}) {
    ListNothing();
    List(L"a", CameraWithVendorUnitAt(1, 2)).oddDevicePath = odd;
    void* handle = nullptr;
    EXPECT_EQ(ZEMAPI_OpenDeviceByDevPath(L"path", &handle), ZEM_E_FAIL);
    EXPECT_EQ(ZEMAPI_OpenDeviceByDevPath(L"", &handle), ZEM_E_FAIL);
    List(L"b", CameraWithVendorUnitAt(1, 2), L"path");
    EXPECT_EQ(ZEMAPI_OpenDeviceByDevPath(L"path", &handle), 0) << "the device is passed over";
    ZEMAPI_CloseDevice(&handle);
  }
}

TEST_F(OpenByDevicePathTest, BagIsReleasedBeforeTheMatchIsBound) {
  int liveWhenBound = -1;
  system().createDeviceEnumerator = [&](ICreateDevEnum** enumerator) {
    *enumerator = zem::simulator::MakeDeviceEnumerator(
        {{L"a", L"path", zem::CLSID_VideoInputDeviceCategory,
          [&]() -> IBaseFilter* {
            liveWhenBound = zem::simulator::liveComObjects;
            return zem::simulator::MakeCameraFilter(CameraWithVendorUnitAt(1, 2), nullptr);
          }}},
        nullptr);
    return S_OK;
  };
  void* handle = nullptr;
  EXPECT_EQ(ZEMAPI_OpenDeviceByDevPath(L"path", &handle), 0);
  EXPECT_EQ(liveWhenBound, 2) << "the category's enumerator and the moniker";
  ZEMAPI_CloseDevice(&handle);
}

class OpenZemDeviceTest : public DeviceTest {
 protected:
  OpenZemDeviceTest() { ListNothing(); }

  bool Opens() {
    void* handle = nullptr;
    const ZemResult result = ZEMAPI_OpenZemDevice(&handle);
    EXPECT_EQ(result, handle != nullptr ? 0 : ZEM_E_FAIL);
    ZEMAPI_CloseDevice(&handle);
    return result == 0;
  }
};

TEST_F(OpenZemDeviceTest, VendorUnitBehindNodeZeroIsTaken) {
  List(L"a", CameraWithVendorUnitAt(1, 2));
  EXPECT_TRUE(Opens());
}

TEST_F(OpenZemDeviceTest, VendorUnitAtNodeZeroAndNoNodesArePassedOver) {
  List(L"a", CameraWithVendorUnitAt(0, 2));
  List(L"b", CameraWithVendorUnitAt(0, 0));
  EXPECT_FALSE(Opens());
  EXPECT_EQ(zem::simulator::liveComObjects, 0) << "passed over, released";
  List(L"c", CameraWithVendorUnitAt(1, 2));
  EXPECT_TRUE(Opens());
}

TEST_F(OpenZemDeviceTest, NodesWithoutTheUnitAreTaken) {
  List(L"a", CameraWithVendorUnitAt(9, 2));
  EXPECT_TRUE(Opens());
}

TEST_F(OpenZemDeviceTest, UnreadableTopologyIsTaken) {
  List(L"a", CameraWithVendorUnitAt(0, 0));
  gate.RefuseAll("QueryInterface(IKsTopologyInfo)");
  EXPECT_TRUE(Opens());
}

TEST_F(OpenZemDeviceTest, FilterIsTakenWhateverTheResultOfTheBinding) {
  for (const HRESULT result : {E_NOTIMPL, HRESULT{7}}) {
    ListNothing();
    List(L"a", CameraWithVendorUnitAt(1, 2)).bindResult = result;
    EXPECT_TRUE(Opens());
  }
}

TEST_F(OpenZemDeviceTest, FilterOfAFailedBindingIsGivenBackWhenItsNodeIsZero) {
  List(L"a", CameraWithVendorUnitAt(0, 1)).bindResult = E_NOTIMPL;
  EXPECT_FALSE(Opens());
  EXPECT_EQ(boundFilters.size(), 1U);
  EXPECT_EQ(zem::simulator::liveComObjects, 0);
}

TEST_F(OpenZemDeviceTest, DeviceThatGivesNoFilterIsPassedOver) {
  List(L"a", CameraWithVendorUnitAt(1, 2)).bind = [] { return nullptr; };
  EXPECT_FALSE(Opens()) << "bound without a filter";
  List(L"b", CameraWithVendorUnitAt(1, 2));
  EXPECT_TRUE(Opens());
  gate.RefuseAll("BindToObject");
  EXPECT_FALSE(Opens()) << "not bound at all";
}

TEST_F(OpenZemDeviceTest, PositiveResultsAreNoFailures) {
  List(L"a", CameraWithVendorUnitAt(1, 2));
  gate.AnswerEverything(7);
  EXPECT_TRUE(Opens());
}

TEST_F(OpenZemDeviceTest, WithoutMemoryForTheHandleAllIsGivenBack) {
  List(L"a", CameraWithVendorUnitAt(1, 2));
  const zem::testing::MemoryExhausted exhausted;
  EXPECT_FALSE(Opens());
  EXPECT_EQ(system().comInitializations, 1);
  EXPECT_EQ(system().ComBalance(), 0);
  EXPECT_EQ(zem::simulator::liveComObjects, 0);
}

TEST_F(OpenZemDeviceTest, EmptyCategoryIsReported) {
  EXPECT_FALSE(Opens());
  EXPECT_EQ(TakeDebuggerLines(), kNothingDetected);
  EXPECT_EQ(system().comUninitializations, 0);
}

TEST_F(OpenZemDeviceTest, FailuresAreReturnedAndComStays) {
  List(L"a", CameraWithVendorUnitAt(1, 2));
  for (const char* const call : {"CreateDeviceEnumerator", "CreateClassEnumerator", "Next"}) {
    SCOPED_TRACE(call);
    RecordingGate fresh;
    std::swap(gate, fresh);
    gate.RefuseAll(call);
    const int before = system().ComBalance();
    void* handle = this;
    EXPECT_EQ(ZEMAPI_OpenZemDevice(&handle), RecordingGate::kRefusal);
    EXPECT_EQ(handle, this);
    EXPECT_EQ(system().ComBalance() - before, 1);
    EXPECT_EQ(zem::simulator::liveComObjects, 0);
  }
}

using OpenBySourceFilterTest = DeviceTest;

TEST_F(OpenBySourceFilterTest, TakesAReferenceOfItsOwnAndInitialisesNothing) {
  const auto filter = zem::ComPtr<IBaseFilter>::Adopt(
      zem::simulator::MakeCameraFilter(CameraWithVendorUnitAt(1, 2), nullptr));
  void* handle = nullptr;
  EXPECT_EQ(ZEMAPI_OpenDeviceBySourceFilter(filter.get(), &handle), 0);
  EXPECT_EQ(filter->AddRef(), 3U);
  filter->Release();
  EXPECT_EQ(system().comInitializations, 0);
  ZEMAPI_CloseDevice(&handle);
  EXPECT_EQ(system().comUninitializations, 1) << "closing takes one back that was never made";
  EXPECT_EQ(filter->AddRef(), 2U);
  filter->Release();
}

TEST_F(OpenBySourceFilterTest, WithoutMemoryForTheHandleTheReferenceIsGivenBackAndComLeftAlone) {
  const auto filter = zem::ComPtr<IBaseFilter>::Adopt(
      zem::simulator::MakeCameraFilter(CameraWithVendorUnitAt(1, 2), nullptr));
  const zem::testing::MemoryExhausted exhausted;
  void* handle = this;
  EXPECT_EQ(ZEMAPI_OpenDeviceBySourceFilter(filter.get(), &handle), ZEM_E_FAIL);
  EXPECT_EQ(handle, nullptr);
  EXPECT_EQ(filter->AddRef(), 2U);
  filter->Release();
  EXPECT_EQ(system().comInitializations, 0);
  EXPECT_EQ(system().comUninitializations, 0);
}

TEST_F(OpenBySourceFilterTest, NullFilter) {
  void* handle = this;
  EXPECT_EQ(ZEMAPI_OpenDeviceBySourceFilter(nullptr, &handle), ZEM_E_FAIL);
  EXPECT_EQ(handle, nullptr);
}

TEST_F(OpenBySourceFilterTest, HandleIsAFrameListThatIsNullAndTheFilter) {
  const auto filter = zem::ComPtr<IBaseFilter>::Adopt(
      zem::simulator::MakeCameraFilter(CameraWithVendorUnitAt(1, 2), nullptr));
  void* handle = nullptr;
  ASSERT_EQ(ZEMAPI_OpenDeviceBySourceFilter(filter.get(), &handle), 0);
  void* fields[2] = {};
  static_assert(sizeof(zem::DeviceHandle) == sizeof(fields));
  std::memcpy(fields, handle, sizeof(fields));
  EXPECT_EQ(fields[0], nullptr);
  EXPECT_EQ(fields[1], filter.get());
  // Closing frees the list; the leak check of the sanitizers would tell.
  static_cast<zem::DeviceHandle*>(handle)->frameList.reset(
      reinterpret_cast<H264FrameList*>(zem::AllocateBytes(100).release()));
  ZEMAPI_CloseDevice(&handle);
}

using SerialNumberTest = DeviceTest;

TEST_F(SerialNumberTest, EmptiesTheBufferTakesTheInvalidParameterPathAndReturns16) {
  char serial[17] = "abcdefghijklmnop";
  EXPECT_EQ(ZEMAPI_GetSerialNumber(nullptr, serial), 16);
  EXPECT_EQ(serial[0], '\0');
  EXPECT_EQ(std::string(serial + 1), "bcdefghijklmnop");
  EXPECT_EQ(system().invalidParameterCalls, 1);
  EXPECT_EQ(ZEMAPI_GetSerialNumber(nullptr, nullptr), ZEM_E_REFUSED);
}

}  // namespace
