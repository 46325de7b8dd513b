// The table of operations: it has every export, and each runs on healthy devices within its bound.
#include "tests/support/operations.h"

#include <fstream>
#include <set>

#include "romboot/usb_scsi_cmd.h"
#include "simulator/com_camera.h"
#include "tests/support/device_test.h"
#include "tests/support/scripted_volume.h"

namespace {

using zem::testing::Call;
using zem::testing::DeviceTest;
using zem::testing::Ground;
using zem::testing::Operation;
using zem::testing::Operations;

std::multiset<std::string> ExportedNames() {
  std::multiset<std::string> names;
  std::ifstream file(ZEM_EXPORT_LIST);
  bool isName = false;
  for (std::string line; std::getline(file, line);) {
    const std::size_t start = line.find_first_not_of(" \"");
    if (isName && start != std::string::npos && line[start] != ';') {
      names.insert(line.substr(start, line.find_last_not_of('"') + 1 - start));
    }
    isName = isName || line == "EXPORTS";
  }
  return names;
}

TEST(OperationsTest, EveryExportIsInTheTableOnceOrNeedsNoDevice) {
  std::multiset<std::string> names;
  for (const Operation& operation : Operations()) {
    names.insert(operation.name);
  }
  for (const std::string_view name : zem::testing::ExportsWithoutDevice()) {
    names.emplace(name);
  }
  ASSERT_GT(names.size(), 150U);
  EXPECT_EQ(names, ExportedNames());
}

TEST(OperationsTest, ABoundCountsBegunPieces) {
  const zem::testing::Bound bound = {3, 32, 6};
  EXPECT_EQ(bound.Of(0), 3U);
  EXPECT_EQ(bound.Of(1), 9U);
  EXPECT_EQ(bound.Of(32), 9U);
  EXPECT_EQ(bound.Of(33), 15U);
}

// Counts what reaches the devices.
class CountingGate final : public zem::simulator::CallGate {
 public:
  HRESULT Enter(const char* call) override {
    const std::string_view name = call;
    isStandard_ = name == "Get" || name == "Set" || name == "GetRange" || name == "put_MixLevel";
    requests += isStandard_ ? 1U : 0U;
    return S_OK;
  }
  HRESULT EndTransfer(HRESULT result) override {
    ++requests;
    return result;
  }
  std::uint64_t requests = 0;

 private:
  bool isStandard_ = false;
};

class HealthyOperationTest : public DeviceTest, public ::testing::WithParamInterface<Operation> {
 protected:
  HealthyOperationTest() {
    for (const GUID& unit : {zem::H264Xu, zem::SkypeXu, zem::TirellaXu, zem::OrvaXu,
                             zem::EncodingUnitXu, zem::StreamProbeXu}) {
      AddUnit(unit);
    }
    // Each piece of its memory begins like an image with table 1, of four bytes.
    vendor().AlwaysAnswer(16, {0, 0, 29, 0xEE, 0, 12, 0, 0, 1, 8, 0, 1, 2, 3, 4});
    using zem::simulator::ControlFamily;
    camera().AddControls(ControlFamily::kVideoProcessing,
                         DefaultControls(ControlFamily::kVideoProcessing));
    camera().AddProcessingNode();
    camera().AddControls(ControlFamily::kCameraTerminal,
                         DefaultControls(ControlFamily::kCameraTerminal));
    ListNothing();
    const std::wstring name = zem::testing::DisplayName(0x5A45, 0x8C00);
    zem::simulator::ListedDevice& listed = List(name, nullptr, L"path");
    listed.bind = [this] { return MakeFilter(); };
    ListMicrophone(L"microphone", std::make_shared<zem::simulator::Microphone>());
    system().volumes[L"\\\\.\\F:"] = volume_.Answer();
    filter_ = MakeFilter();
    stage_.filter = filter_;
    stage_.displayName = name;
    stage_.devicePath = L"path";
    stage_.microphoneName = L"microphone";
    zem::sendAddressDivider = 0;
  }
  ~HealthyOperationTest() override {
    ZEMAPI_CloseDevice(&stage_.device);
    if (stage_.session != nullptr) {
      ZEMROMAPI_CloseDevice(&stage_.session);
    }
    filter_->Release();
  }

  IBaseFilter* MakeFilter() { return zem::simulator::MakeCameraFilter(sharedCamera(), &counting_); }

  CountingGate counting_;
  zem::testing::ScriptedVolume volume_;
  IBaseFilter* filter_ = nullptr;
  zem::testing::Stage stage_;
};

TEST_P(HealthyOperationTest, SucceedsWithinItsBound) {
  const Operation& operation = GetParam();
  if (operation.ground == Ground::kDevice) {
    ASSERT_EQ(ZEMAPI_OpenDeviceBySourceFilter(filter_, &stage_.device), 0);
  }
  if (operation.ground == Ground::kSession) {
    stage_.session = ZEMROMAPI_OpenDevice(1);
    ASSERT_NE(stage_.session, nullptr);
  }
  counting_.requests = 0;
  volume_.controls.clear();
  zem::testing::UsualChoices usual;
  Call call(stage_, usual);
  EXPECT_GE(operation.run(call), 0);
  EXPECT_LE(counting_.requests + volume_.controls.size(), operation.bound.Of(call.length()));
}

std::string NameOf(const ::testing::TestParamInfo<Operation>& info) {
  std::string name = info.param.name;
  std::erase_if(name, [](char letter) {
    return std::isalnum(static_cast<unsigned char>(letter)) == 0 && letter != '_';
  });
  return name;
}

INSTANTIATE_TEST_SUITE_P(Exports, HealthyOperationTest, ::testing::ValuesIn(Operations()), NameOf);

}  // namespace
