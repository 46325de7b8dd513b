// zemctl list, zemctl info
#include <array>
#include <map>
#include <optional>
#include <utility>

#include "tools/zemctl/camera/answers.h"
#include "tools/zemctl/camera/extension_unit_names.h"
#include "tools/zemctl/camera/firmware_version.h"
#include "tools/zemctl/camera/system_devices.h"
#include "tools/zemctl/frame/bytes.h"
#include "tools/zemctl/frame/program.h"
#include "tools/zemctl/frame/results.h"

namespace zemctl {
namespace {

Report ReadSerial(const Session& session) {
  std::array<unsigned char, 32> serial = {};
  session.Call("ZEMAPI_GetSensorSN",
               [&](void* device) { return ZEMAPI_GetSensorSN(device, serial.data()); });
  return HexText(serial);
}

// What the device says of itself, if it is one that has the vendor unit.
void AskDevice(const SystemDevice& device, Answers& answers, Report& row) {
  DeviceSelection selection;
  selection.displayName = device.displayName;
  std::optional<Session> session;
  answers.AddTo(row, "vendor unit", [&]() -> Report {
    try {
      session.emplace(selection, Use::kReading);
    } catch (const CallFailure& failure) {
      if (failure.text().exitCode != kUnitAbsent) {
        throw;
      }
    }
    return session.has_value();
  });
  row["firmware version"] = nullptr;
  row["serial number"] = nullptr;
  if (session) {
    answers.AddTo(row, "firmware version", [&]() -> Report { return ReadVersion(*session); });
    answers.AddTo(row, "serial number", [&]() -> Report { return ReadSerial(*session); });
  }
}

int ListDevices(const Options& /*options*/, Report& report) {
  Report rows = Report::array();
  Answers answers(report);
  std::map<std::pair<unsigned, unsigned>, unsigned> counts;
  for (const SystemDevice& device : ListSystemDevices(DeviceCategory::kVideoInput)) {
    Report row = Report::object();
    const bool hasIds = device.vendorId && device.productId;
    row["index"] = hasIds ? Report(counts[{*device.vendorId, *device.productId}]++) : Report();
    row["vendor id"] = hasIds ? Report(HexNumber(*device.vendorId, 4)) : Report();
    row["product id"] = hasIds ? Report(HexNumber(*device.productId, 4)) : Report();
    row["name"] = device.name;
    row["place"] = device.place;
    AskDevice(device, answers, row);
    row["path"] = device.displayName;
    row["device path"] = device.devicePath;
    rows.push_back(row);
  }
  if (rows.empty()) {
    throw CallFailure("list", ZEM_E_FAIL,
                      {"ZEM_E_FAIL", "no video-input device is attached",
                       "Plug a camera in, or try a simulated one with --simulator.", kNoCamera});
  }
  report["devices"] = rows;
  return answers.Finish();
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
  const Session session(options.device, Use::kReading);
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
  program.AddCommand(&program.app(), "list", "List the video-input devices", ListDevices,
                     {.selection = false});
  program.AddCommand(&program.app(), "info", "Show what the camera says of itself", ShowDevice);
}

}  // namespace zemctl
