// One client of a USB/IP server: requests until it has imported a device, then the transfers of
// that device. No sockets: bytes come in and go out. What a client sends is hostile until checked;
// one that does not read what it asked for is not read any more. One thread at a time.
#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "simulator/usb/usb_device.h"
#include "simulator/usb/usbip_protocol.h"

namespace zem::simulator::usb {

// What a server offers.
class UsbIpExports {
 public:
  UsbIpExports() = default;
  virtual ~UsbIpExports() = default;
  UsbIpExports(const UsbIpExports&) = delete;
  UsbIpExports& operator=(const UsbIpExports&) = delete;

  virtual std::vector<ExportedDevice> List() = 0;

  // Takes a listed device for one client; null while another has it.
  virtual std::shared_ptr<UsbDevice> Take(const std::string& busId) = 0;
};

// A device as clients are told of it, the `number`th of its server, from 1.
ExportedDevice DescribeExport(const UsbDevice& device, std::uint32_t number);

class UsbIpConnection {
 public:
  // A control transfer once it has ended.
  using Observer = std::function<void(const SetupPacket& setup, std::span<const std::uint8_t> sent,
                                      const Answer& answer)>;

  // `exports` must outlive the connection.
  explicit UsbIpConnection(UsbIpExports& exports) : exports_(&exports) {}
  // Without the requests: the other side has the device already.
  explicit UsbIpConnection(std::shared_ptr<UsbDevice> device) : device_(std::move(device)) {}

  void SetObserver(Observer observer) { observer_ = std::move(observer); }

  // What the client has sent; to be called while isReading().
  void Feed(std::span<const std::uint8_t> bytes) { reader_.Feed(bytes); }
  bool isReading() const { return !isOver() && !isFull(); }

  // Answers what can be answered now. Throws ProtocolError.
  void Run(Time now);

  // What goes to the client, and that so much of it has gone. There may be more to run behind it.
  std::span<const std::uint8_t> output() const { return output_; }
  void Written(std::size_t count);

  // When to run it again although nothing has come.
  std::optional<Time> NextDue() const { return isFull() ? std::nullopt : due_; }

  // The device has left: nothing will be answered any more.
  bool isOver() const { return isOver_; }

  // What the client has imported; null before.
  const std::shared_ptr<UsbDevice>& device() const { return device_; }

 private:
  struct Waiting {
    SubmitCommand command;
    bool isSilent = false;  // until the client takes it back
  };

  bool isFull() const { return output_.size() >= kMostOutput; }
  bool RunOne();
  void AnswerRequest(const Request& request);
  void Submit(const SubmitCommand& command);
  void Unlink(const UnlinkCommand& command);
  void Wait(const SubmitCommand& command, bool isSilent);
  void Finish(const SubmitCommand& command, const Answer& answer);
  void ServeWaiting(Time now);
  std::optional<Answer> Serve(const Waiting& waiting, Time now, std::uint32_t& blocked);
  void Put(const Bytes& bytes) { output_.insert(output_.end(), bytes.begin(), bytes.end()); }

  // Behind so many bytes that the client has not read it is left to read.
  static constexpr std::size_t kMostOutput = 1U << 20;

  UsbIpExports* exports_ = nullptr;
  std::shared_ptr<UsbDevice> device_;
  Observer observer_;
  Reader reader_;
  std::deque<Waiting> waiting_;  // transfers in, in the order in which they came
  std::optional<Time> due_;
  Bytes output_;
  bool isOver_ = false;
};

}  // namespace zem::simulator::usb
