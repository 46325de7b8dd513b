// zemctl list, zemctl info
#include <array>

#include "tools/zemctl/camera/extension_unit_names.h"
#include "tools/zemctl/camera/system_devices.h"
#include "tools/zemctl/frame/bytes.h"
#include "tools/zemctl/frame/program.h"
#include "tools/zemctl/frame/results.h"

namespace zemctl {
namespace {

// Whether the device with this display name has the vendor unit, asked by opening it.
std::string VendorUnitOf(const SystemDevice& device) {
  void* handle = nullptr;
  const ZemResult opened = ZEMAPI_OpenDeviceByPath(device.displayName.c_str(), &handle);
  ZEMAPI_CloseDevice(&handle);
  if (opened < 0) {
    return "unknown (" + Hex(opened) + ")";
  }
  return opened == 0 ? "yes" : "no";
}

int ListDevices(const Options& /*options*/, Report& report) {
  Report rows = Report::array();
  for (const SystemDevice& device : ListSystemDevices(DeviceCategory::kVideoInput)) {
    rows.push_back({{"name", Narrow(device.name)},
                    {"vendor unit", VendorUnitOf(device)},
                    {"path", Narrow(device.displayName)},
                    {"device path", Narrow(device.devicePath)}});
  }
  if (rows.empty()) {
    throw CallFailure("list", ZEM_E_FAIL,
                      {"ZEM_E_FAIL", "no video-input device is attached",
                       "Plug a camera in, or try a simulated one with --simulator.", kNoCamera});
  }
  report["devices"] = rows;
  return kDone;
}

// A command's outcome as a field: what it brought, or why it brought nothing. A camera may answer
// some questions and refuse others; only one that is gone ends the report.
std::string Answer(const char* function, ZemResult result, const std::string& brought) {
  if (result >= 0) {
    return brought;
  }
  const CallFailure failure(function, result);
  if (failure.text().exitCode == kTransferFailed) {
    throw CallFailure(failure);
  }
  return failure.what();
}

int ShowDevice(const Options& options, Report& report) {
  const Session session(options.device);
  std::array<unsigned char, 6> version = {};
  const ZemResult versionRead = ZEMAPI_GetFWVersion(session.handle(), version.data());
  report["firmware version"] = Answer("ZEMAPI_GetFWVersion", versionRead, HexText(version));

  std::array<unsigned char, 8> info = {};
  const ZemResult infoRead = ZEMAPI_GetDeviceInfo(session.handle(), info.data());
  report["device information"] = Answer("ZEMAPI_GetDeviceInfo", infoRead, HexText(info));

  report["firmware check sum"] =
      Answer("ZEMAPI_GetCheckSumResult", ZEMAPI_GetCheckSumResult(session.handle()), "right");

  Report units = Report::array();
  for (const NamedUnit& unit : kUnits) {
    const ZemResult present = ZEMAPI_UvcCheckXuGuid(session.handle(), &unit.id);
    Check("ZEMAPI_UvcCheckXuGuid", present);
    units.push_back({{"unit", unit.name}, {"present", present == 0}, {"guid", GuidText(unit.id)}});
  }
  report["extension units"] = units;
  return kDone;
}

}  // namespace

void AddDeviceCommands(Program& program) {
  program.AddCommand(&program.app(), "list", "List the video-input devices", ListDevices);
  program.AddCommand(&program.app(), "info", "Show what the camera says of itself", ShowDevice);
}

}  // namespace zemctl
