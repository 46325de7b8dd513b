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
  HRESULT result = S_OK;

  bool hasFailed() const { return FAILED(result); }
  // A transfer in this direction to or from this control.
  bool Is(const GUID& ofUnit, std::uint32_t ofSelector, bool set) const {
    return isAddressed && unit == ofUnit && selector == ofSelector && isSet == set;
  }
};

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

// The transfers of one call after another.
class TransferRecord {
 public:
  using Clock = std::function<std::uint64_t()>;  // milliseconds

  // `stopRequested` tells whether the person at the terminal wants an end.
  explicit TransferRecord(Clock clock, std::function<bool()> stopRequested = nullptr)
      : clock_(std::move(clock)), start_(clock_()), stopRequested_(std::move(stopRequested)) {}

  // Forgets the transfers of the call before.
  void BeginCall() { transfers_.clear(); }

  // Sets the time.
  void Add(Transfer transfer);

  // Those of the present or the last call.
  const std::vector<Transfer>& transfers() const { return transfers_; }

  // The camera has left, or has failed every transfer for several seconds: nothing that waits for
  // it will end well.
  bool isGone() const { return isGone_; }

  // Nothing may be sent any more.
  bool mustStop() const { return stopRequested_ && stopRequested_(); }
  // Something was not sent for that reason.
  bool wasStopped() const { return wasStopped_; }
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
