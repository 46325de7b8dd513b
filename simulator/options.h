// What a simulator is asked to simulate.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/boot_loader.h"
#include "simulator/camera.h"
#include "simulator/h264_encoder.h"
#include "simulator/table_image.h"
#include "simulator/vendor_unit.h"

namespace zem::simulator {

struct CameraOptions {
  std::uint16_t vendorId = 0x5A45;
  std::uint16_t productId = 0x8C00;
  std::string name = "ZEM Simulated Camera";
  bool vendorUnit = true;
  bool h264Unit = false;
  bool skypeUnit = false;
  bool orvaUnit = false;
  std::uint8_t skypeVersion = 19;
  std::vector<H264Format> h264Formats;
  VendorSettings vendor;
  std::string stateFile;  // UTF-8 path; empty: every run begins as it left the factory
  // UTF-8 path of a file that each transfer is appended to; empty: none is.
  std::string transferFile;
  bool encodingUnit = false;
  bool streamProbeUnit = false;
  // The standard controls of the processing unit (with its node interface) and of the terminal.
  bool videoControls = true;
  bool cameraControls = true;
  // A microphone, and whether its level can be set.
  bool microphone = true;
  bool mixer = true;
  bool tirellaUnit = false;
  // The vendor unit's memory from address 0; what is behind it is erased.
  std::vector<std::uint8_t> nvmem = FactoryTableImage();
  std::vector<Fault> faults;
};

struct Options {
  std::vector<CameraOptions> cameras = {CameraOptions()};
  // The boot loaders by the position of the camera that has each; one for position 0 needs no
  // camera. Their drive letters differ.
  std::map<std::size_t, BootLoaderOptions> bootLoaders;
};

// Reads options from JSON: {"cameras": [{"vendorId": 23109, "productId": 35840, "name": "...",
// "faults": ["unplug@3"], "bootLoader": {"letter": "F"}}]}; docs/simulator.md has all keys.
// Whatever is missing keeps its default; empty text is all defaults. Throws std::invalid_argument
// with a sentence for a person on anything else.
Options ParseOptions(std::string_view json);

// The camera that the options describe: an input terminal, a processing unit and those of the
// extension units that are wanted: vendor, H.264, Skype, ORVA, TIRELLA, in this order.
// `enterRomBoot` is called when a host sends it into ROM boot; null for a camera without a boot
// loader. Throws std::invalid_argument for a state file that is not one, and for a file of
// transfers that cannot be written.
std::shared_ptr<Camera> MakeCamera(const CameraOptions& options,
                                   std::function<void()> enterRomBoot = nullptr);

// The same as if it had been unplugged and plugged in again: `last`, which ran before and may be
// null, leaves behind what its state file keeps. Throws also as SaveState does.
std::shared_ptr<Camera> RestartCamera(const CameraOptions& options, Camera* last,
                                      std::function<void()> enterRomBoot);

// Once a camera has been plugged in again as its faults say, it is not a second time.
void ForgetReplug(CameraOptions& options);

// Writes the camera's state file, if it has one; MakeCamera's cameras do so by themselves when
// their flash changes. Throws std::runtime_error when that fails.
void SaveState(const CameraOptions& options, Camera& camera);

}  // namespace zem::simulator
