#include <windows.h>

#include <algorithm>
#include <array>

#include "tools/zemctl/camera/device_place.h"
#include "tools/zemctl/frame/bytes.h"

namespace zemctl {

// A device path is \\?\usb#IDS#INSTANCE#{INTERFACE}: the system keeps where the device is plugged
// in under its ids and instance. Where it does not, the instance differs from port to port.
std::string PlaceOf(const SystemDevice& device) {
  const std::wstring devicePath = Widen(device.devicePath);
  const std::size_t ids = devicePath.find(L'#');
  const std::size_t instance = devicePath.find(L'#', ids + 1);
  if (ids == std::wstring::npos || instance == std::wstring::npos) {
    return "";
  }
  const std::size_t end = std::min(devicePath.find(L'#', instance + 1), devicePath.size());
  const std::wstring instanceName = devicePath.substr(instance + 1, end - instance - 1);
  const std::wstring key = L"SYSTEM\\CurrentControlSet\\Enum\\USB\\" +
                           devicePath.substr(ids + 1, instance - ids - 1) + L"\\" + instanceName;
  std::array<wchar_t, 256> place = {};
  DWORD size = sizeof(place);
  const LSTATUS read = RegGetValueW(HKEY_LOCAL_MACHINE, key.c_str(), L"LocationInformation",
                                    RRF_RT_REG_SZ, nullptr, place.data(), &size);
  return Narrow(read == ERROR_SUCCESS ? place.data() : instanceName);
}

}  // namespace zemctl
