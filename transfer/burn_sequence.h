// The exchange by which an image gets into the camera's memory: announce it, see that the device is
// idle, send it, order the burn, wait for its end. What sets the procedures apart is data.
#pragma once

#include <cstdint>
#include <variant>

#include "platform/com.h"
#include "transfer/chunks.h"
#include "transfer/progress.h"
#include "transfer/transfer_control.h"

namespace zem {

// The burn order is the end; nobody waits.
struct NoWait {};

// The device is asked every 30 ms, the message queue drained each time, until it is done or has
// failed, for ten minutes at most. A device that says at once that it is done is given
// `graceTenths` tenths of a second more.
struct PollUntilDone {
  const wchar_t* errorLine;  // written when the device reports a failure
  unsigned graceTenths;
};

// A fixed wait without draining the queue, then one look: what is not done then has failed.
struct WaitAndLook {
  std::uint32_t pauses;
  std::uint32_t pauseMilliseconds;
  bool countsDown;  // reports how many pauses are left before each of them
};

struct BurnProcedure {
  TransferControl announce;
  TransferControl order;
  HRESULT (*sendImage)(IBaseFilter* filter, Image image, Progress progress);
  bool stopsWhenSendFails;  // else the burn is ordered all the same
  std::variant<NoWait, PollUntilDone, WaitAndLook> end;
};

// 0; kRefused for a missing image, before anything is sent; kNoDevice when the announce, the order
// or, if it counts, the image could not be sent; kDeviceRefused when the device is not idle after
// the announce, reports a failed burn, or does not come to an end.
HRESULT Burn(IBaseFilter* filter, const BurnProcedure& procedure, Image image, Progress progress);

}  // namespace zem
