#include "tools/zemctl/camera/system_devices.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <cwchar>
#include <functional>
#include <stdexcept>

#include "platform/platform.h"
#include "platform/text.h"
#include "tools/zemctl/camera/device_place.h"
#include "tools/zemctl/camera/replay.h"
#include "tools/zemctl/frame/bytes.h"

namespace zemctl {
namespace {

using zem::ComPtr;

// Stands in for the one of two ids that was not given.
constexpr unsigned kDefaultVendorId = 0x5A45;
constexpr unsigned kDefaultProductId = 0x8C00;

// Characters of a display name that count.
constexpr std::size_t kNameLength = 255;

std::wstring ReadProperty(IPropertyBag* properties, const wchar_t* name) {
  VARIANT value;
  zem::platform::InitVariant(&value);
  std::wstring text;
  if (SUCCEEDED(properties->Read(name, &value, nullptr)) && value.vt == VT_BSTR) {
    text = value.bstrVal;
  }
  zem::platform::ClearVariant(&value);
  return text;
}

// The number in four hexadecimal digits behind `mark`.
std::optional<unsigned> IdBehind(std::string_view mark, std::string_view path) {
  constexpr std::size_t kDigits = 4;
  const std::size_t at = path.find(mark);
  if (at == std::string_view::npos || path.size() < at + mark.size() + kDigits) {
    return std::nullopt;
  }
  const std::string_view digits = path.substr(at + mark.size(), kDigits);
  unsigned id = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + kDigits, id, 16);
  return error == std::errc() && end == digits.data() + kDigits ? std::optional(id) : std::nullopt;
}

// Offers every device of a category to `see`, until that returns true.
void WalkSystemDevices(DeviceCategory category, const std::function<bool(IMoniker*)>& see) {
  const GUID& id = category == DeviceCategory::kVideoInput ? zem::CLSID_VideoInputDeviceCategory
                                                           : zem::CLSID_AudioInputDeviceCategory;
  ComPtr<ICreateDevEnum> system;
  ComPtr<IEnumMoniker> monikers;
  if (FAILED(zem::platform::CreateDeviceEnumerator(system.Receive())) ||
      FAILED(system->CreateClassEnumerator(id, monikers.Receive(), 0))) {
    throw std::runtime_error("the system's device enumerator does not answer");
  }
  ComPtr<IMoniker> moniker;
  while (monikers && monikers->Next(1, moniker.Receive(), nullptr) == S_OK) {
    if (see(moniker.get())) {
      return;
    }
  }
}

// "vid_5a45&pid_8c00", as it stands in a camera's display name.
std::wstring IdPattern(const DeviceSelection& selection) {
  std::array<wchar_t, zem::platform::kPathCapacity> settings = {};
  zem::platform::HostFilePath(settings, L"zem_setting.ini");
  const auto setting = [&](const wchar_t* key, unsigned otherwise) {
    return zem::platform::PrivateProfileInt(L"AP", key, otherwise, settings.data());
  };
  const bool isDefault = !selection.vendorId && !selection.productId;
  const unsigned vendor = isDefault ? setting(L"DeviceVid", kDefaultVendorId)
                                    : selection.vendorId.value_or(kDefaultVendorId);
  const unsigned product = isDefault ? setting(L"DevicePid", kDefaultProductId)
                                     : selection.productId.value_or(kDefaultProductId);
  std::array<wchar_t, 64> pattern = {};
  zem::platform::FormatWide(pattern, L"vid_%.4x&pid_%.4x", vendor, product);
  return pattern.data();
}

// Decides which devices a selection fits.
class Matcher {
 public:
  explicit Matcher(const DeviceSelection& selection)
      : selection_(selection), pattern_(selection.isNamed() ? L"" : IdPattern(selection)) {}

  bool Fits(const SystemDevice& device) const {
    const std::wstring displayName = Widen(device.displayName).substr(0, kNameLength);
    if (!selection_.displayName.empty()) {
      return zem::EqualIgnoringCase(displayName,
                                    Widen(selection_.displayName).substr(0, kNameLength));
    }
    if (!selection_.devicePath.empty()) {
      return zem::EqualIgnoringCase(Widen(device.devicePath), Widen(selection_.devicePath));
    }
    if (!selection_.name.empty()) {
      return zem::EqualIgnoringCase(Widen(device.name), Widen(selection_.name));
    }
    // The last position, where the pattern would end the name, does not count.
    const std::size_t at = displayName.find(pattern_);
    return at != std::wstring::npos && at + pattern_.size() < displayName.size();
  }

 private:
  const DeviceSelection& selection_;
  std::wstring pattern_;
};

}  // namespace

SystemDevice DescribeDevice(IMoniker* moniker) {
  SystemDevice device;
  wchar_t* displayName = nullptr;
  if (SUCCEEDED(moniker->GetDisplayName(nullptr, nullptr, &displayName))) {
    device.displayName = Narrow(displayName);
    zem::platform::FreeTaskMemory(displayName);
  }
  ComPtr<IPropertyBag> properties;
  if (SUCCEEDED(moniker->BindToStorage(nullptr, nullptr, zem::IID_IPropertyBag,
                                       properties.ReceiveVoid()))) {
    device.name = Narrow(ReadProperty(properties.get(), L"FriendlyName"));
    device.devicePath = Narrow(ReadProperty(properties.get(), L"DevicePath"));
    device.place = ThreadReplay() ? ThreadReplay()->PlaceOf(device.devicePath) : PlaceOf(device);
  }
  device.vendorId = IdBehind("vid_", device.displayName);
  device.productId = IdBehind("pid_", device.displayName);
  return device;
}

std::string NameOf(const SystemDevice& device) {
  std::string text = '"' + device.name + '"';
  if (device.vendorId && device.productId) {
    std::array<char, 16> ids = {};
    std::snprintf(ids.data(), ids.size(), " (%04x:%04x)", *device.vendorId, *device.productId);
    text += ids.data();
  }
  return text + (device.place.empty() ? "" : " at " + device.place);
}

std::vector<SystemDevice> ListSystemDevices(DeviceCategory category) {
  std::vector<SystemDevice> devices;
  WalkSystemDevices(category, [&](IMoniker* device) {
    devices.push_back(DescribeDevice(device));
    return false;
  });
  return devices;
}

std::vector<SystemDevice> ListMatches(const DeviceSelection& selection) {
  std::vector<SystemDevice> devices = ListSystemDevices(DeviceCategory::kVideoInput);
  const Matcher matcher(selection);
  std::erase_if(devices, [&](const SystemDevice& device) { return !matcher.Fits(device); });
  return devices;
}

std::wstring DefaultDisplayName() { return L"usb#" + IdPattern({}) + L"&mi_00#"; }

ZemResult FindCamera(const DeviceSelection& selection, FoundCamera& camera) {
  const Matcher matcher(selection);
  unsigned toSkip = selection.index.value_or(0);
  ZemResult result = ZEM_E_FAIL;
  WalkSystemDevices(DeviceCategory::kVideoInput, [&](IMoniker* moniker) {
    SystemDevice device = DescribeDevice(moniker);
    if (!matcher.Fits(device)) {
      return false;
    }
    ComPtr<IBaseFilter> found;
    result = moniker->BindToObject(nullptr, nullptr, zem::IID_IBaseFilter, found.ReceiveVoid());
    if (result < 0 || !found) {
      result = result < 0 ? result : ZEM_E_FAIL;
      camera.device = std::move(device);
      return true;
    }
    if (toSkip > 0) {
      --toSkip;
      result = ZEM_E_FAIL;
      return false;
    }
    camera = {std::move(device), std::move(found)};
    return true;
  });
  return result;
}

}  // namespace zemctl
