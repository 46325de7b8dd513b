// The one camera that the library finds by itself.
#pragma once

#include "platform/com_ptr.h"

namespace zemctl {

// From its construction until its end, the library finds `camera` and nothing else where it looks
// for the default camera on this thread. `camera` must live that long.
class OnlyDevice {
 public:
  explicit OnlyDevice(IBaseFilter* camera);
  ~OnlyDevice();
  OnlyDevice(const OnlyDevice&) = delete;
  OnlyDevice& operator=(const OnlyDevice&) = delete;

  // That of this thread; null when there is none.
  static IBaseFilter* OfThread();

 private:
  IBaseFilter* before_;
};

// An enumerator that lists it as the default camera.
zem::ComPtr<ICreateDevEnum> ListOnly(IBaseFilter* camera);

}  // namespace zemctl
