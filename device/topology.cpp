#include "device/topology.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "device/property_request.h"
#include "platform/com_ptr.h"

namespace zem {
namespace {

// Property id of a unit's information block, whose first 16 bytes are the unit's GUID.
constexpr std::uint32_t kUnitInformation = 0;

// What is read of an information block; the rest of a longer one is ignored.
using UnitInformation = std::array<std::uint8_t, 32>;

bool NodeCarries(IKsControl* control, const GUID& unit, std::uint32_t node, InformationRead read) {
  KSP_NODE request = MakeNodeRequest(Direction::kGet, unit, kUnitInformation, node);
  UnitInformation information = {};
  ULONG size = information.size();
  if (read == InformationRead::kAskSizeFirst) {
    size = 0;
    static_cast<void>(IssueRequest(control, request, nullptr, 0, &size));
  }
  ULONG moved = 0;
  // The outcome is not looked at: what a read does not move stays zero.
  static_cast<void>(IssueRequest(control, request, information.data(),
                                 std::min<ULONG>(size, information.size()), &moved));
  return std::memcmp(information.data(), &unit, sizeof(unit)) == 0;
}

}  // namespace

NodeSearch SearchNodes(IKsTopologyInfo* topology, const GUID& unit, InformationRead read) {
  NodeSearch search;
  search.result = topology->get_NumNodes(&search.nodeCount);
  for (DWORD node = 0; SUCCEEDED(search.result) && node < search.nodeCount; ++node) {
    GUID unusedType = {};
    static_cast<void>(topology->get_NodeType(node, &unusedType));
    ComPtr<IKsControl> control;
    search.result = topology->CreateNodeInstance(node, IID_IKsControl, control.ReceiveVoid());
    if (SUCCEEDED(search.result) && !control) {
      search.result = E_NOINTERFACE;
    }
    if (SUCCEEDED(search.result) && NodeCarries(control.get(), unit, node, read)) {
      search.node = node;
      break;
    }
  }
  return search;
}

std::uint32_t FindXuNode(IBaseFilter* filter, const GUID& unit) {
  ComPtr<IKsTopologyInfo> topology;
  if (FAILED(filter->QueryInterface(IID_IKsTopologyInfo, topology.ReceiveVoid())) || !topology) {
    return kNoTopology;
  }
  const NodeSearch search = SearchNodes(topology.get(), unit, InformationRead::kAskSizeFirst);
  if (FAILED(search.result)) {
    return kNoTopology;
  }
  return search.node.value_or(search.nodeCount);
}

}  // namespace zem
