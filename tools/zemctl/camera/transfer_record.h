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

// The transfers of one call after another.
class TransferRecord {
 public:
  using Clock = std::function<std::uint64_t()>;  // milliseconds

  explicit TransferRecord(Clock clock) : clock_(std::move(clock)), start_(clock_()) {}

  // Forgets the transfers of the call before.
  void BeginCall() { transfers_.clear(); }

  // Sets the time.
  void Add(Transfer transfer);

  // Those of the present or the last call.
  const std::vector<Transfer>& transfers() const { return transfers_; }

  // The camera has left, or has failed every transfer for several seconds: nothing that waits for
  // it will end well.
  bool isGone() const { return isGone_; }

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
};

}  // namespace zemctl
