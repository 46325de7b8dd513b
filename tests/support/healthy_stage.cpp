#include "tests/support/healthy_stage.h"

#include "device/extension_units.h"
#include "platform/simulated/simulated_platform.h"
#include "simulator/com_camera.h"
#include "simulator/com_microphone.h"

namespace zem::testing {

HealthyStage::HealthyStage() : camera_(std::make_shared<simulator::Camera>()) {
  platform::simulated::Reset();
  camera_->AddPlainNode();
  // Each piece of its memory begins like an image with table 1, of four bytes.
  camera_->AddUnit(std::make_unique<ScriptedUnit>(VendorXu))
      .AlwaysAnswer(16, {0, 0, 29, 0xEE, 0, 12, 0, 0, 1, 8, 0, 1, 2, 3, 4});
  for (const GUID& unit : {H264Xu, SkypeXu, TirellaXu, OrvaXu, EncodingUnitXu, StreamProbeXu}) {
    camera_->AddUnit(std::make_unique<ScriptedUnit>(unit));
  }
  using simulator::ControlFamily;
  camera_->AddControls(ControlFamily::kVideoProcessing,
                       DefaultControls(ControlFamily::kVideoProcessing));
  camera_->AddProcessingNode();
  camera_->AddControls(ControlFamily::kCameraTerminal,
                       DefaultControls(ControlFamily::kCameraTerminal));
  stage_.displayName = LR"(@device:pnp:\\?\usb#vid_5a45&pid_8c00&mi_00#1#{65e8773d}\global)";
  stage_.devicePath = L"path";
  stage_.microphoneName = L"microphone";
  simulator::ListedDevice listed;
  listed.displayName = stage_.displayName;
  listed.devicePath = stage_.devicePath;
  listed.bind = [this] { return MakeFilter(); };
  simulator::ListedDevice microphone;
  microphone.displayName = stage_.microphoneName;
  microphone.category = CLSID_AudioInputDeviceCategory;
  microphone.bind = [] {
    return simulator::MakeMicrophoneFilter(std::make_shared<simulator::Microphone>(), nullptr);
  };
  platform::simulated::System& system = platform::simulated::TheSystem();
  system.createDeviceEnumerator =
      [devices = std::vector{listed, microphone}](ICreateDevEnum** enumerator) {
        *enumerator = simulator::MakeDeviceEnumerator(devices, nullptr);
        return S_OK;
      };
  system.volumes[L"\\\\.\\F:"] = volume.Answer();
  stage_.filter = MakeFilter();
}

HealthyStage::~HealthyStage() {
  ZEMAPI_CloseDevice(&stage_.device);
  ZEMROMAPI_CloseDevice(&stage_.session);
  stage_.filter->Release();
  platform::simulated::Reset();
}

bool HealthyStage::Prepare(const Operation& operation) {
  if (operation.ground == Ground::kDevice) {
    return ZEMAPI_OpenDeviceBySourceFilter(stage_.filter, &stage_.device) == 0;
  }
  if (operation.ground == Ground::kSession) {
    stage_.session = ZEMROMAPI_OpenDevice(1);
    return stage_.session != nullptr;
  }
  return true;
}

ZemResult HealthyStage::Run(const Operation& operation) {
  UsualChoices usual;
  Call call(stage_, usual);
  return operation.run(call);
}

IBaseFilter* HealthyStage::MakeFilter() const {
  return simulator::MakeCameraFilter(camera_, nullptr);
}

}  // namespace zem::testing
