// ZemSimulator.dll: the COM in-process server around the simulated cameras.
#include <array>
#include <cstdio>
#include <exception>
#include <memory>
#include <string>
#include <utility>

#include "simulator/ZemSimulator.h"
#include "simulator/options.h"
#include "simulator/simulated_system.h"
#include "simulator/wide_text.h"
#include "simulator/windows/private_devices.h"
#include "simulator/windows/registration.h"
#include "simulator/windows/volume_hooks.h"

namespace zem::simulator {
namespace {

static_assert(kMostCameras == ZEM_SIMULATOR_MAX_CAMERAS);

HMODULE thisModule = nullptr;

struct Simulator {
  SimulatedSystem system;
  bool isPrivate = false;
  std::string lastError;
};

Simulator& TheSimulator() {
  static Simulator simulator;
  return simulator;
}

std::wstring ModulePath() {
  std::array<wchar_t, MAX_PATH> path = {};
  GetModuleFileNameW(thisModule, path.data(), static_cast<DWORD>(path.size()));
  return path.data();
}

std::wstring DevicePath(const SimulatedDevice& device) { return L"\\\\?\\" + device.instanceName; }

class PrivateListing : public DeviceListing {
 public:
  HRESULT List(const SimulatedDevice& device) override {
    PrivateDevices::List({DisplayName(device.category, device.instanceName), DevicePath(device),
                          device.category, device.make, Widen(device.name)});
    return S_OK;
  }

  void Unlist(const GUID& category, const std::wstring& instanceName) override {
    PrivateDevices::Unlist(DisplayName(category, instanceName));
  }

 private:
  PrivateDevices devices_;
};

class RegistryListing : public DeviceListing {
 public:
  HRESULT List(const SimulatedDevice& device) override {
    const bool isCamera = device.category == CLSID_VideoInputDeviceCategory;
    return RegisterDevice(
        isCamera ? CameraClassId(device.camera) : MicrophoneClassId(device.camera), device.category,
        device.instanceName, Widen(device.name), DevicePath(device), ModulePath());
  }

  void Unlist(const GUID& category, const std::wstring& instanceName) override {
    UnlistDevice(category, instanceName);
  }

  void Forget(std::size_t camera) override {
    UnregisterClass(CameraClassId(camera));
    UnregisterClass(MicrophoneClassId(camera));
  }
};

void Start(const char* text, bool isPrivate) {
  const Options options = ParseOptions(text != nullptr ? text : "");
  SimulatedSystem& system = TheSimulator().system;
  system.Stop();
  TheSimulator().isPrivate = isPrivate;
  std::unique_ptr<DeviceListing> listing;
  if (isPrivate) {
    listing = std::make_unique<PrivateListing>();
  } else {
    listing = std::make_unique<RegistryListing>();
  }
  // In private the machine's own volumes are out of reach, also without any simulated one.
  system.Start(options, std::move(listing),
               [isPrivate](const SimulatedSystem::BootLoaders& bootLoaders) {
                 return isPrivate || !bootLoaders.empty()
                            ? std::make_shared<VolumeHooks>(bootLoaders, isPrivate)
                            : nullptr;
               });
}

class FilterFactory : public ComObject<IClassFactory> {
 public:
  explicit FilterFactory(MakeFilter make) : make_(std::move(make)) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    return QueryOne<IClassFactory>(this, ::IID_IClassFactory, iid, object);
  }

  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
    if (object == nullptr) {
      return E_POINTER;
    }
    *object = nullptr;
    if (outer != nullptr) {
      return CLASS_E_NOAGGREGATION;
    }
    IBaseFilter* const filter = make_();
    const HRESULT result = filter->QueryInterface(iid, object);
    filter->Release();
    return result;
  }

  HRESULT STDMETHODCALLTYPE LockServer(BOOL /*lock*/) override { return S_OK; }

 private:
  MakeFilter make_;
};

// What makes the filter of a class; nothing for a class that is not listed.
MakeFilter FindFilter(REFCLSID classId) {
  const SimulatedSystem& system = TheSimulator().system;
  for (std::size_t camera = 0; camera < kMostCameras; ++camera) {
    if (CameraClassId(camera) == classId) {
      return system.CameraFilter(camera);
    }
    if (MicrophoneClassId(camera) == classId) {
      return system.MicrophoneFilter(camera);
    }
  }
  return nullptr;
}

std::int32_t StartOrExplain(const char* options, bool isPrivate) {
  try {
    TheSimulator().lastError.clear();
    Start(options, isPrivate);
    return S_OK;
  } catch (const std::exception& error) {
    TheSimulator().lastError = error.what();
    TheSimulator().system.Abandon();
    TheSimulator().isPrivate = false;
    return E_FAIL;
  }
}

}  // namespace
}  // namespace zem::simulator

using zem::simulator::TheSimulator;

extern "C" {

std::int32_t ZemSimulatorStartPrivate(const char* options) {
  return zem::simulator::StartOrExplain(options, true);
}

std::int32_t ZemSimulatorStart(const char* options) {
  return zem::simulator::StartOrExplain(options, false);
}

void ZemSimulatorStop(void) {
  try {
    TheSimulator().lastError.clear();
    TheSimulator().isPrivate = false;
    TheSimulator().system.Stop();
  } catch (const std::exception& error) {
    TheSimulator().lastError = error.what();
  }
}

const char* ZemSimulatorLastError(void) {
  const std::string& own = TheSimulator().lastError;
  return own.empty() ? TheSimulator().system.lastError().c_str() : own.c_str();
}

std::int32_t ZemSimulatorDevices(void** enumerator) {
  *enumerator =
      TheSimulator().isPrivate ? zem::simulator::PrivateDevices::MakeEnumerator() : nullptr;
  return *enumerator != nullptr ? S_OK : E_FAIL;
}

std::int32_t ZemSimulatorObjects(void) { return zem::simulator::liveComObjects; }

BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID /*reserved*/) {
  if (reason == DLL_PROCESS_ATTACH) {
    zem::simulator::thisModule = instance;
  }
  return TRUE;
}

HRESULT WINAPI DllGetClassObject(REFCLSID classId, REFIID iid, LPVOID* object) {
  if (object == nullptr) {
    return E_POINTER;
  }
  *object = nullptr;
  if (TheSimulator().isPrivate) {
    return CLASS_E_CLASSNOTAVAILABLE;  // a camera that the system lists is none of them
  }
  if (TheSimulator().system.isEmpty()) {
    // A process that found the registered camera by itself: it gets the default one.
    TheSimulator().system.AssumeDefaultCamera(nullptr);
  }
  const zem::simulator::MakeFilter make = zem::simulator::FindFilter(classId);
  if (!make) {
    return CLASS_E_CLASSNOTAVAILABLE;
  }
  auto* const factory = new zem::simulator::FilterFactory(make);
  const HRESULT result = factory->QueryInterface(iid, object);
  factory->Release();
  return result;
}

HRESULT WINAPI DllCanUnloadNow(void) {
  const bool idle = zem::simulator::liveComObjects == 0 && TheSimulator().system.isEmpty() &&
                    !TheSimulator().isPrivate;
  return idle ? S_OK : S_FALSE;
}

HRESULT WINAPI DllRegisterServer(void) { return ZemSimulatorStart(nullptr); }

HRESULT WINAPI DllUnregisterServer(void) {
  ZemSimulatorStop();
  // The camera that DllRegisterServer listed, in whichever process that was.
  TheSimulator().system.AssumeDefaultCamera(std::make_unique<zem::simulator::RegistryListing>());
  TheSimulator().system.Abandon();
  return S_OK;
}

}  // extern "C"
