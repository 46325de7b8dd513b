#include "simulator/device_list.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "platform/com_unused.h"
#include "simulator/system_results.h"
#include "simulator/system_text.h"

namespace zem::simulator {
namespace {

// QueryInterface for an object that nobody asks for another interface.
HRESULT QueryNone(void** object) {
  if (object == nullptr) {
    return E_POINTER;
  }
  *object = nullptr;
  return E_NOINTERFACE;
}

class PropertyBag : public ComObject<IPropertyBag> {
 public:
  PropertyBag(ListedDevice device, CallGate* gate) : device_(std::move(device)), gate_(gate) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    return QueryOne<IPropertyBag>(this, IID_IPropertyBag, iid, object);
  }

  HRESULT STDMETHODCALLTYPE Read(LPCOLESTR name, VARIANT* value, IErrorLog* /*log*/) override {
    const HRESULT entered = Enter(gate_, "Read");
    if (FAILED(entered)) {
      return entered;
    }
    if (AnyNull(name, value)) {
      return E_POINTER;
    }
    const bool isPath = std::wstring_view(name) == L"DevicePath";
    if (isPath && device_.oddDevicePath) {
      *value = *device_.oddDevicePath;
      return entered;
    }
    const bool isName = std::wstring_view(name) == L"FriendlyName";
    const std::optional<std::wstring> text = isPath   ? device_.devicePath
                                             : isName ? device_.friendlyName
                                                      : std::nullopt;
    if (!text) {
      return kNotFoundResult;
    }
    value->vt = VT_BSTR;
    value->bstrVal = MakeVariantText(*text);
    return entered;
  }

  HRESULT STDMETHODCALLTYPE Write(LPCOLESTR /*name*/, VARIANT* /*value*/) override {
    return E_NOTIMPL;
  }

 private:
  ListedDevice device_;
  CallGate* gate_;
};

class Moniker : public BoundOnlyMoniker<ComObject<IMoniker>> {
 public:
  Moniker(ListedDevice device, CallGate* gate) : device_(std::move(device)), gate_(gate) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID /*iid*/, void** object) override {
    return QueryNone(object);
  }

  HRESULT STDMETHODCALLTYPE BindToObject(IBindCtx* /*context*/, IMoniker* /*toLeft*/, REFIID iid,
                                         void** object) override {
    const HRESULT entered = Enter(gate_, "BindToObject");
    if (FAILED(entered)) {
      return entered;
    }
    if (object == nullptr) {
      return E_POINTER;
    }
    if (!(iid == IID_IBaseFilter)) {
      return QueryNone(object);
    }
    if (device_.bindOnce) {
      IBaseFilter* filter = nullptr;
      const HRESULT bound = device_.bindOnce(&filter);
      *object = filter;
      return GatedResult(entered, bound);
    }
    *object = device_.bind();
    return GatedResult(entered, device_.bindResult);
  }

  HRESULT STDMETHODCALLTYPE BindToStorage(IBindCtx* /*context*/, IMoniker* /*toLeft*/, REFIID iid,
                                          void** object) override {
    const HRESULT entered = Enter(gate_, "BindToStorage");
    if (FAILED(entered)) {
      return entered;
    }
    if (object == nullptr) {
      return E_POINTER;
    }
    if (!(iid == IID_IPropertyBag)) {
      return QueryNone(object);
    }
    *object =
        device_.hasNullBag ? nullptr : static_cast<IPropertyBag*>(new PropertyBag(device_, gate_));
    return entered;
  }

  HRESULT STDMETHODCALLTYPE GetDisplayName(IBindCtx* /*context*/, IMoniker* /*toLeft*/,
                                           LPOLESTR* name) override {
    const HRESULT entered = Enter(gate_, "GetDisplayName");
    if (FAILED(entered)) {
      return entered;
    }
    if (name == nullptr) {
      return E_POINTER;
    }
    *name = device_.hasNullName ? nullptr : MakeTaskText(device_.displayName);
    return entered;
  }

 private:
  ListedDevice device_;
  CallGate* gate_;
};

class MonikerEnumerator : public ForwardEnumerator<ComObject<IEnumMoniker>> {
 public:
  MonikerEnumerator(std::vector<ListedDevice> devices, CallGate* gate)
      : devices_(std::move(devices)), gate_(gate) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID /*iid*/, void** object) override {
    return QueryNone(object);
  }

  HRESULT STDMETHODCALLTYPE Next(ULONG count, IMoniker** monikers, ULONG* fetched) override {
    if (const HRESULT refused = Enter(gate_, "Next"); FAILED(refused)) {
      return refused;
    }
    if (monikers == nullptr) {
      return E_POINTER;
    }
    ULONG made = 0;
    for (; made < count && next_ < devices_.size(); ++made, ++next_) {
      monikers[made] = devices_[next_].isNull ? nullptr : new Moniker(devices_[next_], gate_);
    }
    if (fetched != nullptr) {
      *fetched = made;
    }
    return made == count ? S_OK : S_FALSE;
  }

 private:
  std::vector<ListedDevice> devices_;
  CallGate* gate_;
  std::size_t next_ = 0;
};

class DeviceEnumerator : public ComObject<ICreateDevEnum> {
 public:
  DeviceEnumerator(std::vector<ListedDevice> devices, CallGate* gate)
      : devices_(std::move(devices)), gate_(gate) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    return QueryOne<ICreateDevEnum>(this, IID_ICreateDevEnum, iid, object);
  }

  // As on a real system, an empty category is a success with the result 1 and no enumerator.
  HRESULT STDMETHODCALLTYPE CreateClassEnumerator(REFCLSID category, IEnumMoniker** enumerator,
                                                  DWORD /*flags*/) override {
    const HRESULT entered = Enter(gate_, "CreateClassEnumerator");
    if (FAILED(entered)) {
      return entered;
    }
    if (enumerator == nullptr) {
      return E_POINTER;
    }
    std::vector<ListedDevice> members;
    std::copy_if(devices_.begin(), devices_.end(), std::back_inserter(members),
                 [&](const ListedDevice& device) { return device.category == category; });
    *enumerator = members.empty() ? nullptr : new MonikerEnumerator(std::move(members), gate_);
    return GatedResult(entered, *enumerator == nullptr ? S_FALSE : S_OK);
  }

 private:
  std::vector<ListedDevice> devices_;
  CallGate* gate_;
};

}  // namespace

ICreateDevEnum* MakeDeviceEnumerator(std::vector<ListedDevice> devices, CallGate* gate) {
  return new DeviceEnumerator(std::move(devices), gate);
}

}  // namespace zem::simulator
