#include "simulator/device_table.h"

namespace zem::simulator {

void DeviceTable::Put(const ListedDevice& device) {
  const Lock lock(mutex_);
  devices_[device.displayName] = device;
}

void DeviceTable::Remove(const std::wstring& displayName) {
  const Lock lock(mutex_);
  devices_.erase(displayName);
}

void DeviceTable::Clear() {
  const Lock lock(mutex_);
  devices_.clear();
}

std::vector<ListedDevice> DeviceTable::All() {
  const Lock lock(mutex_);
  std::vector<ListedDevice> all;
  for (const auto& [displayName, device] : devices_) {
    all.push_back(device);
  }
  return all;
}

}  // namespace zem::simulator
