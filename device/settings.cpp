#include "device/settings.h"

#include <array>

#include "platform/platform.h"

namespace zem {
namespace {

constexpr unsigned kDefaultVendorId = ZEM_DEFAULT_VENDOR_ID;
constexpr unsigned kDefaultProductId = 0x8C00;

}  // namespace

DeviceIds ReadDefaultDeviceIds() {
  std::array<wchar_t, platform::kPathCapacity> path = {};
  platform::HostFilePath(path, L"zem_setting.ini");
  DeviceIds ids = {};
  ids.vendor = platform::PrivateProfileInt(L"AP", L"DeviceVid", kDefaultVendorId, path.data());
  ids.product = platform::PrivateProfileInt(L"AP", L"DevicePid", kDefaultProductId, path.data());
  return ids;
}

}  // namespace zem
