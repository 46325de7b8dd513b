#include "simulator/windows/private_devices.h"

#include <map>
#include <utility>
#include <vector>

#include "platform/com_ptr.h"

namespace zem::simulator {
namespace {

constexpr const char* kCreateFunction = "CoCreateInstance";

// The devices by display name, which is the order in which the system lists those of the registry.
class DeviceTable {
 public:
  DeviceTable() { InitializeCriticalSection(&lock_); }
  ~DeviceTable() { DeleteCriticalSection(&lock_); }
  DeviceTable(const DeviceTable&) = delete;
  DeviceTable& operator=(const DeviceTable&) = delete;

  void Put(const ListedDevice& device) {
    const Lock lock(lock_);
    devices_[device.displayName] = device;
  }

  void Remove(const std::wstring& displayName) {
    const Lock lock(lock_);
    devices_.erase(displayName);
  }

  void Clear() {
    const Lock lock(lock_);
    devices_.clear();
  }

  std::vector<ListedDevice> All() {
    const Lock lock(lock_);
    std::vector<ListedDevice> all;
    for (const auto& [displayName, device] : devices_) {
      all.push_back(device);
    }
    return all;
  }

 private:
  class Lock {
   public:
    explicit Lock(CRITICAL_SECTION& section) : section_(section) {
      EnterCriticalSection(&section_);
    }
    ~Lock() { LeaveCriticalSection(&section_); }
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

   private:
    CRITICAL_SECTION& section_;
  };

  CRITICAL_SECTION lock_ = {};
  std::map<std::wstring, ListedDevice> devices_;
};

DeviceTable devices;

// The system makes its own object first: where it refuses (COM is not started on this thread, say),
// the host is refused.
HRESULT WINAPI CreateInstanceOrList(REFCLSID classId, LPUNKNOWN outer, DWORD context, REFIID iid,
                                    LPVOID* object) {
  const HRESULT result = CoCreateInstance(classId, outer, context, iid, object);
  if (FAILED(result) || !(classId == CLSID_SystemDeviceEnum)) {
    return result;
  }
  static_cast<IUnknown*>(*object)->Release();
  const auto own = ComPtr<ICreateDevEnum>::Adopt(MakeDeviceEnumerator(devices.All(), nullptr));
  return own->QueryInterface(iid, object);
}

}  // namespace

PrivateDevices::PrivateDevices() : library_(HoldLibrary()), program_(HoldProgram()) {
  libraryHook_.emplace(library_.get(), kCreateFunction, AsImport(CreateInstanceOrList));
  // A program need not list devices by itself.
  if (ImportHook::IsPossible(program_.get(), kCreateFunction)) {
    programHook_.emplace(program_.get(), kCreateFunction, AsImport(CreateInstanceOrList));
  }
}

PrivateDevices::~PrivateDevices() {
  programHook_.reset();
  libraryHook_.reset();
  devices.Clear();
}

void PrivateDevices::List(const ListedDevice& device) { devices.Put(device); }

void PrivateDevices::Unlist(const std::wstring& displayName) { devices.Remove(displayName); }

}  // namespace zem::simulator
