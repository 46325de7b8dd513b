// A USB interface in sysfs: which device it belongs to, and where that is plugged in.
#pragma once

#include <cstdint>
#include <optional>

#include "platform/linux/sysfs.h"

namespace zem::platform {

struct UsbInterface {
  PathText folder;  // of the interface, all links resolved
  PathText device;  // of its device
  unsigned vendor;
  unsigned product;
  unsigned configuration;
  unsigned number;
  unsigned interfaceClass;
};

// The interface behind a link such as .../video0/device; nothing when it is none of USB.
std::optional<UsbInterface> ReadUsbInterface(const PathText& link);

// "usb#vid_5a45&pid_8c00&mi_00#1-1.2": ids and interface as Windows begins a device's name, and
// behind them the port, which is its bus and the path of hub ports that leads to it.
PathText UsbDisplayName(const UsbInterface& interface);

// "pci-0000:00:14.0-usbv2-0:1.2:1.0": the same for a port as long as nothing but the bus numbers
// changes: the host controller, the generation of its bus, the hub ports, configuration and
// interface.
PathText UsbPortPath(const UsbInterface& interface);

}  // namespace zem::platform
