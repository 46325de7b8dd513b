#include "tools/zemctl/camera/system_devices.h"

#include <windows.h>
// The headers below lean on windows.h.
#include <dshow.h>

#include <stdexcept>

#include "platform/com_ptr.h"

namespace zemctl {
namespace {

using zem::ComPtr;

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

}  // namespace

std::vector<SystemDevice> ListSystemDevices(DeviceCategory category) {
  const GUID& id = category == DeviceCategory::kVideoInput ? zem::CLSID_VideoInputDeviceCategory
                                                           : zem::CLSID_AudioInputDeviceCategory;
  ComPtr<ICreateDevEnum> system;
  ComPtr<IEnumMoniker> monikers;
  if (FAILED(CoCreateInstance(zem::CLSID_SystemDeviceEnum, nullptr, CLSCTX_INPROC,
                              zem::IID_ICreateDevEnum, system.ReceiveVoid())) ||
      FAILED(system->CreateClassEnumerator(id, monikers.Receive(), 0))) {
    throw std::runtime_error("the system's device enumerator does not answer");
  }
  std::vector<SystemDevice> devices;
  ComPtr<IMoniker> moniker;
  while (monikers && monikers->Next(1, moniker.Receive(), nullptr) == S_OK) {
    devices.push_back(Describe(moniker.get()));
  }
  return devices;
}

}  // namespace zemctl
