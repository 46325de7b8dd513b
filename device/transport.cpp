#include "device/transport.h"

#include "device/discovery.h"
#include "device/property_request.h"
#include "device/topology.h"
#include "platform/com_ptr.h"
#include "platform/debugger_line.h"
#include "platform/platform.h"

namespace zem {
namespace {

// A node's control, ready for one request.
HRESULT OpenNodeControl(IBaseFilter* device, std::uint32_t node, ComPtr<IKsControl>& control) {
  ComPtr<IKsTopologyInfo> topology;
  const HRESULT asked = device->QueryInterface(IID_IKsTopologyInfo, topology.ReceiveVoid());
  if (!topology) {
    return FAILED(asked) ? asked : E_NOINTERFACE;
  }
  const HRESULT created = topology->CreateNodeInstance(node, IID_IKsControl, control.ReceiveVoid());
  return SUCCEEDED(created) && !control ? E_NOINTERFACE : created;
}

void ReportWrite(std::uint32_t node, HRESULT result, ULONG length) {
  platform::DebuggerLine<100>(L"[EXT_Set]Node ID = %d, hr = %X, Len:%d\r\n", node, result, length);
}

HRESULT Transfer(Direction direction, const GUID& unit, std::uint16_t selector, void* data,
                 ULONG length, ULONG* bytesReturned, IBaseFilter* filter) {
  ComPtr<IBaseFilter> device;
  if (const HRESULT result = ShareOrOpenDefault(filter, device); FAILED(result)) {
    return result;
  }
  const std::uint32_t node = FindXuNode(device.get(), unit);
  ComPtr<IKsControl> control;
  if (const HRESULT result = OpenNodeControl(device.get(), node, control); FAILED(result)) {
    return result;
  }
  ULONG unwanted = 0;
  ULONG* const moved = bytesReturned != nullptr ? bytesReturned : &unwanted;
  *moved = 0;
  KSP_NODE request = MakeNodeRequest(direction, unit, selector, node);
  const HRESULT result = IssueRequest(control.get(), request, data, length, moved);
  if (direction == Direction::kSet) {
    ReportWrite(node, result, length);
  }
  return result;
}

}  // namespace

HRESULT XuSetControl(const GUID& unit, std::uint16_t selector, void* data, ULONG length,
                     ULONG* bytesReturned, IBaseFilter* filter) {
  return Transfer(Direction::kSet, unit, selector, data, length, bytesReturned, filter);
}

HRESULT XuGetControl(const GUID& unit, std::uint16_t selector, void* data, ULONG length,
                     ULONG* bytesReturned, IBaseFilter* filter) {
  platform::InitializeCom();
  return Transfer(Direction::kGet, unit, selector, data, length, bytesReturned, filter);
}

}  // namespace zem
