// A volume that says what a test tells it to say, and writes down every device control.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/scsi.h"
#include "platform/simulated/simulated_platform.h"

namespace zem::testing {

// One device control as it reached the volume.
struct VolumeControl {
  using Bytes = std::vector<std::uint8_t>;

  std::wstring path;
  std::uint32_t code = 0;
  std::uint32_t inputLength = 0;
  std::uint32_t outputLength = 0;
  Bytes block;                 // its first 96 bytes, the data pointer of the direct form as zeros
  const void* data = nullptr;  // that pointer
  Bytes sent;                  // the data that goes out
  std::uint32_t length = 0;    // of the data, either way
  Bytes cdb;
  std::uint32_t clock = 0;  // when it was made, in virtual milliseconds
  bool failed = false;

  bool IsIn() const { return code == IOCTL_SCSI_PASS_THROUGH; }
};

class ScriptedVolume {
 public:
  using Bytes = std::vector<std::uint8_t>;

  // Replies to the inquiry and to identify: by default those of a boot loader.
  Bytes inquiry = {0x00, 0x80, 0x02, 0x01};
  Bytes identify = {0xAA, 0x55, 0x00, 0x00, 'V', 'S', 'N', '3'};

  // Replies to other commands that read, by sub-command, one after the other; zeros behind them.
  std::map<std::uint8_t, std::deque<Bytes>> answers;

  // The n-th control from now on, counted from 1, and those behind it fail with `error`.
  void Fail(std::size_t n, std::uint32_t error, std::size_t count = 1) {
    for (std::size_t index = 0; index < count; ++index) {
      failures_[made_ + n + index] = error;
    }
  }
  // Every control fails that carries this command: an inquiry's code or a vendor sub-command.
  void FailAll(std::uint8_t command, std::uint32_t error) { failedCommands_[command] = error; }

  // Even a control that fails leaves its reply in the block.
  bool repliesInSpiteOfFailure = false;

  std::vector<VolumeControl> controls;
  // Told of each.
  std::function<void(const VolumeControl&)> onControl;

  platform::simulated::VolumeAnswer Answer() {
    return [this](const platform::simulated::VolumeRequest& request) { return Control(request); };
  }

 private:
  std::optional<std::uint32_t> Control(const platform::simulated::VolumeRequest& request) {
    ++made_;
    VolumeControl control;
    control.path = request.path;
    control.code = request.code;
    control.inputLength = request.inputLength;
    control.outputLength = request.outputLength;
    control.clock = platform::simulated::TheSystem().clockMilliseconds;
    auto* const block = static_cast<std::uint8_t*>(request.block);
    control.block.assign(block, block + 96);
    SCSI_PASS_THROUGH header;
    std::memcpy(&header, block, sizeof(header));
    control.length = header.DataTransferLength;
    control.cdb.assign(header.Cdb, header.Cdb + header.CdbLength);
    if (!control.IsIn()) {
      SCSI_PASS_THROUGH_DIRECT direct;
      std::memcpy(&direct, block, sizeof(direct));
      std::memset(&control.block[24], 0, 8);
      control.data = direct.DataBuffer;
      const auto* const data = static_cast<const std::uint8_t*>(direct.DataBuffer);
      if (control.length > 0) {
        control.sent.assign(data, data + control.length);
      }
    }
    const std::uint8_t command = control.cdb[0] == 0x12 ? control.cdb[0] : control.cdb[3];
    const std::optional<std::uint32_t> error = ErrorOf(command);
    control.failed = error.has_value();
    if (control.IsIn() && (!error || repliesInSpiteOfFailure)) {
      const Bytes reply = ReplyTo(command);
      std::copy_n(reply.begin(), std::min<std::size_t>(reply.size(), control.length),
                  block + header.DataBufferOffset);
    }
    controls.push_back(std::move(control));
    if (onControl) {
      onControl(controls.back());
    }
    return error;
  }

  std::optional<std::uint32_t> ErrorOf(std::uint8_t command) const {
    if (const auto failure = failures_.find(made_); failure != failures_.end()) {
      return failure->second;
    }
    if (const auto failure = failedCommands_.find(command); failure != failedCommands_.end()) {
      return failure->second;
    }
    return std::nullopt;
  }

  Bytes ReplyTo(std::uint8_t command) {
    if (command == 0x12) {
      return inquiry;
    }
    if (command == 0x01) {
      return identify;
    }
    auto& queue = answers[command];
    if (queue.empty()) {
      return {};
    }
    Bytes reply = std::move(queue.front());
    queue.pop_front();
    return reply;
  }

  std::size_t made_ = 0;  // controls so far
  std::map<std::size_t, std::uint32_t> failures_;
  std::map<std::uint8_t, std::uint32_t> failedCommands_;
};

}  // namespace zem::testing
