// The simulated devices of a process: cameras, their microphones and their boot loaders, which
// come, go and come back as options, faults and commands say.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "simulator/com_microphone.h"
#include "simulator/options.h"

namespace zem::simulator {

// Most cameras that can be simulated at once.
inline constexpr std::size_t kMostCameras = 8;

// Makes a device's filter, with one reference for the caller.
using MakeFilter = std::function<IBaseFilter*()>;

// A device that is to be listed.
struct SimulatedDevice {
  std::size_t camera;  // its own number, or that of the camera which the microphone belongs to
  GUID category;
  std::wstring instanceName;  // what a real device's display name and path have in common
  std::string name;           // UTF-8
  MakeFilter make;
};

// Where hosts find the devices.
class DeviceListing {
 public:
  DeviceListing() = default;
  virtual ~DeviceListing() = default;
  DeviceListing(const DeviceListing&) = delete;
  DeviceListing& operator=(const DeviceListing&) = delete;

  // Replaces a device of the same category and instance name.
  virtual HRESULT List(const SimulatedDevice& device) = 0;
  virtual void Unlist(const GUID& category, const std::wstring& instanceName) = 0;
  // Nothing of this camera will be listed again.
  virtual void Forget(std::size_t /*camera*/) {}
};

class SimulatedSystem {
 public:
  using BootLoaders = std::vector<std::shared_ptr<BootLoader>>;
  // Lets hosts find the boot loaders' volumes, as long as what it returns lives.
  using ListVolumes = std::function<std::shared_ptr<void>(const BootLoaders&)>;

  SimulatedSystem() = default;
  SimulatedSystem(const SimulatedSystem&) = delete;
  SimulatedSystem& operator=(const SimulatedSystem&) = delete;

  // After the beginning, Stop or Abandon. Throws std::exception with a sentence for a person when
  // that fails; Abandon then takes away what is there.
  void Start(const Options& options, std::unique_ptr<DeviceListing> listing,
             const ListVolumes& listVolumes);

  // Takes everything away and writes the state files. Throws std::runtime_error when one cannot be
  // written.
  void Stop();

  // The same without the state files.
  void Abandon();

  // Counts the default camera as listed: another process may have listed it, in `listing`.
  void AssumeDefaultCamera(std::unique_ptr<DeviceListing> listing);

  bool isEmpty() const { return cameras_.empty(); }

  // What makes the filter of a camera, or of its microphone; null when it is not there.
  MakeFilter CameraFilter(std::size_t camera) const;
  MakeFilter MicrophoneFilter(std::size_t camera) const;

  // Why something failed for which no caller could be told; empty if nothing did.
  const std::string& lastError() const { return lastError_; }

 private:
  struct RunningCamera {
    CameraOptions options;
    std::wstring instanceName;
    std::wstring microphoneName;
    std::shared_ptr<Camera> camera = nullptr;  // null until it is first listed
    std::shared_ptr<Microphone> microphone = nullptr;
    std::shared_ptr<BootLoader> bootLoader = nullptr;
  };

  static RunningCamera Prepare(const CameraOptions& options, std::size_t camera);
  void StartBootLoaders(const Options& options, const ListVolumes& listVolumes);
  HRESULT ListCamera(std::size_t camera);
  HRESULT ListMicrophone(std::size_t camera);
  void ListAgain(std::size_t camera);
  void Replug(std::size_t camera);
  void FollowStage(std::size_t camera, BootStage stage);
  void Unlist(const std::wstring& cameraName, const std::wstring& microphoneName);
  std::vector<RunningCamera> TakeAway();

  std::vector<RunningCamera> cameras_;
  std::unique_ptr<DeviceListing> listing_;
  std::shared_ptr<void> volumes_;
  std::string lastError_;
};

}  // namespace zem::simulator
