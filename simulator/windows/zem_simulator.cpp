// ZemSimulator.dll: the COM in-process server around the simulated cameras.
#include <array>
#include <cstdio>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "simulator/com_camera.h"
#include "simulator/options.h"
#include "simulator/windows/ZemSimulator.h"
#include "simulator/windows/registration.h"

namespace zem::simulator {
namespace {

HMODULE thisModule = nullptr;

struct RunningCamera {
  std::shared_ptr<Camera> camera;
  std::wstring instanceName;
};

struct Simulator {
  std::vector<RunningCamera> cameras;
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

std::wstring Widen(const std::string& text) {
  const int length = MultiByteToWideChar(CP_UTF8, 0, text.c_str(), -1, nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(length), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, text.c_str(), -1, wide.data(), length);
  wide.resize(wide.size() - 1);
  return wide;
}

// The part of a real camera's device path that its display name and path share.
std::wstring InstanceName(const CameraOptions& options, std::size_t index) {
  std::array<wchar_t, 128> name = {};
  _snwprintf(name.data(), name.size() - 1, L"usb#vid_%04x&pid_%04x&mi_00#zem-simulator&%u",
             options.vendorId, options.productId, static_cast<unsigned>(index));
  return name.data();
}

void ListCamera(const CameraOptions& options) {
  Simulator& simulator = TheSimulator();
  const std::size_t index = simulator.cameras.size();
  const std::wstring instanceName = InstanceName(options, index);
  const HRESULT result =
      RegisterCamera(index, CLSID_VideoInputDeviceCategory, instanceName, Widen(options.name),
                     L"\\\\?\\" + instanceName, ModulePath());
  if (FAILED(result)) {
    throw std::runtime_error("the camera could not be written to the registry");
  }
  RunningCamera running = {MakeCamera(options), instanceName};
  running.camera->SetUnplugObserver(
      [instanceName] { UnlistCamera(CLSID_VideoInputDeviceCategory, instanceName); });
  simulator.cameras.push_back(std::move(running));
}

void Stop() {
  Simulator& simulator = TheSimulator();
  for (std::size_t index = 0; index < simulator.cameras.size(); ++index) {
    UnlistCamera(CLSID_VideoInputDeviceCategory, simulator.cameras[index].instanceName);
    UnregisterClass(index);
  }
  simulator.cameras.clear();
}

void Start(const char* text) {
  const Options options = ParseOptions(text != nullptr ? text : "");
  if (options.cameras.size() > ZEM_SIMULATOR_MAX_CAMERAS) {
    throw std::invalid_argument("more cameras than can be simulated at once");
  }
  Stop();
  for (const CameraOptions& camera : options.cameras) {
    ListCamera(camera);
  }
}

class CameraFactory : public ComObject<IClassFactory> {
 public:
  explicit CameraFactory(std::shared_ptr<Camera> camera) : camera_(std::move(camera)) {}

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    return QueryOne<IClassFactory>(this, ::IID_IClassFactory, iid, object);
  }

  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
    *object = nullptr;
    if (outer != nullptr) {
      return CLASS_E_NOAGGREGATION;
    }
    IBaseFilter* const filter = MakeCameraFilter(camera_, nullptr);
    const HRESULT result = filter->QueryInterface(iid, object);
    filter->Release();
    return result;
  }

  HRESULT STDMETHODCALLTYPE LockServer(BOOL /*lock*/) override { return S_OK; }

 private:
  std::shared_ptr<Camera> camera_;
};

}  // namespace
}  // namespace zem::simulator

using zem::simulator::TheSimulator;

extern "C" {

long ZemSimulatorStart(const char* options) {
  try {
    TheSimulator().lastError.clear();
    zem::simulator::Start(options);
    return S_OK;
  } catch (const std::exception& error) {
    TheSimulator().lastError = error.what();
    zem::simulator::Stop();
    return E_FAIL;
  }
}

void ZemSimulatorStop(void) { zem::simulator::Stop(); }

const char* ZemSimulatorLastError(void) { return TheSimulator().lastError.c_str(); }

BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID /*reserved*/) {
  if (reason == DLL_PROCESS_ATTACH) {
    zem::simulator::thisModule = instance;
  }
  return TRUE;
}

HRESULT WINAPI DllGetClassObject(REFCLSID classId, REFIID iid, LPVOID* object) {
  *object = nullptr;
  auto& cameras = TheSimulator().cameras;
  if (cameras.empty()) {
    // A process that found the registered camera by itself: it gets the default one.
    cameras.push_back({zem::simulator::MakeCamera({}), L""});
  }
  for (std::size_t index = 0; index < cameras.size(); ++index) {
    if (zem::simulator::CameraClassId(index) == classId) {
      auto* const factory = new zem::simulator::CameraFactory(cameras[index].camera);
      const HRESULT result = factory->QueryInterface(iid, object);
      factory->Release();
      return result;
    }
  }
  return CLASS_E_CLASSNOTAVAILABLE;
}

HRESULT WINAPI DllCanUnloadNow(void) {
  const bool idle = zem::simulator::liveComObjects == 0 && TheSimulator().cameras.empty();
  return idle ? S_OK : S_FALSE;
}

HRESULT WINAPI DllRegisterServer(void) { return ZemSimulatorStart(nullptr); }

HRESULT WINAPI DllUnregisterServer(void) {
  // The camera that DllRegisterServer listed, in whichever process that was.
  if (TheSimulator().cameras.empty()) {
    const zem::simulator::CameraOptions options;
    TheSimulator().cameras.push_back({nullptr, zem::simulator::InstanceName(options, 0)});
  }
  zem::simulator::Stop();
  return S_OK;
}

}  // extern "C"
