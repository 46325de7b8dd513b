// The kernel-streaming request by which one control of one extension unit is read or written.
#pragma once

#include <cstdint>

#include "platform/com.h"

namespace zem {

enum class Direction : std::uint32_t {
  kGet = 0x10000001,  // get, topology
  kSet = 0x10000002,  // set, topology
};

static_assert(sizeof(KSP_NODE) == 32, "the request is 32 bytes on the wire to the driver");

inline KSP_NODE MakeNodeRequest(Direction direction, const GUID& unit, std::uint32_t id,
                                std::uint32_t node) {
  KSP_NODE request = {};
  request.Property.Set = unit;
  request.Property.Id = id;
  request.Property.Flags = static_cast<ULONG>(direction);
  request.NodeId = node;
  return request;
}

// Issues `request` on a node's control and returns the platform's result.
inline HRESULT IssueRequest(IKsControl* control, KSP_NODE& request, void* data, ULONG length,
                            ULONG* bytesReturned) {
  return control->KsProperty(reinterpret_cast<PKSPROPERTY>(&request), sizeof(request), data, length,
                             bytesReturned);
}

}  // namespace zem
