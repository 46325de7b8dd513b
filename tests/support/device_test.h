// The ground of every native test that has a camera: a fresh simulated system that lists cameras,
// the transfers that passed over the wire as text, and a check that nothing stays referenced.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "device/extension_units.h"
#include "include/ZemUVCExtApi.h"
#include "platform/simulated/simulated_platform.h"
#include "simulator/camera.h"
#include "simulator/com_microphone.h"
#include "simulator/device_list.h"
#include "tests/support/recording_gate.h"
#include "tests/support/scripted_unit.h"

namespace zem::testing {

using Lines = std::vector<std::string>;
using WideLines = std::vector<std::wstring>;

inline constexpr auto kFailedTransfer = static_cast<ZemResult>(0x8007001FU);
inline constexpr auto kUnpluggedTransfer = static_cast<ZemResult>(0x8007048FU);
inline constexpr auto kUnknownControl = static_cast<ZemResult>(0x80070490U);

// What an output holds before a call that is not to write it.
inline constexpr std::uint32_t kUntouched = 0xDEADBEEF;

// The lines of a search by name in an empty category.
inline const WideLines kNothingDetected = {L"No video capture device was detected.\r\n\r\n"};

// A display name as the system gives one to a camera with these ids.
std::wstring DisplayName(unsigned vid, unsigned pid, const std::wstring& instance = L"1");

// "0a 10 ff"
std::string HexText(const std::vector<std::uint8_t>& bytes);

// " 00" as often as told.
std::string Zeros(std::size_t count);

// Debugger line of a write to the vendor unit of the fixture's camera.
std::wstring SetLine(HRESULT result, unsigned length, int node = 1);

class DeviceTest : public ::testing::Test {
 protected:
  // One camera with the default ids is listed: a plain node, then the vendor unit, scripted.
  DeviceTest();
  // Closes what Open opened and requires that every object has been released.
  ~DeviceTest() override;

  platform::simulated::System& system() { return platform::simulated::TheSystem(); }
  simulator::Camera& camera() { return *camera_; }
  const std::shared_ptr<simulator::Camera>& sharedCamera() const { return camera_; }
  ScriptedUnit& vendor() { return *vendor_; }

  // Adds a further scripted unit to the camera.
  ScriptedUnit& AddUnit(const GUID& id);

  // Lists one more device, or forgets all of them. What is handed back may be changed until the
  // next one is listed.
  simulator::ListedDevice& List(const std::wstring& displayName,
                                const std::shared_ptr<simulator::Camera>& camera,
                                std::optional<std::wstring> devicePath = std::nullopt,
                                const GUID& category = CLSID_VideoInputDeviceCategory);
  void ListMicrophone(const std::wstring& displayName,
                      const std::shared_ptr<simulator::Microphone>& microphone);
  void ListNothing() { devices_.clear(); }

  // The camera's handle, opened on first use by the default ids; what that sent is forgotten.
  void* handle();

  // The camera fails its n-th transfer from now on, counted from 1.
  void FailTransfer(std::uint32_t n) {
    camera_->AddFault({simulator::Fault::Kind::kFail, camera_->transfers() + n, 1, 0});
  }

  // All transfers since the last call: "set vendor 1: 0a 00 ..." or "get vendor 2 [8]", with
  // " failed" behind those that did.
  Lines TakeWire();

  // Writes a line of the test's own between the transfers.
  void Note(std::string line) { wire_.push_back(std::move(line)); }

  // All debugger texts since the last call.
  WideLines TakeDebuggerLines();

  // How long each transfer takes by the system's clock.
  std::uint32_t transferMilliseconds = 0;

  // Sees all calls on the listed devices.
  RecordingGate gate;

  // Every filter that binding handed out, released by now or not.
  std::vector<IBaseFilter*> boundFilters;

 private:
  std::shared_ptr<simulator::Camera> camera_;
  ScriptedUnit* vendor_ = nullptr;
  std::vector<simulator::ListedDevice> devices_;
  void* handle_ = nullptr;
  Lines wire_;
};

}  // namespace zem::testing
