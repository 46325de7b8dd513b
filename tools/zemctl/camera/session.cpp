#include "tools/zemctl/camera/session.h"

#include <objbase.h>

#include "include/ZemUVCExtApi.h"
#include "tools/zemctl/frame/bytes.h"
#include "tools/zemctl/frame/results.h"

namespace zemctl {
namespace {

// The ids that stand in for the one that was not given.
constexpr unsigned kDefaultVendorId = 0x5A45;
constexpr unsigned kDefaultProductId = 0x8C00;

void CheckOpened(const char* function, ZemResult result) {
  if (result == 1) {
    throw CallFailure(
        function, result,
        {"device lacks the vendor unit",
         "the device has no vendor extension unit and was closed again",
         "Choose another device; \"zemctl list\" tells which ones have the unit.", kUnitAbsent});
  }
  Check(function, result);
}

}  // namespace

ComThread::ComThread() { static_cast<void>(CoInitialize(nullptr)); }

ComThread::~ComThread() { CoUninitialize(); }

Session::Session(const DeviceSelection& selection) {
  if (!selection.displayName.empty()) {
    CheckOpened("ZEMAPI_OpenDeviceByPath",
                ZEMAPI_OpenDeviceByPath(Widen(selection.displayName).c_str(), &handle_));
  } else if (!selection.devicePath.empty()) {
    CheckOpened("ZEMAPI_OpenDeviceByDevPath",
                ZEMAPI_OpenDeviceByDevPath(Widen(selection.devicePath).c_str(), &handle_));
  } else if (selection.vendorId || selection.productId) {
    CheckOpened("ZEMAPI_OpenDeviceEx",
                ZEMAPI_OpenDeviceEx(selection.index, &handle_,
                                    selection.vendorId.value_or(kDefaultVendorId),
                                    selection.productId.value_or(kDefaultProductId)));
  } else {
    CheckOpened("ZEMAPI_OpenDevice", ZEMAPI_OpenDevice(selection.index, &handle_));
  }
}

Session::~Session() { ZEMAPI_CloseDevice(&handle_); }

}  // namespace zemctl
