#include "device/discovery.h"

#include <array>
#include <optional>
#include <string_view>

#include "device/extension_units.h"
#include "device/settings.h"
#include "device/topology.h"
#include "platform/platform.h"
#include "platform/result.h"
#include "platform/text.h"

namespace zem {
namespace {

// Characters of a display name that are looked at; a longer name is compared by its first 255.
constexpr std::size_t kNameLength = 255;
using NameBuffer = std::array<wchar_t, kNameLength + 1>;

// The devices of one category, one after another.
class DeviceWalk {
 public:
  // Creates the system's enumerators. An empty category is a success without an enumerator.
  HRESULT Open(const GUID& category) {
    ComPtr<ICreateDevEnum> system;
    if (const HRESULT result = platform::CreateDeviceEnumerator(system.Receive()); FAILED(result)) {
      return result;
    }
    return system->CreateClassEnumerator(category, devices_.Receive(), 0);
  }

  bool empty() const { return !devices_; }

  // Fetches the next device. kFail once there is none left, the enumeration's own failure if it has
  // one.
  HRESULT Next(ComPtr<IMoniker>& device) {
    const HRESULT result = devices_->Next(1, device.Receive(), nullptr);
    if (result == S_OK && device) {
      return S_OK;
    }
    device.Reset();
    return FAILED(result) ? result : kFail;
  }

 private:
  ComPtr<IEnumMoniker> devices_;
};

bool ReadDisplayName(IMoniker* device, NameBuffer& name) {
  wchar_t* text = nullptr;
  if (FAILED(device->GetDisplayName(nullptr, nullptr, &text)) || text == nullptr) {
    return false;
  }
  const std::wstring_view whole = text;
  name[whole.copy(name.data(), kNameLength)] = L'\0';
  platform::FreeTaskMemory(text);
  return true;
}

// The platform's own result. `filter` holds what came with it, also with a failure.
HRESULT BindAsItComes(IMoniker* device, ComPtr<IBaseFilter>& filter) {
  return device->BindToObject(nullptr, nullptr, IID_IBaseFilter, filter.ReceiveVoid());
}

// A binding that succeeds without a filter counts as no device; a filter that comes with a failure
// is given back.
HRESULT Bind(IMoniker* device, ComPtr<IBaseFilter>& filter) {
  HRESULT result = BindAsItComes(device, filter);
  if (SUCCEEDED(result) && !filter) {
    result = kFail;
  }
  if (FAILED(result)) {
    filter.Reset();
  }
  return result;
}

// Deliberate: the last position, where the pattern would end the name, is never tried.
bool ContainsBeforeEnd(std::wstring_view name, std::wstring_view pattern) {
  return name.size() > pattern.size() &&
         name.substr(0, name.size() - 1).find(pattern) != std::wstring_view::npos;
}

// COM initialised for the calling thread as long as a search lasts, or for good if that keeps it.
class ComOfASearch {
 public:
  ComOfASearch() { platform::InitializeCom(); }
  ~ComOfASearch() {
    if (!kept_) {
      platform::UninitializeCom();
    }
  }
  ComOfASearch(const ComOfASearch&) = delete;
  ComOfASearch& operator=(const ComOfASearch&) = delete;

  void Keep() { kept_ = true; }

 private:
  bool kept_ = false;
};

// Offers the devices of `category` to `choose` one after another until it ends the search with a
// result; the filter it bound by then goes to *filter. COM is deliberately left initialised on
// every path.
template <class Choose>
HRESULT FindDevice(IBaseFilter** filter, const GUID& category, Choose choose) {
  platform::InitializeCom();
  DeviceWalk walk;
  if (const HRESULT result = walk.Open(category); FAILED(result)) {
    return result;
  }
  if (walk.empty()) {
    // The text speaks of video also when the category is another one.
    platform::DebuggerOutput(L"No video capture device was detected.\r\n\r\n");
    return kFail;
  }
  for (;;) {
    ComPtr<IMoniker> device;
    if (const HRESULT result = walk.Next(device); FAILED(result)) {
      return result;
    }
    ComPtr<IBaseFilter> found;
    if (const std::optional<HRESULT> chosen = choose(device.get(), found)) {
      *filter = found.Detach();
      return *chosen;
    }
  }
}

bool HasDevicePath(IMoniker* device, std::wstring_view wanted) {
  ComPtr<IPropertyBag> properties;
  if (FAILED(device->BindToStorage(nullptr, nullptr, IID_IPropertyBag, properties.ReceiveVoid())) ||
      !properties) {
    return false;
  }
  VARIANT value;
  platform::InitVariant(&value);
  const bool equal = SUCCEEDED(properties->Read(L"DevicePath", &value, nullptr)) &&
                     value.vt == VT_BSTR && value.bstrVal != nullptr &&
                     EqualIgnoringCase(value.bstrVal, wanted);
  platform::ClearVariant(&value);
  return equal;
}

}  // namespace

HRESULT FindCaptureDevice(IBaseFilter** filter, unsigned vid, unsigned pid, int index) {
  ComOfASearch com;
  DeviceWalk walk;
  if (const HRESULT result = walk.Open(CLSID_VideoInputDeviceCategory); FAILED(result)) {
    return result;
  }
  if (walk.empty()) {
    return kFail;
  }
  std::array<wchar_t, 64> pattern = {};
  platform::FormatWide(pattern, L"vid_%.4x&pid_%.4x", vid, pid);

  int matches = 0;
  for (;;) {
    ComPtr<IMoniker> device;
    if (const HRESULT result = walk.Next(device); FAILED(result)) {
      return result;
    }
    NameBuffer name = {};
    if (!ReadDisplayName(device.get(), name) || !ContainsBeforeEnd(name.data(), pattern.data())) {
      continue;
    }
    ComPtr<IBaseFilter> found;
    const HRESULT bound = Bind(device.get(), found);
    *filter = found.Detach();
    if (FAILED(bound) || matches == index) {
      com.Keep();
      return FAILED(bound) ? bound : S_OK;
    }
    // Deliberate: the skipped match keeps its reference.
    ++matches;
  }
}

HRESULT FindDefaultDevice(IBaseFilter** filter, int index) {
  const DeviceIds ids = ReadDefaultDeviceIds();
  return FindCaptureDevice(filter, ids.vendor, ids.product, index);
}

HRESULT OpenDefault(ComPtr<IBaseFilter>& device) { return FindDefaultDevice(device.Receive(), 0); }

HRESULT ShareOrOpenDefault(IBaseFilter* filter, ComPtr<IBaseFilter>& device) {
  if (filter == nullptr) {
    return OpenDefault(device);
  }
  device = ComPtr<IBaseFilter>::Share(filter);
  return S_OK;
}

HRESULT FindVendorXuDevice(IBaseFilter** filter) {
  return FindDevice(filter, CLSID_VideoInputDeviceCategory,
                    [](IMoniker* device, ComPtr<IBaseFilter>& found) -> std::optional<HRESULT> {
                      // Deliberate: the result of the binding is not looked at, and any node but 0
                      // will do, also those that say that the topology could not be read or has no
                      // such unit. Callers depend on how wide this is.
                      static_cast<void>(BindAsItComes(device, found));
                      if (!found || FindXuNode(found.get(), VendorXu) == 0) {
                        return std::nullopt;
                      }
                      return S_OK;
                    });
}

HRESULT FindDeviceByDisplayName(IBaseFilter** filter, const wchar_t* name, const GUID* category) {
  const std::wstring_view wanted = std::wstring_view(name).substr(0, kNameLength);
  return FindDevice(
      filter, category != nullptr ? *category : CLSID_VideoInputDeviceCategory,
      [wanted](IMoniker* device, ComPtr<IBaseFilter>& found) -> std::optional<HRESULT> {
        NameBuffer present = {};
        if (!ReadDisplayName(device, present) || !EqualIgnoringCase(present.data(), wanted)) {
          return std::nullopt;
        }
        return Bind(device, found);
      });
}

HRESULT FindDeviceByDevicePath(IBaseFilter** filter, const wchar_t* devicePath) {
  return FindDevice(
      filter, CLSID_VideoInputDeviceCategory,
      [devicePath](IMoniker* device, ComPtr<IBaseFilter>& found) -> std::optional<HRESULT> {
        if (!HasDevicePath(device, devicePath)) {
          return std::nullopt;
        }
        return Bind(device, found);
      });
}

}  // namespace zem
