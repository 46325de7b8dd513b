// Simulated cameras of this process only: what the DLL and this program find, and what the system,
// and with it every other process, does not.
#include <algorithm>
#include <array>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "include/ZemUVCExtApi.h"
#include "platform/com_ptr.h"
#include "simulator/windows/import_hook.h"
#include "tests/windows/support/opened_camera.h"
#include "tests/windows/support/simulator_guard.h"

namespace {

using zem::ComPtr;
using zem::testing::OpenedCamera;
using zem::testing::PrivateSimulatorGuard;
using zem::testing::SimulatorGuard;
using Names = std::vector<std::wstring>;
using Create = decltype(CoCreateInstance);

const std::wstring kPrivateCamera =
    L"@device:sw:{860BB310-5D01-11D0-BD3B-00A0C911CE86}\\usb#vid_5a45&pid_8c00&mi_00#"
    L"zem-simulator&0";
const std::wstring kPrivateMicrophone =
    L"@device:sw:{33D9A762-90C8-11D0-BD43-00A0C911CE86}\\usb#vid_5a45&pid_8c00&mi_02#"
    L"zem-simulator&0";
constexpr const wchar_t* kClassKey = L"CLSID\\{5A454D53-494D-4341-8D45-524100000000}";
constexpr const wchar_t* kInstanceKey =
    L"CLSID\\{860BB310-5D01-11D0-BD3B-00A0C911CE86}\\Instance\\"
    L"usb#vid_5a45&pid_8c00&mi_00#zem-simulator&0";

// COM on this thread.
class ComThread {
 public:
  ComThread() : result_(CoInitialize(nullptr)) {}
  ~ComThread() {
    if (SUCCEEDED(result_)) {
      CoUninitialize();
    }
  }
  ComThread(const ComThread&) = delete;
  ComThread& operator=(const ComThread&) = delete;

 private:
  HRESULT result_;
};

std::wstring TextOf(IPropertyBag* properties, const wchar_t* name) {
  VARIANT value;
  VariantInit(&value);
  std::wstring text =
      SUCCEEDED(properties->Read(name, &value, nullptr)) ? value.bstrVal : L"(none)";
  VariantClear(&value);
  return text;
}

struct Device {
  std::wstring displayName;
  std::wstring friendlyName;
  std::wstring path;
};

// The devices of a category, as whoever calls `create` finds them.
std::vector<Device> ListWith(Create* create, const GUID& category) {
  const ComThread com;
  std::vector<Device> found;
  ComPtr<ICreateDevEnum> devices;
  EXPECT_EQ(create(zem::CLSID_SystemDeviceEnum, nullptr, CLSCTX_INPROC, zem::IID_ICreateDevEnum,
                   devices.ReceiveVoid()),
            S_OK);
  ComPtr<IEnumMoniker> monikers;
  EXPECT_GE(devices->CreateClassEnumerator(category, monikers.Receive(), 0), 0);
  ComPtr<IMoniker> moniker;
  while (monikers && monikers->Next(1, moniker.Receive(), nullptr) == S_OK) {
    wchar_t* name = nullptr;
    EXPECT_EQ(moniker->GetDisplayName(nullptr, nullptr, &name), S_OK);
    ComPtr<IPropertyBag> properties;
    EXPECT_EQ(
        moniker->BindToStorage(nullptr, nullptr, zem::IID_IPropertyBag, properties.ReceiveVoid()),
        S_OK);
    found.push_back(
        {name, TextOf(properties.get(), L"FriendlyName"), TextOf(properties.get(), L"DevicePath")});
    CoTaskMemFree(name);
  }
  return found;
}

Names NamesOf(const std::vector<Device>& devices) {
  Names names;
  for (const Device& device : devices) {
    names.push_back(device.displayName);
  }
  return names;
}

// As this program's own code finds them.
Names ProgramsVideoInputs() {
  return NamesOf(ListWith(CoCreateInstance, zem::CLSID_VideoInputDeviceCategory));
}

// COM's function itself, which the modules of other processes call.
Create* SystemsCreate() {
  return reinterpret_cast<Create*>(
      reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ole32.dll"), "CoCreateInstance")));
}

Names SystemsVideoInputs() {
  return NamesOf(ListWith(SystemsCreate(), zem::CLSID_VideoInputDeviceCategory));
}

// The simulator's own enumerator, whatever is asked for.
HRESULT WINAPI CreateOfSimulator(REFCLSID /*classId*/, LPUNKNOWN /*outer*/, DWORD /*context*/,
                                 REFIID /*iid*/, LPVOID* object) {
  const auto devices = reinterpret_cast<decltype(ZemSimulatorDevices)*>(reinterpret_cast<void*>(
      GetProcAddress(GetModuleHandleW(L"ZemSimulator.dll"), "ZemSimulatorDevices")));
  return devices(object);
}

bool IsInRegistry(const wchar_t* path) {
  HKEY key = nullptr;
  const bool isThere = RegOpenKeyExW(HKEY_CLASSES_ROOT, path, 0, KEY_READ, &key) == ERROR_SUCCESS;
  if (isThere) {
    RegCloseKey(key);
  }
  return isThere;
}

// The default camera in the system's list, put there by another process.
class RegisteredCamera {
 public:
  RegisteredCamera() { RunRegistration(L""); }
  ~RegisteredCamera() { RunRegistration(L"/u "); }
  RegisteredCamera(const RegisteredCamera&) = delete;
  RegisteredCamera& operator=(const RegisteredCamera&) = delete;

 private:
  static void RunRegistration(const std::wstring& option) {
    std::array<wchar_t, MAX_PATH> module = {};
    GetModuleFileNameW(LoadLibraryW(L"ZemSimulator.dll"), module.data(), MAX_PATH);
    std::wstring command = L"regsvr32.exe /s " + option + L"\"" + module.data() + L"\"";
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process = {};
    ASSERT_TRUE(CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr,
                               nullptr, &startup, &process));
    WaitForSingleObject(process.hProcess, INFINITE);
    DWORD exitCode = 1;
    GetExitCodeProcess(process.hProcess, &exitCode);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    EXPECT_EQ(exitCode, 0U);
  }
};

TEST(PrivateCameraTest, LibraryAndProgramFindIt) {
  const PrivateSimulatorGuard simulator;
  const OpenedCamera camera;
  EXPECT_EQ(ZEMAPI_SetRegister(camera, 0x123456, 0xABCD), 0);
  unsigned short value = 0;
  EXPECT_EQ(ZEMAPI_GetRegister(camera, 0x123456, &value), 0);
  EXPECT_EQ(value, 0xABCD);
  void* second = nullptr;
  EXPECT_EQ(ZEMAPI_OpenDeviceByPath(kPrivateCamera.c_str(), &second), 0);
  ZEMAPI_CloseDevice(&second);
  EXPECT_EQ(
      ZEMAPI_OpenDeviceByDevPath(L"\\\\?\\usb#vid_5a45&pid_8c00&mi_00#zem-simulator&0", &second),
      0);
  ZEMAPI_CloseDevice(&second);
  EXPECT_EQ(ProgramsVideoInputs(), Names{kPrivateCamera});
}

TEST(PrivateCameraTest, TheSimulatorHandsOutItsListWhileItRuns) {
  {
    const PrivateSimulatorGuard simulator;
    EXPECT_EQ(NamesOf(ListWith(CreateOfSimulator, zem::CLSID_VideoInputDeviceCategory)),
              Names{kPrivateCamera});
  }
  void* none = &none;
  EXPECT_EQ(CreateOfSimulator({}, nullptr, 0, {}, &none), E_FAIL);
  EXPECT_EQ(none, nullptr);
}

// The system lists its sound devices beside a registered microphone; a private one is alone.
TEST(PrivateCameraTest, CameraAndMicrophoneHaveTheTextsOfRegisteredOnes) {
  for (const bool isPrivate : {false, true}) {
    std::optional<SimulatorGuard> listed;
    std::optional<PrivateSimulatorGuard> own;
    if (isPrivate) {
      own.emplace();
    } else {
      listed.emplace();
    }
    const auto cameras = ListWith(CoCreateInstance, zem::CLSID_VideoInputDeviceCategory);
    ASSERT_EQ(cameras.size(), 1U);
    EXPECT_EQ(cameras[0].displayName, kPrivateCamera);
    EXPECT_EQ(cameras[0].friendlyName, L"ZEM Simulated Camera");
    EXPECT_EQ(cameras[0].path, L"\\\\?\\usb#vid_5a45&pid_8c00&mi_00#zem-simulator&0");
    const auto microphones = ListWith(CoCreateInstance, zem::CLSID_AudioInputDeviceCategory);
    const auto microphone =
        std::find_if(microphones.begin(), microphones.end(),
                     [](const Device& device) { return device.displayName == kPrivateMicrophone; });
    ASSERT_NE(microphone, microphones.end());
    EXPECT_EQ(microphone->friendlyName, L"ZEM Simulated Camera Microphone");
    EXPECT_EQ(microphone->path, L"\\\\?\\usb#vid_5a45&pid_8c00&mi_02#zem-simulator&0");
  }
}

TEST(PrivateCameraTest, MicrophoneIsPrivateToo) {
  const PrivateSimulatorGuard simulator;
  const GUID& category = zem::CLSID_AudioInputDeviceCategory;
  EXPECT_EQ(NamesOf(ListWith(CoCreateInstance, category)), Names{kPrivateMicrophone});
  const Names inSystem = NamesOf(ListWith(SystemsCreate(), category));
  EXPECT_EQ(std::count(inSystem.begin(), inSystem.end(), kPrivateMicrophone), 0);
  IBaseFilter* audio = nullptr;
  ASSERT_EQ(ZEMAPI_AudioOpenDeviceByPath(kPrivateMicrophone.c_str(), &audio), 0);
  EXPECT_EQ(ZEMAPI_AudioSetVolume(audio, 50), 0);
  ZEMAPI_AudioCloseDevice(&audio);
}

TEST(PrivateCameraTest, RegistryHoldsNothingOfIt) {
  {
    const SimulatorGuard simulator;
    EXPECT_TRUE(IsInRegistry(kClassKey));
    EXPECT_TRUE(IsInRegistry(kInstanceKey));
    EXPECT_EQ(SystemsVideoInputs(), Names{kPrivateCamera});
  }
  const PrivateSimulatorGuard simulator;
  EXPECT_FALSE(IsInRegistry(kClassKey));
  EXPECT_FALSE(IsInRegistry(kInstanceKey));
  EXPECT_EQ(SystemsVideoInputs(), Names());
  EXPECT_EQ(ProgramsVideoInputs(), Names{kPrivateCamera});
}

TEST(PrivateCameraTest, CameraOfTheRegistryIsNotSeenBesideIt) {
  const RegisteredCamera registered;
  ASSERT_EQ(SystemsVideoInputs(), Names{kPrivateCamera});
  void* handle = nullptr;
  {
    const PrivateSimulatorGuard simulator(R"({"cameras": [{"productId": 4660}]})");
    EXPECT_EQ(SystemsVideoInputs(), Names{kPrivateCamera});
    EXPECT_EQ(ProgramsVideoInputs(), Names{L"@device:sw:{860BB310-5D01-11D0-BD3B-00A0C911CE86}\\"
                                           L"usb#vid_5a45&pid_1234&mi_00#zem-simulator&0"});
    EXPECT_EQ(ZEMAPI_OpenDevice(0, &handle), ZEM_E_FAIL);
    EXPECT_EQ(ZEMAPI_OpenDeviceByPath(kPrivateCamera.c_str(), &handle), ZEM_E_FAIL);
    EXPECT_EQ(ZEMAPI_OpenDeviceEx(0, &handle, 0x5A45, 0x1234), 0);
    ZEMAPI_CloseDevice(&handle);
    EXPECT_EQ(ZEMAPI_OpenDeviceEx(1, &handle, 0x5A45, 0x1234), ZEM_E_FAIL);
  }
  {
    const PrivateSimulatorGuard simulator(R"({"cameras": []})");
    EXPECT_EQ(ZEMAPI_OpenDevice(0, &handle), ZEM_E_FAIL);
    EXPECT_EQ(ProgramsVideoInputs(), Names());
  }
  EXPECT_EQ(ProgramsVideoInputs(), Names{kPrivateCamera});
  EXPECT_EQ(ZEMAPI_OpenDevice(0, &handle), 0);
  ZEMAPI_CloseDevice(&handle);
}

TEST(PrivateCameraTest, StoppingGivesTheSystemsListBack) {
  { const PrivateSimulatorGuard simulator; }
  void* handle = nullptr;
  EXPECT_EQ(ZEMAPI_OpenDevice(0, &handle), ZEM_E_FAIL);
  EXPECT_EQ(ProgramsVideoInputs(), Names());
  const SimulatorGuard simulator;
  EXPECT_EQ(ProgramsVideoInputs(), Names{kPrivateCamera});
}

TEST(PrivateCameraTest, EitherStartReplacesTheOther) {
  const SimulatorGuard first;
  const PrivateSimulatorGuard second;
  EXPECT_EQ(SystemsVideoInputs(), Names());
  EXPECT_EQ(ProgramsVideoInputs(), Names{kPrivateCamera});
  const SimulatorGuard third(R"({"cameras": [{}, {}]})");
  EXPECT_EQ(SystemsVideoInputs().size(), 2U);
  EXPECT_EQ(ProgramsVideoInputs(), SystemsVideoInputs());
}

TEST(PrivateCameraTest, SeveralAreListedInTheOrderOfARegisteredList) {
  constexpr const char* kOptions = R"({"cameras": [{}, {"productId": 4660}, {"productId": 4660}]})";
  Names listed;
  {
    const SimulatorGuard simulator(kOptions);
    listed = ProgramsVideoInputs();
  }
  const PrivateSimulatorGuard simulator(kOptions);
  EXPECT_EQ(ProgramsVideoInputs(), listed);
  EXPECT_EQ(listed.size(), 3U);
}

TEST(PrivateCameraTest, UnpluggedCameraIsNoLongerListed) {
  const PrivateSimulatorGuard simulator(R"({"cameras": [{"faults": ["unplug@3"]}, {}]})");
  const OpenedCamera camera;
  EXPECT_EQ(ProgramsVideoInputs().size(), 2U);
  EXPECT_EQ(ZEMAPI_SetRegister(camera, 1, 2), 0);
  EXPECT_EQ(ZEMAPI_SetRegister(camera, 1, 2), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ProgramsVideoInputs(), Names{L"@device:sw:{860BB310-5D01-11D0-BD3B-00A0C911CE86}\\"
                                         L"usb#vid_5a45&pid_8c00&mi_00#zem-simulator&1"});
}

TEST(PrivateCameraTest, CameraOfAnEarlierStartTakesNoLaterOneAway) {
  void* handle = nullptr;
  {
    const PrivateSimulatorGuard simulator(R"({"cameras": [{"faults": ["unplug@1"]}]})");
    ASSERT_EQ(ZEMAPI_OpenDevice(0, &handle), 0);
  }
  const PrivateSimulatorGuard simulator;
  EXPECT_EQ(ZEMAPI_SetRegister(handle, 1, 2), ZEM_E_NO_DEVICE);
  ZEMAPI_CloseDevice(&handle);
  EXPECT_EQ(ProgramsVideoInputs(), Names{kPrivateCamera});
}

TEST(PrivateCameraTest, EveryThreadFindsItWhereComIsStarted) {
  const PrivateSimulatorGuard simulator;
  Names names;
  HRESULT withoutCom = S_OK;
  HRESULT withoutComAndCamera = S_OK;
  const auto create = [](Create* function) {
    ComPtr<ICreateDevEnum> devices;
    return function(zem::CLSID_SystemDeviceEnum, nullptr, CLSCTX_INPROC, zem::IID_ICreateDevEnum,
                    devices.ReceiveVoid());
  };
  struct Work {
    std::function<void()> run;
    static DWORD WINAPI Start(void* work) {
      static_cast<Work*>(work)->run();
      return 0;
    }
  };
  Work work{[&] {
    withoutCom = create(CoCreateInstance);
    withoutComAndCamera = create(SystemsCreate());
    names = ProgramsVideoInputs();
  }};
  const HANDLE thread = CreateThread(nullptr, 0, Work::Start, &work, 0, nullptr);
  ASSERT_NE(thread, nullptr);
  WaitForSingleObject(thread, INFINITE);
  CloseHandle(thread);
  EXPECT_EQ(names, Names{kPrivateCamera});
  EXPECT_EQ(withoutCom, CO_E_NOTINITIALIZED);
  EXPECT_EQ(withoutComAndCamera, CO_E_NOTINITIALIZED);
}

unsigned volumesOpened = 0;

HANDLE WINAPI CountVolumes(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                           DWORD creation, DWORD flags, HANDLE pattern) {
  if (std::wstring_view(path).starts_with(LR"(\\.\)")) {
    ++volumesOpened;
    SetLastError(ERROR_FILE_NOT_FOUND);
    return INVALID_HANDLE_VALUE;
  }
  return CreateFileW(path, access, share, security, creation, flags, pattern);
}

// A search for a camera in ROM boot sends commands to whatever volume it finds.
TEST(PrivateVolumesTest, TheMachinesOwnAreOutOfReach) {
  const zem::simulator::HeldModule simulator(LoadLibraryW(L"ZemSimulator.dll"));
  const zem::simulator::ImportHook hook(simulator.get(), "CreateFileW",
                                        zem::simulator::AsImport(CountVolumes));
  for (const char* const options : {"", R"({"bootLoader":{"start":"gone"}})"}) {
    const PrivateSimulatorGuard guard(options);
    volumesOpened = 0;
    EXPECT_EQ(ZEMROMAPI_OpenDevice(1), nullptr);
    EXPECT_EQ(volumesOpened, 0U);
  }
  // A camera in the system's list leaves the others there.
  const SimulatorGuard guard(R"({"bootLoader":{"start":"gone"}})");
  EXPECT_EQ(ZEMROMAPI_OpenDevice(1), nullptr);
  EXPECT_EQ(volumesOpened, 23U);
}

}  // namespace
