// What passed between the library and a camera: each transfer as the camera's device object saw it.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "platform/com.h"

namespace zemctl {

struct Transfer {
  std::uint64_t milliseconds = 0;  // since the camera was opened
  GUID unit = {};                  // the extension unit; the interface of a standard control
  std::uint32_t node = 0;
  std::uint32_t selector = 0;  // the unit's control; the number of a standard control
  bool isSet = false;
  // Otherwise the unit could not even be addressed: selector and direction are not known.
  bool isAddressed = true;
  std::vector<std::uint8_t> bytes;  // written, or read
  std::uint32_t length = 0;         // bytes written, or asked for
  std::uint32_t moved = 0;
  // Of a standard control: value and flags; minimum, maximum, step, default and flags when it is
  // its range that was asked for.
  std::vector<std::int32_t> values;
  bool isRange = false;
  HRESULT result = S_OK;

  bool hasFailed() const { return FAILED(result); }
  // It went well, and brought less than was asked for.
  bool isShort() const {
    return !hasFailed() && isAddressed && !isSet && !isStandardControl() && moved < length;
  }
  // Of a standard control or a microphone's level: it moves values, no bytes.
  bool isStandardControl() const {
    return unit == zem::IID_IAMVideoProcAmp || unit == zem::IID_IAMCameraControl ||
           unit == zem::IID_IAMAudioInputMixer;
  }
  // A transfer in this direction to or from this control.
  bool Is(const GUID& ofUnit, std::uint32_t ofSelector, bool set) const {
    return isAddressed && unit == ofUnit && selector == ofSelector && isSet == set;
  }
};

// By which a microphone's level is set: 0.0 to 1.0, noted in percent.
Transfer LevelTransfer(double level);

// "vendor", "video control"
std::string UnitName(const GUID& id);

// What the control is for; empty when that is not known.
std::string ControlName(const Transfer& transfer);

// "get vendor 2 (reply to an ISP command, 8 bytes)"
std::string NameOf(const Transfer& transfer);

// "the camera is gone (0x8007048F)"
std::string FailureOf(const Transfer& transfer);

// Whether the platform says with this result that there is no such device any more.
bool MeansGone(HRESULT result);

// Whether it says that the camera lacks the unit or the control.
bool IsUnknownControl(HRESULT result);

// What a transfer comes to that is not passed on, because the person at the terminal wants an end.
inline constexpr auto kStoppedResult = static_cast<HRESULT>(0x800704C7U);

// A question to a camera's device object that is no transfer, and its answer: by these a unit's
// node is looked up.
struct Lookup {
  enum class What {
    kInterface,    // whether the object has the interface `id`
    kNodes,        // how many nodes there are: `count`
    kNodeType,     // of which type node `node` is: `id`
    kNode,         // whether node `node` has the interface `id`
    kInformation,  // what node `node` says of the unit `id`: `bytes`, of `length` that were asked
                   // for
  };

  What what = What::kInterface;
  std::uint32_t node = 0;
  GUID id = {};
  std::uint32_t length = 0;
  std::uint32_t count = 0;  // for kInformation the bytes that were moved, or that there are
  std::vector<std::uint8_t> bytes = {};
  HRESULT result = S_OK;
};

// Sees what passes through a watched camera.
class CameraWatcher {
 public:
  virtual ~CameraWatcher() = default;

  virtual void Add(Transfer transfer) = 0;
  virtual void Add(const Lookup& /*lookup*/) {}
  // Nothing may be sent any more.
  virtual bool mustStop() const { return false; }
  // Whether nothing that waits for the camera will end well.
  virtual bool endsWaits() const { return false; }
};

// The transfers of one call after another.
class TransferRecord : public CameraWatcher {
 public:
  using CameraWatcher::Add;
  using Clock = std::function<std::uint64_t()>;  // milliseconds

  // `stopRequested` tells whether the person at the terminal wants an end.
  explicit TransferRecord(Clock clock, std::function<bool()> stopRequested = nullptr)
      : clock_(std::move(clock)), start_(clock_()), stopRequested_(std::move(stopRequested)) {}

  // Forgets the transfers of the call before.
  void BeginCall() { transfers_.clear(); }

  // Sets the time.
  void Add(Transfer transfer) override;

  // Those of the present or the last call.
  const std::vector<Transfer>& transfers() const { return transfers_; }

  // The camera has left, or has failed every transfer for several seconds: nothing that waits for
  // it will end well.
  bool isGone() const { return isGone_; }
  // The system does not list it any more.
  void NoteAbsence() { isGone_ = true; }

  bool mustStop() const override { return stopRequested_ && stopRequested_(); }
  // Something was not sent for that reason.
  bool wasStopped() const { return wasStopped_; }
  bool endsWaits() const override { return isGone_ || wasStopped_; }
  // How far it came: "the camera took 2 transfers, the last of them set vendor 1 (...)".
  std::string Extent() const;

  // Sees every transfer as it happens, until another takes its place.
  void SetObserver(std::function<void(const Transfer&)> observer) {
    observer_ = std::move(observer);
  }

 private:
  Clock clock_;
  std::uint64_t start_;
  std::vector<Transfer> transfers_;
  std::function<void(const Transfer&)> observer_;
  bool isFailing_ = false;
  std::uint64_t failingSince_ = 0;
  bool isGone_ = false;
  std::function<bool()> stopRequested_;
  bool wasStopped_ = false;
  std::uint64_t taken_ = 0;  // transfers to the camera that went well
  std::string lastTaken_;
};

}  // namespace zemctl
