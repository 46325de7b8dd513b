// A camera as a plain model without transport: topology nodes, some of them extension units with
// controls, and faults. The adapters beside it let hosts meet the model.
//
// One thread at a time.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <span>
#include <vector>

#include "platform/com.h"
#include "simulator/faults.h"
#include "simulator/kept_memory.h"
#include "simulator/standard_controls.h"

namespace zem::simulator {

enum class Outcome {
  kDone,
  kNoSuchControl,  // the unit has no such control, or not in that direction
  kWrongLength,    // the length does not suit the control
  kInvalidValue,   // the control does not take this value
  kFailed,         // the device stalled the transfer
  kSilent,         // the device never answered
  kUnplugged,      // the device is gone
};

// One extension unit of the camera.
class ExtensionUnit {
 public:
  explicit ExtensionUnit(const GUID& id) : id_(id) {}
  virtual ~ExtensionUnit() = default;
  ExtensionUnit(const ExtensionUnit&) = delete;
  ExtensionUnit& operator=(const ExtensionUnit&) = delete;

  const GUID& id() const { return id_; }

  // The host writes `bytes` to a control.
  virtual Outcome Set(std::uint16_t selector, std::span<const std::uint8_t> bytes) = 0;

  // The host reads a control for which it offers `length` bytes. `bytes` becomes the control's
  // value, in the control's own length.
  virtual Outcome Get(std::uint16_t selector, std::size_t length,
                      std::vector<std::uint8_t>& bytes) = 0;

  // Adds what the unit keeps while the camera is switched off.
  virtual void SaveMemory(KeptMemory& /*memory*/) const {}

  // Switches the unit on with what it kept; whatever `memory` lacks is as it left the factory.
  // Throws std::invalid_argument for memory that cannot be this unit's.
  virtual void LoadMemory(const KeptMemory& /*memory*/) {}

  // Time passes: what the unit does by itself comes to its end.
  virtual void Settle() {}

 private:
  GUID id_;
};

// One transfer as it passed over the wire.
struct Transfer {
  bool isSet = false;
  GUID unit = {};
  std::uint16_t selector = 0;
  std::size_t length = 0;           // bytes written, or offered for reading
  std::vector<std::uint8_t> bytes;  // bytes written, or those read
  Outcome outcome = Outcome::kDone;
};

class Camera {
 public:
  // Adds a node without an extension unit, such as a terminal.
  void AddPlainNode() { nodes_.push_back(nullptr); }

  // Adds the node of a processing unit, which gives the node interface IVideoProcAmp.
  void AddProcessingNode() {
    processingNodes_.insert(nodes_.size());
    AddPlainNode();
  }
  bool IsProcessingNode(std::size_t node) const { return processingNodes_.contains(node); }

  // Adds a node that is an extension unit, and hands the unit back.
  template <class Unit>
  Unit& AddUnit(std::unique_ptr<Unit> unit) {
    Unit& added = *unit;
    nodes_.push_back(std::move(unit));
    return added;
  }

  // Gives the camera a family of standard controls.
  void AddControls(ControlFamily family, StandardControls controls) {
    controls_[family] = std::move(controls);
  }
  bool HasControls(ControlFamily family) const { return controls_.contains(family); }

  void AddFault(const Fault& fault) { faults_.push_back(fault); }

  // All units'; a camera that is gone does nothing more. What was loaded and belongs to no unit of
  // this camera is saved as it was.
  KeptMemory SaveMemory() const;
  void LoadMemory(const KeptMemory& memory);
  void Settle();

  // Called for every transfer once its outcome is known.
  void SetObserver(std::function<void(const Transfer&)> observer) {
    observer_ = std::move(observer);
  }

  std::size_t nodeCount() const { return nodes_.size(); }

  // The unit at a node; null for a node without one and for a node that does not exist.
  const ExtensionUnit* UnitAt(std::size_t node) const {
    return node < nodes_.size() ? nodes_[node].get() : nullptr;
  }

  // Transfers so far, by which faults count.
  std::uint32_t transfers() const { return transfers_; }

  // Of the fault by which the last transfer failed; 0 when it did not, or has none.
  std::uint32_t failValue() const { return failValue_; }

  bool unplugged() const { return unplugged_; }
  void Unplug();

  // Called once, when the camera is unplugged.
  void SetUnplugObserver(std::function<void()> observer) { unplugObserver_ = std::move(observer); }

  // Called behind that one when it is to be plugged in again: whoever lists it makes a new one.
  void SetReplugObserver(std::function<void()> observer) { replugObserver_ = std::move(observer); }

  Outcome Set(std::size_t node, std::uint16_t selector, std::span<const std::uint8_t> bytes);

  // Reads into `bytes`; `reported` becomes the byte count that the camera says it moved.
  Outcome Get(std::size_t node, std::uint16_t selector, std::span<std::uint8_t> bytes,
              std::uint32_t& reported);

  // Standard controls. Each access is a transfer that can fail, but not one that is observed.
  Outcome GetControl(ControlFamily family, std::int32_t property, ControlSetting& setting);
  Outcome SetControl(ControlFamily family, std::int32_t property, const ControlSetting& setting);
  Outcome GetControlRange(ControlFamily family, std::int32_t property, ControlRange& range);

 private:
  // What the faults make of a transfer.
  struct Disturbance {
    bool fail = false;
    bool silent = false;
    const Fault* refuse = nullptr;
    const Fault* shorten = nullptr;
    const Fault* length = nullptr;
    bool garbage = false;
    bool leave = false;
    bool drop = false;
  };

  Disturbance NextTransfer();
  Outcome Answer(ExtensionUnit& unit, std::uint16_t selector, std::size_t length,
                 const Disturbance& disturbance, std::vector<std::uint8_t>& answer);
  void Report(const Transfer& transfer) const;
  Outcome UseControl(ControlFamily family, std::int32_t property, StandardControl*& control);

  std::vector<std::unique_ptr<ExtensionUnit>> nodes_;
  std::set<std::size_t> processingNodes_;
  std::map<ControlFamily, StandardControls> controls_;
  std::vector<Fault> faults_;
  std::function<void(const Transfer&)> observer_;
  std::function<void()> unplugObserver_;
  std::function<void()> replugObserver_;
  KeptMemory loadedMemory_;
  std::uint32_t transfers_ = 0;
  std::uint32_t failValue_ = 0;
  bool unplugged_ = false;
};

}  // namespace zem::simulator
