// Opening by USB ids: the search through the video-input devices, COM, references.
#include <array>

#include "device/discovery.h"
#include "platform/com_ptr.h"
#include "tests/support/device_test.h"
#include "tests/support/memory_limit.h"

namespace {

using zem::testing::DeviceTest;
using zem::testing::DisplayName;
using zem::testing::Lines;
using zem::testing::RecordingGate;
using zem::testing::WideLines;

class OpenByIdsTest : public DeviceTest {
 protected:
  // Opens with the default ids, expects a failure, and that the handle is untouched.
  ZemResult FailToOpen(unsigned index = 0) {
    void* handle = this;
    const ZemResult result = ZEMAPI_OpenDevice(index, &handle);
    EXPECT_EQ(handle, this);
    return result;
  }

  // Whether a device of this display name is found by the default ids.
  bool Finds(const std::wstring& displayName) {
    ListNothing();
    List(displayName, std::make_shared<zem::simulator::Camera>());
    void* handle = nullptr;
    const bool found = ZEMAPI_OpenDevice(0, &handle) == 0;
    ZEMAPI_CloseDevice(&handle);
    return found;
  }
};

TEST_F(OpenByIdsTest, OpenLeavesComInitialisedOnceAndCloseTakesItBack) {
  void* handle = nullptr;
  ASSERT_EQ(ZEMAPI_OpenDevice(0, &handle), 0);
  EXPECT_NE(handle, nullptr);
  EXPECT_EQ(system().comInitializations, 1);
  EXPECT_EQ(system().comUninitializations, 0);
  ZEMAPI_CloseDevice(&handle);
  EXPECT_EQ(handle, nullptr);
  EXPECT_EQ(system().ComBalance(), 0);
  EXPECT_EQ(TakeDebuggerLines(), WideLines());
}

TEST_F(OpenByIdsTest, ClosingANullHandleDoesNothing) {
  void* handle = nullptr;
  ZEMAPI_CloseDevice(&handle);
  ZEMAPI_CloseDevice(nullptr);
  EXPECT_EQ(system().comUninitializations, 0);
}

TEST_F(OpenByIdsTest, WithoutSettingsFileVendorsIdAndProduct8C00) {
  EXPECT_TRUE(Finds(DisplayName(0x5A45, 0x8C00)));
  EXPECT_FALSE(Finds(DisplayName(0x5A45, 0x8C01)));
}

TEST_F(OpenByIdsTest, SettingsFileChoosesTheDefaultCamera) {
  system().profileFiles[L"C:\\Host\\zem_setting.ini"] = L"[AP]\nDeviceVid=1\nDevicePid=2\n";
  EXPECT_TRUE(Finds(DisplayName(1, 2)));
  EXPECT_FALSE(Finds(DisplayName(0x5A45, 0x8C00)));
}

TEST_F(OpenByIdsTest, OpenDeviceExDoesNotReadTheSettingsFile) {
  List(DisplayName(0x12, 0xABC), std::make_shared<zem::simulator::Camera>());
  void* handle = nullptr;
  EXPECT_EQ(ZEMAPI_OpenDeviceEx(0, &handle, 0x12, 0xABC), 0) << "at least four digits, lower case";
  ZEMAPI_CloseDevice(&handle);
  EXPECT_EQ(system().profileReads, WideLines());
}

TEST_F(OpenByIdsTest, IdsOfMoreThanFourDigitsAreSearchedWhole) {
  List(L"x#vid_12345&pid_abcde&mi_00", std::make_shared<zem::simulator::Camera>());
  void* handle = nullptr;
  EXPECT_EQ(ZEMAPI_OpenDeviceEx(0, &handle, 0x12345, 0xABCDE), 0);
  ZEMAPI_CloseDevice(&handle);
}

TEST_F(OpenByIdsTest, NameThatEndsWithThePatternIsNotFound) {
  EXPECT_FALSE(Finds(L"usb#vid_5a45&pid_8c00"));
  EXPECT_TRUE(Finds(L"usb#vid_5a45&pid_8c00&"));
}

TEST_F(OpenByIdsTest, NameNoLongerThanThePatternIsNotFound) {
  EXPECT_FALSE(Finds(L"vid_5a45&pid_8c00"));
  EXPECT_FALSE(Finds(L"vid_5a45"));
  EXPECT_FALSE(Finds(L""));
  EXPECT_TRUE(Finds(L"vid_5a45&pid_8c00x"));
}

TEST_F(OpenByIdsTest, UpperCaseHexadecimalIsNotFound) {
  EXPECT_FALSE(Finds(L"usb#VID_5A45&PID_8C00&mi_00"));
  EXPECT_FALSE(Finds(L"usb#vid_5A45&pid_8c00&mi_00"));
}

TEST_F(OpenByIdsTest, LongNamesAreSearchedInTheirFirst255Characters) {
  const std::wstring pattern = L"vid_5a45&pid_8c00";
  EXPECT_TRUE(Finds(std::wstring(255 - 1 - pattern.size(), L'a') + pattern + L"#" +
                    std::wstring(100, L'b')));
  EXPECT_FALSE(Finds(std::wstring(255 - pattern.size(), L'a') + pattern + std::wstring(100, L'b')))
      << "there the pattern ends the part that is looked at";
}

TEST_F(OpenByIdsTest, IndexCountsMatchesOnly) {
  auto second = std::make_shared<zem::simulator::Camera>();
  List(DisplayName(1, 2), std::make_shared<zem::simulator::Camera>());
  List(DisplayName(0x5A45, 0x8C00, L"2"), second);
  void* handle = nullptr;
  ASSERT_EQ(ZEMAPI_OpenDevice(1, &handle), 0);
  EXPECT_EQ(ZEMAPI_UvcCheckXuGuid(handle, &zem::VendorXu), 0)
      << "the second camera has no node, the first one has the unit at node 1";
  unsigned char data = 0;
  EXPECT_EQ(ZEMAPI_ZemExtSet(handle, 1, &data, 1, nullptr), zem::testing::kUnknownControl);
  EXPECT_EQ(TakeDebuggerLines(),
            WideLines{zem::testing::SetLine(zem::testing::kUnknownControl, 1, 0)});
  ZEMAPI_CloseDevice(&handle);
  // Exactly one reference, the one that is kept.
  EXPECT_EQ(boundFilters[0]->Release(), 0U);
}

TEST_F(OpenByIdsTest, SkippedMatchKeepsItsReferenceInTheOutputOfAFailedSearch) {
  IBaseFilter* filter = nullptr;
  EXPECT_EQ(zem::FindCaptureDevice(&filter, 0x5A45, 0x8C00, 1), ZEM_E_FAIL);
  ASSERT_NE(filter, nullptr);
  EXPECT_EQ(filter->Release(), 0U) << "exactly one reference, the one that is kept";
  EXPECT_EQ(system().ComBalance(), 0);
}

TEST_F(OpenByIdsTest, NoMatchAndTooFewMatches) {
  EXPECT_EQ(FailToOpen(1), ZEM_E_FAIL);
  EXPECT_EQ(system().ComBalance(), 0);
  EXPECT_EQ(boundFilters[0]->Release(), 0U) << "the skipped match keeps its reference";
  ListNothing();
  List(DisplayName(1, 2), std::make_shared<zem::simulator::Camera>());
  EXPECT_EQ(FailToOpen(), ZEM_E_FAIL);
  EXPECT_EQ(system().ComBalance(), 0);
  EXPECT_EQ(TakeDebuggerLines(), WideLines());
}

TEST_F(OpenByIdsTest, EmptyCategoryFailsInSilence) {
  ListNothing();
  EXPECT_EQ(FailToOpen(), ZEM_E_FAIL);
  EXPECT_EQ(system().comInitializations, 1);
  EXPECT_EQ(system().comUninitializations, 1);
  EXPECT_EQ(TakeDebuggerLines(), WideLines());
}

TEST_F(OpenByIdsTest, FailureOfEachPlatformCall) {
  struct Case {
    const char* call;
    ZemResult result;
    int comBalance;
  };
  // A camera that does not match comes first, so that the second one's calls are seen too.
  ListNothing();
  List(DisplayName(1, 2), std::make_shared<zem::simulator::Camera>());
  List(DisplayName(0x5A45, 0x8C00), std::make_shared<zem::simulator::Camera>());
  const std::array<Case, 7> cases = {{
      {"CreateDeviceEnumerator", RecordingGate::kRefusal, 0},
      {"CreateClassEnumerator", RecordingGate::kRefusal, 0},
      {"Next", RecordingGate::kRefusal, 0},
      {"GetDisplayName", 0, 1},  // the first device is passed over
      {"Next", RecordingGate::kRefusal, 0},
      {"GetDisplayName", ZEM_E_FAIL, 0},             // the only match is passed over
      {"BindToObject", RecordingGate::kRefusal, 1},  // COM deliberately stays initialised
  }};
  for (std::size_t index = 0; index < cases.size(); ++index) {
    SCOPED_TRACE(index);
    const int before = system().ComBalance();
    gate.calls.clear();
    gate.RefuseCall(index);
    void* handle = nullptr;
    EXPECT_EQ(ZEMAPI_OpenDevice(0, &handle), cases[index].result);
    ASSERT_GT(gate.calls.size(), index);
    EXPECT_EQ(gate.calls[index], cases[index].call);
    EXPECT_EQ(system().ComBalance() - before, cases[index].comBalance);
    EXPECT_EQ(handle != nullptr, cases[index].result == 0);
    ZEMAPI_CloseDevice(&handle);
    EXPECT_EQ(zem::simulator::liveComObjects, 0);
  }
}

TEST_F(OpenByIdsTest, FailedBindingSetsTheOutputToNull) {
  gate.RefuseAll("BindToObject");
  auto* filter = reinterpret_cast<IBaseFilter*>(this);
  EXPECT_EQ(zem::FindCaptureDevice(&filter, 0x5A45, 0x8C00, 0), RecordingGate::kRefusal);
  EXPECT_EQ(filter, nullptr);
}

TEST_F(OpenByIdsTest, BindingWithoutAFilterIsNoDevice) {
  system().createDeviceEnumerator = [](ICreateDevEnum** enumerator) {
    *enumerator = zem::simulator::MakeDeviceEnumerator(
        {{DisplayName(0x5A45, 0x8C00), std::nullopt, zem::CLSID_VideoInputDeviceCategory,
          [] { return nullptr; }}},
        nullptr);
    return S_OK;
  };
  EXPECT_EQ(FailToOpen(), ZEM_E_FAIL);
}

TEST_F(OpenByIdsTest, PositiveResultsAreNoFailures) {
  gate.AnswerEverything(7);
  void* handle = nullptr;
  EXPECT_EQ(ZEMAPI_OpenDevice(0, &handle), 0);
  EXPECT_NE(handle, nullptr);
  EXPECT_EQ(system().ComBalance(), 1);
  EXPECT_EQ(gate.calls, (Lines{"CreateDeviceEnumerator", "CreateClassEnumerator", "Next",
                               "GetDisplayName", "BindToObject"}));
  ZEMAPI_CloseDevice(&handle);
  zem::ComPtr<IBaseFilter> filter;
  EXPECT_EQ(zem::FindCaptureDevice(filter.Receive(), 0x5A45, 0x8C00, 0), 0);
}

TEST_F(OpenByIdsTest, SkippedMatchWithAPositiveResultDoesNotEndTheSearch) {
  List(DisplayName(0x5A45, 0x8C00, L"2"), std::make_shared<zem::simulator::Camera>());
  gate.AnswerEverything(7);
  void* handle = nullptr;
  EXPECT_EQ(ZEMAPI_OpenDevice(1, &handle), 0);
  ASSERT_EQ(boundFilters.size(), 2U);
  ZEMAPI_CloseDevice(&handle);
  EXPECT_EQ(boundFilters[0]->Release(), 0U) << "the skipped match keeps its reference";
}

TEST_F(OpenByIdsTest, NameThatIsNullIsNone) {
  ListNothing();
  List(DisplayName(0x5A45, 0x8C00), std::make_shared<zem::simulator::Camera>()).hasNullName = true;
  EXPECT_EQ(FailToOpen(), ZEM_E_FAIL);
  List(DisplayName(0x5A45, 0x8C00), std::make_shared<zem::simulator::Camera>());
  void* handle = nullptr;
  EXPECT_EQ(ZEMAPI_OpenDevice(0, &handle), 0) << "the device is passed over";
  EXPECT_EQ(boundFilters.size(), 1U);
  ZEMAPI_CloseDevice(&handle);
}

TEST_F(OpenByIdsTest, DeviceThatIsNullEndsTheSearch) {
  ListNothing();
  List(DisplayName(0x5A45, 0x8C00), std::make_shared<zem::simulator::Camera>()).isNull = true;
  List(DisplayName(0x5A45, 0x8C00), std::make_shared<zem::simulator::Camera>());
  EXPECT_EQ(FailToOpen(), ZEM_E_FAIL);
  EXPECT_TRUE(boundFilters.empty());
}

TEST_F(OpenByIdsTest, FilterOfAFailedBindingIsGivenBack) {
  ListNothing();
  List(DisplayName(0x5A45, 0x8C00), std::make_shared<zem::simulator::Camera>()).bindResult =
      E_NOTIMPL;
  EXPECT_EQ(FailToOpen(), E_NOTIMPL);
  EXPECT_EQ(boundFilters.size(), 1U);
  EXPECT_EQ(zem::simulator::liveComObjects, 0);
  auto* filter = reinterpret_cast<IBaseFilter*>(this);
  EXPECT_EQ(zem::FindCaptureDevice(&filter, 0x5A45, 0x8C00, 0), E_NOTIMPL);
  EXPECT_EQ(filter, nullptr);
}

TEST_F(OpenByIdsTest, WithoutMemoryForTheHandleAllIsGivenBack) {
  void* handle = this;
  for (const bool byDefaultIds : {true, false}) {
    const zem::testing::MemoryExhausted exhausted;
    EXPECT_EQ(byDefaultIds ? ZEMAPI_OpenDevice(0, &handle)
                           : ZEMAPI_OpenDeviceEx(0, &handle, 0x5A45, 0x8C00),
              ZEM_E_FAIL);
    EXPECT_EQ(handle, this);
    EXPECT_EQ(system().ComBalance(), 0);
    EXPECT_EQ(zem::simulator::liveComObjects, 0);
  }
  EXPECT_EQ(system().comInitializations, 2);
}

TEST_F(OpenByIdsTest, NullAddressForTheHandleIsRefusedBeforeAnythingIsDone) {
  EXPECT_EQ(ZEMAPI_OpenDevice(0, nullptr), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMAPI_OpenDeviceEx(0, nullptr, 1, 2), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMAPI_OpenZemDevice(nullptr), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMAPI_OpenDeviceByPath(L"x", nullptr), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMAPI_OpenDeviceByDevPath(L"x", nullptr), ZEM_E_REFUSED);
  EXPECT_EQ(ZEMAPI_OpenDeviceBySourceFilter(nullptr, nullptr), ZEM_E_REFUSED);
  EXPECT_EQ(system().comInitializations, 0);
}

}  // namespace
