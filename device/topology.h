// Walks over a device's kernel-streaming topology in search of an extension unit.
#pragma once

#include <cstdint>
#include <optional>

#include "platform/com.h"

namespace zem {

// What a walk over all nodes found.
struct NodeSearch {
  HRESULT result = S_OK;      // negative: the walk ended early, the rest says nothing
  DWORD nodeCount = 0;        // nodes of the device
  std::optional<DWORD> node;  // the first node that carries the unit
};

// How a unit's information block is read: after a request for its size, or at once.
enum class InformationRead { kAskSizeFirst, kAtOnce };

NodeSearch SearchNodes(IKsTopologyInfo* topology, const GUID& unit, InformationRead read);

// Returned by FindXuNode for a topology that cannot be read.
inline constexpr std::uint32_t kNoTopology = 0xFFFFFFFF;

// The node id of the extension unit with the given GUID; the number of nodes when no node carries
// it, which is no error; kNoTopology when the topology cannot be read. `filter` must not be null.
std::uint32_t FindXuNode(IBaseFilter* filter, const GUID& unit);

}  // namespace zem
