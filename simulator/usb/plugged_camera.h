// A simulated camera at its place on a bus, through its life there: the camera while its firmware
// runs, mass storage while its boot loader or the updater does, nothing while it is away. One
// thread at a time.
#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "simulator/boot_loader.h"
#include "simulator/options.h"
#include "simulator/usb/mass_storage.h"
#include "simulator/usb/usb_camera.h"

namespace zem::simulator::usb {

class PluggedCamera {
 public:
  enum class Form { kCamera, kStorage, kAway };

  // Without a camera there is a boot loader alone, without a boot loader no ROM boot. Throws as
  // MakeCamera and BootLoader do.
  PluggedCamera(std::optional<CameraOptions> camera, std::optional<BootLoaderOptions> bootLoader);

  PluggedCamera(const PluggedCamera&) = delete;
  PluggedCamera& operator=(const PluggedCamera&) = delete;

  Form form() const;

  // What is on the bus; null while the camera is away. Another form is another device: the one that
  // was there before tells that it is gone once its host has what it is owed. Whoever uses a device
  // holds on to it.
  std::shared_ptr<UsbDevice> device() const;

  // Null for a camera without one.
  const std::shared_ptr<BootLoader>& bootLoader() const { return bootLoader_; }

  // Called with whether it streams, when that changes.
  void SetStreamObserver(std::function<void(bool)> observer) {
    streamObserver_ = std::move(observer);
  }

  // Writes the camera's state file, if it has one. Throws std::runtime_error when that fails.
  void Save();

 private:
  void StartCamera();
  void FollowStage(BootStage stage);
  void Replug();

  std::optional<CameraOptions> options_;
  std::shared_ptr<BootLoader> bootLoader_;
  std::shared_ptr<Camera> camera_;  // the last that ran
  std::shared_ptr<UsbDevice> device_;
  std::shared_ptr<UsbBootLoader> storage_;  // where that is the device
  std::function<void(bool)> streamObserver_;
};

}  // namespace zem::simulator::usb
