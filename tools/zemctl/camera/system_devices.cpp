#include "tools/zemctl/camera/system_devices.h"

#include <array>
#include <cwchar>
#include <functional>
#include <stdexcept>

#include "platform/text.h"
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
  VariantInit(&value);
  std::wstring text;
  if (SUCCEEDED(properties->Read(name, &value, nullptr)) && value.vt == VT_BSTR) {
    text = value.bstrVal;
  }
  VariantClear(&value);
  return text;
}

SystemDevice Describe(IMoniker* moniker) {
  SystemDevice device;
  wchar_t* displayName = nullptr;
  if (SUCCEEDED(moniker->GetDisplayName(nullptr, nullptr, &displayName))) {
    device.displayName = displayName;
    CoTaskMemFree(displayName);
  }
  ComPtr<IPropertyBag> properties;
  if (SUCCEEDED(moniker->BindToStorage(nullptr, nullptr, zem::IID_IPropertyBag,
                                       properties.ReceiveVoid()))) {
    device.name = ReadProperty(properties.get(), L"FriendlyName");
    device.devicePath = ReadProperty(properties.get(), L"DevicePath");
  }
  return device;
}

// Offers every device of a category to `see`, until that returns true.
void WalkSystemDevices(DeviceCategory category, const std::function<bool(IMoniker*)>& see) {
  const GUID& id = category == DeviceCategory::kVideoInput ? zem::CLSID_VideoInputDeviceCategory
                                                           : zem::CLSID_AudioInputDeviceCategory;
  ComPtr<ICreateDevEnum> system;
  ComPtr<IEnumMoniker> monikers;
  if (FAILED(CoCreateInstance(zem::CLSID_SystemDeviceEnum, nullptr, CLSCTX_INPROC,
                              zem::IID_ICreateDevEnum, system.ReceiveVoid())) ||
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

std::wstring ProgramFolder() {
  std::array<wchar_t, 1024> path = {};
  GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size() - 1));
  const std::wstring whole = path.data();
  return whole.substr(0, whole.find_last_of(L'\\'));
}

// "vid_5a45&pid_8c00", as it stands in a camera's display name.
std::wstring IdPattern(const DeviceSelection& selection) {
  const std::wstring settings = ProgramFolder() + L"\\zem_setting.ini";
  const auto setting = [&](const wchar_t* key, unsigned otherwise) {
    return GetPrivateProfileIntW(L"AP", key, static_cast<INT>(otherwise), settings.c_str());
  };
  const bool isDefault = !selection.vendorId && !selection.productId;
  const unsigned vendor = isDefault ? setting(L"DeviceVid", kDefaultVendorId)
                                    : selection.vendorId.value_or(kDefaultVendorId);
  const unsigned product = isDefault ? setting(L"DevicePid", kDefaultProductId)
                                     : selection.productId.value_or(kDefaultProductId);
  std::array<wchar_t, 64> pattern = {};
  _snwprintf(pattern.data(), pattern.size() - 1, L"vid_%.4x&pid_%.4x", vendor, product);
  return pattern.data();
}

bool Matches(const SystemDevice& device, const DeviceSelection& selection,
             const std::wstring& pattern) {
  const std::wstring name = device.displayName.substr(0, kNameLength);
  if (!selection.displayName.empty()) {
    return zem::EqualIgnoringCase(name, Widen(selection.displayName).substr(0, kNameLength));
  }
  if (!selection.devicePath.empty()) {
    return zem::EqualIgnoringCase(device.devicePath, Widen(selection.devicePath));
  }
  // The last position, where the pattern would end the name, does not count.
  const std::size_t at = name.find(pattern);
  return at != std::wstring::npos && at + pattern.size() < name.size();
}

}  // namespace

std::vector<SystemDevice> ListSystemDevices(DeviceCategory category) {
  std::vector<SystemDevice> devices;
  WalkSystemDevices(category, [&](IMoniker* device) {
    devices.push_back(Describe(device));
    return false;
  });
  return devices;
}

ZemResult FindCamera(const DeviceSelection& selection, zem::ComPtr<IBaseFilter>& camera) {
  const bool isNamed = !selection.displayName.empty() || !selection.devicePath.empty();
  const std::wstring pattern = isNamed ? L"" : IdPattern(selection);
  unsigned toSkip = isNamed ? 0 : selection.index;
  ZemResult result = ZEM_E_FAIL;
  WalkSystemDevices(DeviceCategory::kVideoInput, [&](IMoniker* device) {
    if (!Matches(Describe(device), selection, pattern)) {
      return false;
    }
    ComPtr<IBaseFilter> found;
    result = device->BindToObject(nullptr, nullptr, zem::IID_IBaseFilter, found.ReceiveVoid());
    if (result < 0 || !found) {
      result = result < 0 ? result : ZEM_E_FAIL;
      return true;
    }
    if (toSkip > 0) {
      --toSkip;
      result = ZEM_E_FAIL;
      return false;
    }
    camera = std::move(found);
    return true;
  });
  return result;
}

}  // namespace zemctl
