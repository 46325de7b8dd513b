#include "tests/support/device_test.h"

#include <array>
#include <cstdio>
#include <cwchar>
#include <utility>

#include "simulator/com_camera.h"

namespace zem::testing {
namespace {

std::string NameOf(const GUID& unit) {
  static const std::array<std::pair<const char*, GUID>, 7> kNames = {{{"vendor", VendorXu},
                                                                      {"h264", H264Xu},
                                                                      {"skype", SkypeXu},
                                                                      {"tirella", TirellaXu},
                                                                      {"orva", OrvaXu},
                                                                      {"encoding", EncodingUnitXu},
                                                                      {"probe", StreamProbeXu}}};
  for (const auto& [name, id] : kNames) {
    if (id == unit) {
      return name;
    }
  }
  return "other";
}

std::string TextOf(const simulator::Transfer& transfer) {
  std::string text = (transfer.isSet ? "set " : "get ") + NameOf(transfer.unit) + " " +
                     std::to_string(transfer.selector);
  if (transfer.isSet) {
    text += ": " + HexText(transfer.bytes);
  } else {
    text += " [" + std::to_string(transfer.length) + "]";
  }
  return text + (transfer.outcome == simulator::Outcome::kDone ? "" : " failed");
}

}  // namespace

std::wstring DisplayName(unsigned vid, unsigned pid, const std::wstring& instance) {
  std::array<wchar_t, 128> name = {};
  std::swprintf(name.data(), name.size(),
                L"@device:pnp:\\\\?\\usb#vid_%04x&pid_%04x&mi_00#%ls#{65e8773d}\\global", vid, pid,
                instance.c_str());
  return name.data();
}

std::string HexText(const std::vector<std::uint8_t>& bytes) {
  std::string text;
  for (const std::uint8_t byte : bytes) {
    std::array<char, 4> digits = {};
    std::snprintf(digits.data(), digits.size(), "%02x", byte);
    if (!text.empty()) {
      text += ' ';
    }
    text += digits.data();
  }
  return text;
}

std::string Zeros(std::size_t count) {
  std::string text;
  for (std::size_t index = 0; index < count; ++index) {
    text += " 00";
  }
  return text;
}

std::wstring SetLine(HRESULT result, unsigned length, int node) {
  std::array<wchar_t, 100> line = {};
  std::swprintf(line.data(), line.size(), L"[EXT_Set]Node ID = %d, hr = %X, Len:%d\r\n", node,
                static_cast<unsigned>(result), length);
  return line.data();
}

DeviceTest::DeviceTest() : camera_(std::make_shared<simulator::Camera>()) {
  platform::simulated::Reset();
  camera_->AddPlainNode();
  vendor_ = &AddUnit(VendorXu);
  camera_->SetObserver([this](const simulator::Transfer& transfer) {
    wire_.push_back(TextOf(transfer));
    system().clockMilliseconds += transferMilliseconds;
  });
  system().createDeviceEnumerator = [this](ICreateDevEnum** enumerator) {
    const HRESULT entered = gate.Enter("CreateDeviceEnumerator");
    if (SUCCEEDED(entered)) {
      *enumerator = simulator::MakeDeviceEnumerator(devices_, &gate);
    }
    return entered;
  };
  List(DisplayName(0x5A45, 0x8C00), camera_, L"\\\\?\\usb#vid_5a45&pid_8c00");
}

DeviceTest::~DeviceTest() {
  ZEMAPI_CloseDevice(&handle_);
  EXPECT_EQ(simulator::liveComObjects, 0) << "objects left referenced";
  platform::simulated::Reset();
}

ScriptedUnit& DeviceTest::AddUnit(const GUID& id) {
  return camera_->AddUnit(std::make_unique<ScriptedUnit>(id));
}

simulator::ListedDevice& DeviceTest::List(const std::wstring& displayName,
                                          const std::shared_ptr<simulator::Camera>& camera,
                                          std::optional<std::wstring> devicePath,
                                          const GUID& category) {
  simulator::ListedDevice device;
  device.displayName = displayName;
  device.devicePath = std::move(devicePath);
  device.category = category;
  device.bind = [this, camera] {
    boundFilters.push_back(simulator::MakeCameraFilter(camera, &gate));
    return boundFilters.back();
  };
  return devices_.emplace_back(std::move(device));
}

void DeviceTest::ListMicrophone(const std::wstring& displayName,
                                const std::shared_ptr<simulator::Microphone>& microphone) {
  simulator::ListedDevice device;
  device.displayName = displayName;
  device.category = CLSID_AudioInputDeviceCategory;
  device.bind = [this, microphone] { return simulator::MakeMicrophoneFilter(microphone, &gate); };
  devices_.push_back(std::move(device));
}

void* DeviceTest::handle() {
  if (handle_ == nullptr) {
    EXPECT_EQ(ZEMAPI_OpenDevice(0, &handle_), 0);
    gate.calls.clear();
    TakeWire();
    TakeDebuggerLines();
  }
  return handle_;
}

Lines DeviceTest::TakeWire() { return std::exchange(wire_, {}); }

WideLines DeviceTest::TakeDebuggerLines() { return std::exchange(system().debuggerLines, {}); }

}  // namespace zem::testing
