#include "device/unit_check.h"

#include "device/discovery.h"
#include "device/topology.h"
#include "platform/com_ptr.h"
#include "platform/result.h"

namespace zem {

HRESULT CheckXuGuid(const GUID& unit, IBaseFilter* filter) {
  ComPtr<IBaseFilter> device;
  if (const HRESULT result = ShareOrOpenDefault(filter, device); FAILED(result)) {
    return result;
  }
  ComPtr<IKsTopologyInfo> topology;
  if (const HRESULT result = device->QueryInterface(IID_IKsTopologyInfo, topology.ReceiveVoid());
      FAILED(result)) {
    return result;
  }
  if (!topology) {
    return S_OK;
  }
  const NodeSearch search = SearchNodes(topology.get(), unit, InformationRead::kAtOnce);
  if (FAILED(search.result)) {
    return search.result;
  }
  const bool present = search.nodeCount == 0 || search.node.has_value();
  return present ? S_OK : kUnitAbsent;
}

}  // namespace zem
