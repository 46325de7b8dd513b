// The devices of a list that changes while hosts look at it, on any thread.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "simulator/device_list.h"
#include "simulator/lock.h"

namespace zem::simulator {

class DeviceTable {
 public:
  // Replaces a device with the same display name.
  void Put(const ListedDevice& device);
  void Remove(const std::wstring& displayName);
  void Clear();

  // By display name, which is the order in which Windows lists those of the registry.
  std::vector<ListedDevice> All();

 private:
  Mutex mutex_;
  std::map<std::wstring, ListedDevice> devices_;
};

}  // namespace zem::simulator
