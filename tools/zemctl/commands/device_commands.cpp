// zemctl list, zemctl info
#include <array>

#include "tools/zemctl/camera/answers.h"
#include "tools/zemctl/camera/camera_wait.h"
#include "tools/zemctl/camera/extension_unit_names.h"
#include "tools/zemctl/camera/system_devices.h"
#include "tools/zemctl/frame/bytes.h"
#include "tools/zemctl/frame/program.h"
#include "tools/zemctl/frame/results.h"

namespace zemctl {
namespace {

// Whether the device with this display name has the vendor unit, asked by opening it.
Report VendorUnitOf(const SystemDevice& device) {
  DeviceSelection selection;
  selection.displayName = Narrow(device.displayName);
  try {
    const Session session(selection);
    return true;
  } catch (const CallFailure& failure) {
    return failure.text().exitCode == kUnitAbsent ? Report(false) : Unread(failure.what());
  }
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

Report UnitRow(const Session& session, const NamedUnit& unit, Answers& answers) {
  Report row = {{"unit", unit.name}, {"present", false}, {"guid", GuidText(unit.id)}};
  answers.AddTo(row, "present", [&]() -> Report {
    return session.Call("ZEMAPI_UvcCheckXuGuid", [&](void* device) {
      return ZEMAPI_UvcCheckXuGuid(device, &unit.id);
    }) == ZEM_OK;
  });
  return row;
}

int ShowDevice(const Options& options, Report& report) {
  const Session session(options.device);
  Answers answers(report);
  answers.Add("firmware version", [&]() -> Report { return ReadVersion(session); });
  answers.Add("device information", [&]() -> Report {
    std::array<unsigned char, 8> info = {};
    session.Call("ZEMAPI_GetDeviceInfo",
                 [&](void* device) { return ZEMAPI_GetDeviceInfo(device, info.data()); });
    return HexText(info);
  });
  answers.Add("firmware check sum", [&]() -> Report {
    try {
      session.Call("ZEMAPI_GetCheckSumResult",
                   [](void* device) { return ZEMAPI_GetCheckSumResult(device); });
    } catch (const CallFailure& failure) {
      // The camera says so by a refusal; any other one has another result.
      if (failure.text().exitCode == kCameraRefused) {
        return "wrong";
      }
      throw;
    }
    return "right";
  });
  Report units = Report::array();
  for (const NamedUnit& unit : kUnits) {
    units.push_back(UnitRow(session, unit, answers));
  }
  report["extension units"] = units;
  return answers.Finish();
}

}  // namespace

void AddDeviceCommands(Program& program) {
  program.AddCommand(&program.app(), "list", "List the video-input devices", ListDevices);
  program.AddCommand(&program.app(), "info", "Show what the camera says of itself", ShowDevice);
}

}  // namespace zemctl
