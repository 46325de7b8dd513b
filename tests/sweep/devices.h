// The camera and the volume of a sweep. They are the simulated ones while a healthy run is
// recorded, and then say what that recording and the schedule of faults say.
#pragma once

#include <functional>
#include <memory>
#include <span>

#include "platform/simulated/simulated_platform.h"
#include "simulator/camera.h"
#include "tests/support/whole_camera.h"
#include "tests/sweep/follower.h"

namespace zem::testing::sweep {

// What all devices have in common: where requests go.
class Wire {
 public:
  virtual ~Wire() = default;
  // One request, with what it sends. The answer of a read is as long as the device says, at most
  // as long as the request.
  virtual Answer Ask(const Request& request, std::span<const std::uint8_t> sent) = 0;
  virtual bool isGone() const = 0;
};

class SweptCamera final : public WholeCamera {
 public:
  explicit SweptCamera(Wire& wire);

  HRESULT Request(const KSP_NODE& request, void* data, ULONG length, ULONG* bytesReturned) override;
  HRESULT Standard(const StandardRequest& request) override;
  HRESULT STDMETHODCALLTYPE CreateNodeInstance(DWORD node, REFIID iid, void** object) override;

 private:
  Wire& wire_;
};

// The simulated camera of healthy runs, with all units, two H.264 formats and 70 bytes ready,
// and perhaps with a serial flash that is protected.
std::shared_ptr<simulator::Camera> MakeHealthyCamera(bool isProtected);

// What it answers to a request; nothing when it does not.
std::optional<Bytes> AskCamera(simulator::Camera& camera, const Request& request,
                               std::span<const std::uint8_t> sent);

// A volume whose requests go to the wire.
platform::simulated::VolumeAnswer SweptVolume(Wire& wire);

}  // namespace zem::testing::sweep
