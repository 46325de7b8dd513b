// The single path by which a byte block reaches a control of an extension unit, or comes from it.
//
// Nothing is kept between transfers: each looks the unit's node up anew. Data, length and the
// returned-byte count go to the platform as they are; nothing is checked, padded, retried or waited
// for. Without a filter the transfer opens the default camera of the settings file and releases it
// again; the COM initialisation made for that stays.
#pragma once

#include <cstdint>

#include "platform/com.h"

namespace zem {

// Writes one control. Each write request puts one line on the debugger channel, also a failing one.
// `bytesReturned` may be null. A unit that the device lacks is written to all the same, at the node
// id that FindXuNode gives, and the device's rejection is the result.
HRESULT XuSetControl(const GUID& unit, std::uint16_t selector, void* data, ULONG length,
                     ULONG* bytesReturned, IBaseFilter* filter);

// Reads one control. Deliberately initialises COM for the calling thread on every call, and writes
// no line. `bytesReturned` may be null.
HRESULT XuGetControl(const GUID& unit, std::uint16_t selector, void* data, ULONG length,
                     ULONG* bytesReturned, IBaseFilter* filter);

}  // namespace zem
