// The library's only configuration: zem_setting.ini beside the host executable.
#pragma once

namespace zem {

struct DeviceIds {
  unsigned vendor;
  unsigned product;
};

// USB ids of the default camera, read from the settings file on every call.
DeviceIds ReadDefaultDeviceIds();

}  // namespace zem
