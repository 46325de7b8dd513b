// The imports of the library and of this program by which they ask for the system's devices and
// wait.
#include <windows.h>

#include "platform/com_ptr.h"
#include "simulator/windows/import_hook.h"
#include "tools/zemctl/camera/library_hooks.h"
#include "tools/zemctl/camera/long_wait.h"
#include "tools/zemctl/camera/traced_devices.h"

namespace zemctl {
namespace {

using zem::ComPtr;
using zem::simulator::AsImport;
using zem::simulator::Before;
using zem::simulator::HeldModule;
using zem::simulator::ImportHook;

// What the imports led to before: the system, or the simulator.
decltype(&CoCreateInstance) createBefore = nullptr;
decltype(&Sleep) sleepBefore = nullptr;

HRESULT WINAPI CreateInstance(REFCLSID classId, LPUNKNOWN outer, DWORD context, REFIID iid,
                              LPVOID* object) {
  if (!(classId == zem::CLSID_SystemDeviceEnum)) {
    return createBefore(classId, outer, context, iid, object);
  }
  ComPtr<ICreateDevEnum> devices;
  const HRESULT result = MakeThreadDevices(
      [&](ICreateDevEnum** system) {
        return createBefore(classId, outer, context, zem::IID_ICreateDevEnum,
                            reinterpret_cast<void**>(system));
      },
      devices.Receive());
  return SUCCEEDED(result) ? devices->QueryInterface(iid, object) : result;
}

void WINAPI SleepAsLongAsUseful(DWORD milliseconds) {
  if (const auto replay = ThreadReplay()) {
    replay->Wait(milliseconds);
  } else {
    LongWait::Sleep(milliseconds, [](unsigned part) { sleepBefore(part); });
  }
}

}  // namespace

struct LibraryHooks::Hooks {
  HeldModule library = zem::simulator::HoldLibrary();
  HeldModule program = zem::simulator::HoldProgram();
  ImportHook libraryCreate{library.get(), "CoCreateInstance", AsImport(CreateInstance)};
  ImportHook programCreate{program.get(), "CoCreateInstance", AsImport(CreateInstance)};
  ImportHook sleep{library.get(), "Sleep", AsImport(SleepAsLongAsUseful)};
};

LibraryHooks::LibraryHooks() : hooks_(std::make_unique<Hooks>()) {
  createBefore = Before<decltype(CoCreateInstance)>(hooks_->libraryCreate);
  sleepBefore = Before<decltype(Sleep)>(hooks_->sleep);
}

LibraryHooks::~LibraryHooks() = default;

}  // namespace zemctl
