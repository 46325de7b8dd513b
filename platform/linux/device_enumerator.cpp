#include "platform/linux/device_enumerator.h"

#include <array>
#include <cstddef>
#include <memory>
#include <new>
#include <string_view>
#include <utility>

#include "platform/any_null.h"
#include "platform/com_object.h"
#include "platform/com_ptr.h"
#include "platform/com_unused.h"
#include "platform/linux/camera_filter.h"
#include "platform/linux/errors.h"
#include "platform/linux/microphones.h"
#include "platform/linux/video_devices.h"
#include "platform/portable/task_text.h"
#include "platform/portable/utf8.h"

namespace zem::platform {
namespace {

HRESULT Bind(const VideoDevice& device, IBaseFilter** filter) { return BindCamera(device, filter); }
HRESULT Bind(const Microphone& device, IBaseFilter** filter) {
  return BindMicrophone(device, filter);
}

wchar_t* MakeTaskText(const PathText& text) {
  std::array<wchar_t, PATH_MAX> wide = {};
  WidenText(text.view(), wide);
  return AllocateTaskText(wide.data());
}

// What a moniker and its property bag tell of a device.
template <class Device>
class DeviceMoniker : public BoundOnlyMoniker<CountedObject<IMoniker>> {
 public:
  explicit DeviceMoniker(const Device& device) : device_(device) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override;
  HRESULT STDMETHODCALLTYPE BindToObject(IBindCtx* /*context*/, IMoniker* /*toLeft*/, REFIID iid,
                                         void** object) override {
    if (object == nullptr) {
      return E_POINTER;
    }
    *object = nullptr;
    return iid == IID_IBaseFilter ? Bind(device_, reinterpret_cast<IBaseFilter**>(object))
                                  : E_NOINTERFACE;
  }

  HRESULT STDMETHODCALLTYPE BindToStorage(IBindCtx* /*context*/, IMoniker* /*toLeft*/, REFIID iid,
                                          void** object) override;

  HRESULT STDMETHODCALLTYPE GetDisplayName(IBindCtx* /*context*/, IMoniker* /*toLeft*/,
                                           LPOLESTR* name) override {
    if (name == nullptr) {
      return E_POINTER;
    }
    *name = MakeTaskText(device_.DisplayName());
    return *name != nullptr ? S_OK : ResultOfError(kOutOfMemory);
  }

 private:
  Device device_;
};

template <class Device>
class DeviceProperties : public CountedObject<IPropertyBag> {
 public:
  explicit DeviceProperties(const Device& device) : device_(device) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    return QueryOne<IPropertyBag>(this, IID_IPropertyBag, iid, object);
  }

  HRESULT STDMETHODCALLTYPE Read(LPCOLESTR name, VARIANT* value, IErrorLog* /*log*/) override {
    if (AnyNull(name, value)) {
      return E_POINTER;
    }
    const std::wstring_view wanted = name;
    const PathText text = wanted == L"DevicePath"     ? device_.DevicePath()
                          : wanted == L"FriendlyName" ? device_.FriendlyName()
                                                      : PathText();
    if (text.empty()) {
      return ResultOfError(kNotFound);
    }
    value->vt = VT_BSTR;
    value->bstrVal = MakeTaskText(text);
    return value->bstrVal != nullptr ? S_OK : ResultOfError(kOutOfMemory);
  }

  HRESULT STDMETHODCALLTYPE Write(LPCOLESTR /*name*/, VARIANT* /*value*/) override {
    return E_NOTIMPL;
  }

 private:
  Device device_;
};

template <class Device>
HRESULT DeviceMoniker<Device>::QueryInterface(REFIID /*iid*/, void** object) {
  if (object == nullptr) {
    return E_POINTER;
  }
  *object = nullptr;
  return E_NOINTERFACE;
}

template <class Device>
HRESULT DeviceMoniker<Device>::BindToStorage(IBindCtx* /*context*/, IMoniker* /*toLeft*/,
                                             REFIID iid, void** object) {
  if (object == nullptr) {
    return E_POINTER;
  }
  *object = nullptr;
  if (!(iid == IID_IPropertyBag)) {
    return E_NOINTERFACE;
  }
  IPropertyBag* const bag = new (std::nothrow) DeviceProperties<Device>(device_);
  *object = bag;
  return bag != nullptr ? S_OK : ResultOfError(kOutOfMemory);
}

// The devices as they were when the enumerator was made.
template <class List, class Device>
class DeviceMonikers : public ForwardEnumerator<CountedObject<IEnumMoniker>> {
 public:
  explicit DeviceMonikers(List list) : list_(std::move(list)) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID /*iid*/, void** object) override {
    if (object == nullptr) {
      return E_POINTER;
    }
    *object = nullptr;
    return E_NOINTERFACE;
  }

  HRESULT STDMETHODCALLTYPE Next(ULONG count, IMoniker** monikers, ULONG* fetched) override {
    if (monikers == nullptr) {
      return E_POINTER;
    }
    ULONG made = 0;
    for (; made < count && next_ < list_.count; ++made, ++next_) {
      monikers[made] = new (std::nothrow) DeviceMoniker<Device>(list_.devices[next_]);
      if (monikers[made] == nullptr) {
        return ResultOfError(kOutOfMemory);
      }
    }
    if (fetched != nullptr) {
      *fetched = made;
    }
    return made == count ? S_OK : S_FALSE;
  }

 private:
  List list_;
  std::size_t next_ = 0;
};

template <class Device, class List>
HRESULT MakeMonikers(List list, IEnumMoniker** enumerator) {
  if (list.devices == nullptr) {
    return ResultOfError(kOutOfMemory);
  }
  if (list.count == 0) {
    return S_FALSE;
  }
  *enumerator = new (std::nothrow) DeviceMonikers<List, Device>(std::move(list));
  return *enumerator != nullptr ? S_OK : ResultOfError(kOutOfMemory);
}

class DeviceEnumerator : public CountedObject<ICreateDevEnum> {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    return QueryOne<ICreateDevEnum>(this, IID_ICreateDevEnum, iid, object);
  }

  HRESULT STDMETHODCALLTYPE CreateClassEnumerator(REFCLSID category, IEnumMoniker** enumerator,
                                                  DWORD /*flags*/) override {
    if (enumerator == nullptr) {
      return E_POINTER;
    }
    *enumerator = nullptr;
    if (category == CLSID_VideoInputDeviceCategory) {
      return MakeMonikers<VideoDevice>(ListVideoDevices(), enumerator);
    }
    if (category == CLSID_AudioInputDeviceCategory) {
      return MakeMonikers<Microphone>(ListMicrophones(), enumerator);
    }
    return S_FALSE;
  }
};

}  // namespace

HRESULT MakeDeviceEnumerator(ICreateDevEnum** enumerator) {
  *enumerator = new (std::nothrow) DeviceEnumerator();
  return *enumerator != nullptr ? S_OK : ResultOfError(kOutOfMemory);
}

}  // namespace zem::platform
