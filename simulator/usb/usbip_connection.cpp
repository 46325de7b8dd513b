#include "simulator/usb/usbip_connection.h"

#include <algorithm>
#include <utility>

#include "platform/bytes.h"

namespace zem::simulator::usb {
namespace {

// More transfers than any host has under way at once.
constexpr std::size_t kMostWaiting = 256;

constexpr std::uint8_t kInterfaceDescriptor = 0x04;
constexpr std::uint32_t kInEndpoint = 0x80;

// Of a transfer that did not end well, as Linux numbers it.
constexpr std::int32_t kStalledStatus = -32;
constexpr std::int32_t kOverflowStatus = -75;
constexpr std::int32_t kTakenBackStatus = -104;

std::uint8_t AddressOf(const SubmitCommand& command) {
  return static_cast<std::uint8_t>(command.endpoint | (command.isIn ? kInEndpoint : 0));
}

}  // namespace

ExportedDevice DescribeExport(const UsbDevice& device, std::uint32_t number) {
  const DeviceDescriptors& descriptors = device.descriptors();
  const Bytes& fields = descriptors.device;
  ExportedDevice exported;
  exported.busId = "1-" + std::to_string(number);
  exported.path = "/simulated/usb1/" + exported.busId;
  exported.number = number;
  exported.deviceClass = fields[4];
  exported.subclass = fields[5];
  exported.protocol = fields[6];
  exported.vendor = LoadLe16(&fields[8]);
  exported.product = LoadLe16(&fields[10]);
  exported.release = LoadLe16(&fields[12]);
  const Bytes& all = descriptors.configuration;
  for (std::size_t position = 0; position < all.size(); position += all[position]) {
    if (all[position + 1] == kInterfaceDescriptor) {
      exported.interfaces.push_back({all[position + 5], all[position + 6], all[position + 7]});
    }
  }
  return exported;
}

void UsbIpConnection::Run(Time now) {
  do {
    ServeWaiting(now);
  } while (isReading() && RunOne());
}

// False while there is no whole message.
bool UsbIpConnection::RunOne() {
  if (device_ == nullptr) {
    const std::optional<Request> request = reader_.NextRequest();
    if (request) {
      AnswerRequest(*request);
    }
    return request.has_value();
  }
  const std::optional<Command> command = reader_.NextCommand();
  if (!command) {
    return false;
  }
  if (const auto* const submit = std::get_if<SubmitCommand>(&*command)) {
    Submit(*submit);
  } else {
    Unlink(std::get<UnlinkCommand>(*command));
  }
  isOver_ = isOver_ || device_->isGone();
  return true;
}

void UsbIpConnection::AnswerRequest(const Request& request) {
  const std::vector<ExportedDevice> devices = exports_->List();
  const auto* const import = std::get_if<ImportRequest>(&request);
  if (import == nullptr) {
    Put(ListReply(devices));
    return;
  }
  const auto found = std::ranges::find(devices, import->busId, &ExportedDevice::busId);
  if (found != devices.end()) {
    device_ = exports_->Take(import->busId);
  }
  Put(device_ != nullptr ? ImportReply(*found) : ImportRefusal());
}

void UsbIpConnection::Submit(const SubmitCommand& command) {
  if (command.endpoint == 0) {
    const Answer answer = device_->Control(command.setup, command.data);
    if (observer_) {
      observer_(command.setup, command.data, answer);
    }
    Finish(command, answer);
  } else if (!command.packets.empty()) {
    Finish(command, Answer::Stalled(StallReason::kNone));  // no endpoint is isochronous
  } else if (command.isIn) {
    Wait(command, false);
  } else {
    Finish(command, device_->Send(AddressOf(command), command.data));
  }
}

void UsbIpConnection::Wait(const SubmitCommand& command, bool isSilent) {
  if (waiting_.size() == kMostWaiting) {
    throw ProtocolError("more transfers at once than any host has");
  }
  waiting_.push_back({command, isSilent});
}

void UsbIpConnection::Unlink(const UnlinkCommand& command) {
  const auto found =
      std::ranges::find_if(waiting_, [target = command.target](const Waiting& waiting) {
        return waiting.command.sequence == target;
      });
  const bool isTakenBack = found != waiting_.end();
  if (isTakenBack) {
    waiting_.erase(found);
  }
  Put(UnlinkReply(command, isTakenBack ? kTakenBackStatus : 0));
}

void UsbIpConnection::Finish(const SubmitCommand& command, const Answer& answer) {
  // Never more than the client has room for.
  const auto data =
      std::span(answer.data).first(std::min<std::size_t>(answer.data.size(), command.length));
  switch (answer.kind) {
    case Answer::Kind::kDone:
      Put(SubmitReply(command, 0, data, command.length));
      break;
    case Answer::Kind::kStalled:
      Put(SubmitReply(command, kStalledStatus, {}));
      break;
    case Answer::Kind::kTooMuch:
      Put(SubmitReply(command, kOverflowStatus, data));
      break;
    case Answer::Kind::kSilent:
      Wait(command, true);
      break;
    case Answer::Kind::kGone:
      isOver_ = true;
      break;
  }
}

void UsbIpConnection::ServeWaiting(Time now) {
  due_.reset();
  // Of an endpoint, transfers end in the order in which they came.
  std::uint32_t blocked = 0;
  for (std::size_t place = 0; place < waiting_.size() && isReading();) {
    if (auto answer = Serve(waiting_[place], now, blocked)) {
      const SubmitCommand command = std::move(waiting_[place].command);
      waiting_.erase(waiting_.begin() + static_cast<std::ptrdiff_t>(place));
      Finish(command, *answer);
      isOver_ = isOver_ || device_->isGone();
    } else {
      ++place;
    }
  }
}

// What the device has for a transfer; `blocked` are the endpoints that have nothing, by bits.
std::optional<Answer> UsbIpConnection::Serve(const Waiting& waiting, Time now,
                                             std::uint32_t& blocked) {
  const SubmitCommand& command = waiting.command;
  const std::uint32_t endpoint = 1U << command.endpoint;
  if (waiting.isSilent || (blocked & endpoint) != 0) {
    return std::nullopt;
  }
  std::optional<Answer> answer = device_->Receive(AddressOf(command), command.length, now);
  if (!answer) {
    blocked |= endpoint;
    if (const auto due = device_->NextDue(AddressOf(command))) {
      due_ = std::min(*due, due_.value_or(*due));
    }
  }
  return answer;
}

void UsbIpConnection::Written(std::size_t count) {
  output_.erase(output_.begin(), output_.begin() + static_cast<std::ptrdiff_t>(count));
}

}  // namespace zem::simulator::usb
