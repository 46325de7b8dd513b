// ZemSimulator.dll: the COM in-process server around the simulated cameras.
#include <array>
#include <cstdio>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "simulator/com_camera.h"
#include "simulator/com_microphone.h"
#include "simulator/options.h"
#include "simulator/windows/ZemSimulator.h"
#include "simulator/windows/private_devices.h"
#include "simulator/windows/registration.h"
#include "simulator/windows/volume_hooks.h"
#include "simulator/windows/wide_text.h"

namespace zem::simulator {
namespace {

HMODULE thisModule = nullptr;

// Makes a device's filter, with one reference for the caller.
using MakeFilter = std::function<IBaseFilter*()>;

struct RunningCamera {
  CameraOptions options;
  std::wstring instanceName;
  std::wstring microphoneName;
  std::shared_ptr<Camera> camera = nullptr;  // null until it is first listed
  std::shared_ptr<Microphone> microphone = nullptr;
  std::shared_ptr<BootLoader> bootLoader = nullptr;
};

struct Simulator {
  std::vector<RunningCamera> cameras;
  // Where they are listed: in this process only, or in the registry. Neither holds for the default
  // camera of a process that found it by itself.
  std::optional<PrivateDevices> privateDevices;
  bool inRegistry = false;
  std::optional<VolumeHooks> volumes;
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

// The part of a real camera's device path that its display name and path share.
std::wstring InstanceName(const CameraOptions& options, unsigned usbInterface, std::size_t index) {
  std::array<wchar_t, 128> name = {};
  _snwprintf(name.data(), name.size() - 1, L"usb#vid_%04x&pid_%04x&mi_%02x#zem-simulator&%u",
             options.vendorId, options.productId, usbInterface, static_cast<unsigned>(index));
  return name.data();
}

// A camera and its microphone, not listed yet.
RunningCamera Prepare(const CameraOptions& options, std::size_t index) {
  constexpr unsigned kVideoInterface = 0;
  constexpr unsigned kAudioInterface = 2;
  return {options, InstanceName(options, kVideoInterface, index),
          InstanceName(options, kAudioInterface, index)};
}

MakeFilter FilterMaker(std::shared_ptr<Camera> camera) {
  return [camera = std::move(camera)] { return MakeCameraFilter(camera, nullptr); };
}

MakeFilter FilterMaker(std::shared_ptr<Microphone> microphone) {
  return [microphone = std::move(microphone)] { return MakeMicrophoneFilter(microphone, nullptr); };
}

struct Device {
  GUID classId;
  GUID category;
  std::wstring instanceName;
  std::string name;
  MakeFilter make;
};

HRESULT List(const Device& device) {
  const std::wstring friendlyName = Widen(device.name);
  const std::wstring devicePath = L"\\\\?\\" + device.instanceName;
  if (!TheSimulator().privateDevices) {
    return RegisterDevice(device.classId, device.category, device.instanceName, friendlyName,
                          devicePath, ModulePath());
  }
  PrivateDevices::List({DisplayName(device.category, device.instanceName), devicePath,
                        device.category, device.make, friendlyName});
  return S_OK;
}

void UnlistOne(const GUID& category, const std::wstring& instanceName) {
  const Simulator& simulator = TheSimulator();
  if (simulator.privateDevices) {
    PrivateDevices::Unlist(DisplayName(category, instanceName));
  } else if (simulator.inRegistry) {
    UnlistDevice(category, instanceName);
  }
}

void Unlist(const std::wstring& cameraName, const std::wstring& microphoneName) {
  UnlistOne(CLSID_VideoInputDeviceCategory, cameraName);
  UnlistOne(CLSID_AudioInputDeviceCategory, microphoneName);
}

HRESULT ListMicrophone(std::size_t index) {
  RunningCamera& running = TheSimulator().cameras[index];
  if (!running.options.microphone) {
    return S_OK;
  }
  running.microphone = std::make_shared<Microphone>(Microphone{running.options.mixer});
  return List({MicrophoneClassId(index), CLSID_AudioInputDeviceCategory, running.microphoneName,
               running.options.name + " Microphone", FilterMaker(running.microphone)});
}

HRESULT ListCamera(std::size_t index);

// In the middle of a host's request: nothing may be thrown into it.
void ListAgain(std::size_t index) {
  try {
    static_cast<void>(ListCamera(index));
  } catch (const std::exception& error) {
    TheSimulator().lastError = error.what();
  }
}

// A camera that was unplugged comes back, once.
void Replug(std::size_t index) {
  std::erase_if(TheSimulator().cameras[index].options.faults,
                [](const Fault& fault) { return fault.kind == Fault::Kind::kReplug; });
  ListAgain(index);
}

// Puts a camera into the system's list as a new one, as if it had just been plugged in. Throws when
// its state file cannot be read or written.
HRESULT ListCamera(std::size_t index) {
  Simulator& simulator = TheSimulator();
  RunningCamera& running = simulator.cameras[index];
  const std::wstring instanceName = running.instanceName;
  std::function<void()> enterRomBoot;
  if (running.bootLoader) {
    enterRomBoot = [bootLoader = running.bootLoader] { bootLoader->EnterRomBoot(); };
  }
  if (running.camera) {
    SaveState(running.options, *running.camera);
  }
  running.camera = MakeCamera(running.options, std::move(enterRomBoot));
  SaveState(running.options, *running.camera);
  const HRESULT result = List({CameraClassId(index), CLSID_VideoInputDeviceCategory, instanceName,
                               running.options.name, FilterMaker(running.camera)});
  if (FAILED(result)) {
    return result;
  }
  running.camera->SetUnplugObserver([instanceName, microphoneName = running.microphoneName] {
    Unlist(instanceName, microphoneName);
  });
  running.camera->SetReplugObserver([index] { Replug(index); });
  return ListMicrophone(index);
}

// A camera is a video device only while its firmware runs.
void FollowStage(std::size_t index, BootStage stage) {
  auto& cameras = TheSimulator().cameras;
  if (stage == BootStage::kCamera) {
    ListAgain(index);
  } else if (cameras[index].camera) {
    cameras[index].camera->Unplug();
  }
}

// Takes everything out of the system again.
std::vector<RunningCamera> Unlist() {
  Simulator& simulator = TheSimulator();
  simulator.volumes.reset();
  std::vector<RunningCamera> cameras = std::exchange(simulator.cameras, {});
  for (std::size_t index = 0; index < cameras.size(); ++index) {
    Unlist(cameras[index].instanceName, cameras[index].microphoneName);
    if (cameras[index].camera) {
      // A handle to it may be open still, and the next start's cameras may have its name.
      cameras[index].camera->SetUnplugObserver(nullptr);
      cameras[index].camera->SetReplugObserver(nullptr);
    }
    if (simulator.inRegistry) {
      UnregisterClass(CameraClassId(index));
      UnregisterClass(MicrophoneClassId(index));
    }
  }
  simulator.privateDevices.reset();
  simulator.inRegistry = false;
  return cameras;
}

void Stop() {
  for (const RunningCamera& running : Unlist()) {
    if (running.camera) {
      SaveState(running.options, *running.camera);
    }
  }
}

enum class Listing { kRegistry, kPrivate };

void StartBootLoaders(const Options& options) {
  Simulator& simulator = TheSimulator();
  std::vector<std::shared_ptr<BootLoader>> bootLoaders;
  for (const auto& [index, bootLoaderOptions] : options.bootLoaders) {
    bootLoaders.push_back(std::make_shared<BootLoader>(bootLoaderOptions));
    if (index < simulator.cameras.size()) {
      simulator.cameras[index].bootLoader = bootLoaders.back();
      bootLoaders.back()->SetStageObserver(
          [index = index](BootStage stage) { FollowStage(index, stage); });
    }
  }
  if (!bootLoaders.empty()) {
    simulator.volumes.emplace(bootLoaders);
  }
}

void Start(const char* text, Listing listing) {
  const Options options = ParseOptions(text != nullptr ? text : "");
  if (options.cameras.size() > ZEM_SIMULATOR_MAX_CAMERAS) {
    throw std::invalid_argument("more cameras than can be simulated at once");
  }
  Stop();
  Simulator& simulator = TheSimulator();
  if (listing == Listing::kPrivate) {
    simulator.privateDevices.emplace();
  }
  simulator.inRegistry = listing == Listing::kRegistry;
  for (const CameraOptions& camera : options.cameras) {
    simulator.cameras.push_back(Prepare(camera, simulator.cameras.size()));
  }
  StartBootLoaders(options);
  for (std::size_t index = 0; index < simulator.cameras.size(); ++index) {
    const auto& bootLoader = simulator.cameras[index].bootLoader;
    const bool isAway = bootLoader && bootLoader->stage() != BootStage::kCamera;
    if (!isAway && FAILED(ListCamera(index))) {
      throw std::runtime_error("the camera could not be written to the registry");
    }
  }
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
  const auto& cameras = TheSimulator().cameras;
  for (std::size_t index = 0; index < cameras.size(); ++index) {
    if (CameraClassId(index) == classId && cameras[index].camera) {
      return FilterMaker(cameras[index].camera);
    }
    if (MicrophoneClassId(index) == classId && cameras[index].microphone) {
      return FilterMaker(cameras[index].microphone);
    }
  }
  return nullptr;
}

long StartOrExplain(const char* options, Listing listing) {
  try {
    TheSimulator().lastError.clear();
    Start(options, listing);
    return S_OK;
  } catch (const std::exception& error) {
    TheSimulator().lastError = error.what();
    Unlist();
    return E_FAIL;
  }
}

}  // namespace
}  // namespace zem::simulator

using zem::simulator::TheSimulator;

extern "C" {

long ZemSimulatorStartPrivate(const char* options) {
  return zem::simulator::StartOrExplain(options, zem::simulator::Listing::kPrivate);
}

long ZemSimulatorStart(const char* options) {
  return zem::simulator::StartOrExplain(options, zem::simulator::Listing::kRegistry);
}

void ZemSimulatorStop(void) {
  try {
    TheSimulator().lastError.clear();
    zem::simulator::Stop();
  } catch (const std::exception& error) {
    TheSimulator().lastError = error.what();
  }
}

const char* ZemSimulatorLastError(void) { return TheSimulator().lastError.c_str(); }

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
  if (TheSimulator().privateDevices) {
    return CLASS_E_CLASSNOTAVAILABLE;  // a camera that the system lists is none of them
  }
  auto& cameras = TheSimulator().cameras;
  if (cameras.empty()) {
    // A process that found the registered camera by itself: it gets the default one.
    cameras.push_back(zem::simulator::Prepare({}, 0));
    cameras.front().camera = zem::simulator::MakeCamera({});
    cameras.front().microphone = std::make_shared<zem::simulator::Microphone>();
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
  const bool idle = zem::simulator::liveComObjects == 0 && TheSimulator().cameras.empty() &&
                    !TheSimulator().privateDevices;
  return idle ? S_OK : S_FALSE;
}

HRESULT WINAPI DllRegisterServer(void) { return ZemSimulatorStart(nullptr); }

HRESULT WINAPI DllUnregisterServer(void) {
  ZemSimulatorStop();
  // The camera that DllRegisterServer listed, in whichever process that was.
  TheSimulator().cameras.push_back(zem::simulator::Prepare({}, 0));
  TheSimulator().inRegistry = true;
  zem::simulator::Unlist();
  return S_OK;
}

}  // extern "C"
