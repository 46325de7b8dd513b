#include "tools/zemctl/camera/traced_devices.h"

#include <utility>

#include "simulator/device_list.h"
#include "tools/zemctl/camera/only_device.h"
#include "tools/zemctl/camera/system_devices.h"
#include "tools/zemctl/camera/watched_camera.h"
#include "tools/zemctl/frame/bytes.h"

namespace zemctl {
namespace {

using zem::ComPtr;
using zem::simulator::ComObject;
using zem::simulator::ListedDevice;
using zem::simulator::QueryOne;

// Lists the devices of one category at a time.
class DeviceEnumerator : public ComObject<ICreateDevEnum> {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    return QueryOne<ICreateDevEnum>(this, zem::IID_ICreateDevEnum, iid, object);
  }

  HRESULT STDMETHODCALLTYPE CreateClassEnumerator(REFCLSID category, IEnumMoniker** enumerator,
                                                  DWORD flags) override {
    if (enumerator == nullptr) {
      return E_POINTER;
    }
    *enumerator = nullptr;
    std::vector<ListedDevice> devices;
    if (const HRESULT result = List(category, flags, devices); FAILED(result)) {
      return result;
    }
    for (ListedDevice& device : devices) {
      device.category = category;
    }
    return ComPtr<ICreateDevEnum>::Adopt(
               zem::simulator::MakeDeviceEnumerator(std::move(devices), nullptr))
        ->CreateClassEnumerator(category, enumerator, flags);
  }

 protected:
  virtual HRESULT List(REFCLSID category, DWORD flags, std::vector<ListedDevice>& devices) = 0;
};

std::optional<std::string> TextOrNone(const std::string& text) {
  return text.empty() ? std::nullopt : std::optional(text);
}

std::optional<std::wstring> WideOrNone(const std::optional<std::string>& text) {
  return text ? std::optional(Widen(*text)) : std::nullopt;
}

class TracedEnumerator : public DeviceEnumerator {
 public:
  TracedEnumerator(ComPtr<ICreateDevEnum> system, std::shared_ptr<Trace> trace)
      : system_(std::move(system)), trace_(std::move(trace)) {}

 protected:
  HRESULT List(REFCLSID category, DWORD flags, std::vector<ListedDevice>& devices) override {
    TracedDevices list;
    list.isAudio = category == zem::CLSID_AudioInputDeviceCategory;
    ComPtr<IEnumMoniker> monikers;
    list.result = system_->CreateClassEnumerator(category, monikers.Receive(), flags);
    while (SUCCEEDED(list.result) && monikers) {
      ComPtr<IMoniker> moniker;
      if (monikers->Next(1, moniker.Receive(), nullptr) != S_OK) {
        break;
      }
      const SystemDevice device = DescribeDevice(moniker.get());
      list.devices.push_back({TextOrNone(device.name), TextOrNone(device.displayName),
                              TextOrNone(device.devicePath), TextOrNone(device.place)});
      devices.push_back(Listed(device, std::move(moniker)));
    }
    const HRESULT result = list.result;
    trace_->WriteDevices(std::move(list));
    return result;
  }

 private:
  ListedDevice Listed(const SystemDevice& device, ComPtr<IMoniker> moniker) const {
    ListedDevice listed;
    listed.displayName = Widen(device.displayName);
    listed.hasNullName = device.displayName.empty();
    listed.devicePath = WideOrNone(TextOrNone(device.devicePath));
    listed.friendlyName = WideOrNone(TextOrNone(device.name));
    listed.bindOnce =
        [trace = trace_, path = device.displayName,
         held = std::make_shared<ComPtr<IMoniker>>(std::move(moniker))](IBaseFilter** filter) {
          ComPtr<IBaseFilter> bound;
          TracedOpening opening{trace->CameraOf(path), path, S_OK};
          opening.result =
              (*held)->BindToObject(nullptr, nullptr, zem::IID_IBaseFilter, bound.ReceiveVoid());
          const HRESULT result = opening.result;
          trace->Write(std::move(opening));
          if (bound) {
            *filter = Watch(std::move(bound), MakeTracer(trace->CameraOf(path))).Detach();
          }
          return result;
        };
    return listed;
  }

  ComPtr<ICreateDevEnum> system_;
  std::shared_ptr<Trace> trace_;
};

class ReplayedEnumerator : public DeviceEnumerator {
 public:
  explicit ReplayedEnumerator(std::shared_ptr<Replay> replay) : replay_(std::move(replay)) {}

 protected:
  HRESULT List(REFCLSID category, DWORD /*flags*/, std::vector<ListedDevice>& devices) override {
    const TracedDevices list =
        replay_->ListDevices(category == zem::CLSID_AudioInputDeviceCategory);
    for (const TracedDevice& device : list.devices) {
      devices.push_back(Listed(device));
    }
    return list.result;
  }

 private:
  ListedDevice Listed(const TracedDevice& device) const {
    ListedDevice listed;
    listed.displayName = Widen(device.path.value_or(""));
    listed.hasNullName = !device.path;
    listed.devicePath = WideOrNone(device.devicePath);
    listed.friendlyName = WideOrNone(device.name);
    listed.bindOnce = [replay = replay_, path = device.path.value_or("")](IBaseFilter** filter) {
      const TracedOpening opening = replay->Open(path);
      if (SUCCEEDED(opening.result)) {
        *filter = MakeReplayedCamera(replay, opening.camera).Detach();
      }
      return opening.result;
    };
    return listed;
  }

  std::shared_ptr<Replay> replay_;
};

}  // namespace

ComPtr<ICreateDevEnum> TraceDevices(ComPtr<ICreateDevEnum> system, std::shared_ptr<Trace> trace) {
  return ComPtr<ICreateDevEnum>::Adopt(new TracedEnumerator(std::move(system), std::move(trace)));
}

ComPtr<ICreateDevEnum> ReplayDevices(std::shared_ptr<Replay> replay) {
  return ComPtr<ICreateDevEnum>::Adopt(new ReplayedEnumerator(std::move(replay)));
}

HRESULT MakeThreadDevices(const std::function<HRESULT(ICreateDevEnum** devices)>& system,
                          ICreateDevEnum** devices) {
  ComPtr<ICreateDevEnum> list;
  if (IBaseFilter* const only = OnlyDevice::OfThread()) {
    list = ListOnly(only);
  } else {
    if (const auto replay = ThreadReplay()) {
      list = ReplayDevices(replay);
    } else if (const HRESULT result = system(list.Receive()); FAILED(result)) {
      return result;
    }
    if (auto trace = ThreadTrace()) {
      list = TraceDevices(std::move(list), std::move(trace));
    }
  }
  *devices = list.Detach();
  return S_OK;
}

}  // namespace zemctl
