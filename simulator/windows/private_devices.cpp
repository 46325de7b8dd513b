#include "simulator/windows/private_devices.h"

#include <utility>

#include "platform/com_ptr.h"
#include "simulator/device_table.h"

namespace zem::simulator {
namespace {

constexpr const char* kCreateFunction = "CoCreateInstance";

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
  const auto own = ComPtr<ICreateDevEnum>::Adopt(PrivateDevices::MakeEnumerator());
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

ICreateDevEnum* PrivateDevices::MakeEnumerator() {
  return MakeDeviceEnumerator(devices.All(), nullptr);
}

}  // namespace zem::simulator
