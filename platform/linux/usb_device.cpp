#include "platform/linux/usb_device.h"

namespace zem::platform {
namespace {

// "1.2" of "1-1.2"; a root hub has none.
std::string_view HubPorts(std::string_view device) {
  const std::size_t separator = device.find('-');
  return separator != std::string_view::npos ? device.substr(separator + 1) : std::string_view();
}

// The folder of the bus that a device hangs on: the last one on its path named usbN.
PathText FindBus(const PathText& device) {
  PathText folder = device;
  while (!folder.empty() && !folder.Name().starts_with("usb")) {
    folder = folder.Parent();
  }
  return folder;
}

}  // namespace

std::optional<UsbInterface> ReadUsbInterface(const PathText& link) {
  UsbInterface interface = {};
  interface.folder = Resolve(link);
  interface.device = interface.folder.Parent();
  const auto vendor = ReadNumber(interface.device, "idVendor", 16);
  const auto product = ReadNumber(interface.device, "idProduct", 16);
  const auto configuration = ReadNumber(interface.device, "bConfigurationValue", 10);
  const auto number = ReadNumber(interface.folder, "bInterfaceNumber", 16);
  const auto interfaceClass = ReadNumber(interface.folder, "bInterfaceClass", 16);
  if (!vendor || !product || !configuration || !number || !interfaceClass) {
    return std::nullopt;
  }
  interface.vendor = *vendor;
  interface.product = *product;
  interface.configuration = *configuration;
  interface.number = *number;
  interface.interfaceClass = *interfaceClass;
  return interface;
}

PathText UsbDisplayName(const UsbInterface& interface) {
  PathText name({"usb#vid_"});
  name.AppendHex(interface.vendor, 4);
  name.Append({"&pid_"});
  name.AppendHex(interface.product, 4);
  name.Append({"&mi_"});
  name.AppendHex(interface.number, 2);
  name.Append({"#", interface.device.Name()});
  return name;
}

PathText UsbPortPath(const UsbInterface& interface) {
  const PathText bus = FindBus(interface.device);
  const PathText controller = bus.Parent();
  const PathText subsystem = Resolve({controller.view(), "/subsystem"});
  PathText path({subsystem.Name(), "-", controller.Name(), "-usb"});
  const PathText version = ReadAttribute(bus, "version");
  if (const std::size_t digit = version.view().find_first_not_of(' ');
      digit != std::string_view::npos) {
    path.Append({"v", version.view().substr(digit, 1)});
  }
  path.Append({"-0:", HubPorts(interface.device.Name()), ":"});
  path.AppendNumber(interface.configuration);
  path.Append({"."});
  path.AppendNumber(interface.number);
  return path;
}

}  // namespace zem::platform
