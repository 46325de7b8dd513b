// The system's list of devices, as a trace sees it and as a trace answers for it.
#pragma once

#include <functional>
#include <memory>

#include "platform/com_ptr.h"
#include "tools/zemctl/camera/replay.h"
#include "tools/zemctl/camera/trace.h"

namespace zemctl {

// An enumerator that lists what `system` lists. What it lists, and what passes through the devices
// that are opened by it, is in the trace.
zem::ComPtr<ICreateDevEnum> TraceDevices(zem::ComPtr<ICreateDevEnum> system,
                                         std::shared_ptr<Trace> trace);

// One that lists the devices of a trace.
zem::ComPtr<ICreateDevEnum> ReplayDevices(std::shared_ptr<Replay> replay);

// What this thread finds where it asks for the system's devices: just one (only_device.h), those of
// the trace that it replays, or those that `system` makes a list of, traced if the thread is.
HRESULT MakeThreadDevices(const std::function<HRESULT(ICreateDevEnum** devices)>& system,
                          ICreateDevEnum** devices);

}  // namespace zemctl
