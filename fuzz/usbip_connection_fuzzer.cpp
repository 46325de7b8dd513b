// A client of the USB/IP server that has a camera with a boot loader: transfers of all kinds with
// any fields, taken back, cut anywhere, read late or not at all; or bytes that are nothing of this.
// No answer has more bytes than the client has room for, nothing is answered twice, and what waits
// to be read is bounded.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <span>

#include "platform/bytes.h"
#include "simulator/usb/plugged_camera.h"
#include "simulator/usb/usbip_connection.h"

namespace {

namespace usb = zem::simulator::usb;
using zem::LoadBe32;
using zem::StoreBe32;

constexpr std::size_t kHeader = 48;
// One answer more than the connection lets wait.
constexpr std::size_t kMostWaiting = (2U << 20) + kHeader;

class Client {
 public:
  Client(std::span<const std::uint8_t> data, bool hasBootLoader)
      : data_(data), camera_(Camera(), BootLoader(hasBootLoader)), connection_(camera_.device()) {}

  void Run() {
    try {
      while (!data_.empty() && !connection_.isOver()) {
        Step(Next());
      }
    } catch (const usb::ProtocolError&) {
      return;
    }
  }

 private:
  static zem::simulator::CameraOptions Camera() {
    zem::simulator::CameraOptions options;
    options.h264Unit = true;
    options.encodingUnit = true;
    return options;
  }
  static zem::simulator::BootLoaderOptions BootLoader(bool isRunning) {
    zem::simulator::BootLoaderOptions options;
    options.start =
        isRunning ? zem::simulator::BootStage::kBootLoader : zem::simulator::BootStage::kCamera;
    options.storages = {{zem::simulator::StorageType::kSerialFlash, 4096, ""}};
    return options;
  }

  std::uint8_t Next() {
    if (data_.empty()) {
      return 0;
    }
    const std::uint8_t byte = data_.front();
    data_ = data_.subspan(1);
    return byte;
  }
  std::span<const std::uint8_t> Next(std::size_t count) {
    const auto taken = data_.first(std::min(count, data_.size()));
    data_ = data_.subspan(taken.size());
    return taken;
  }

  void Step(std::uint8_t kind) {
    switch (kind % 8) {
      case 0: {
        // Whole or not, from here on nobody knows what was asked for.
        const auto bytes = Next(Next());
        isMine_ = isMine_ && bytes.empty();
        Feed(bytes);
        break;
      }
      case 1:
        Read(std::size_t{1024} * Next());
        break;
      case 2:
        now_ += std::chrono::milliseconds(Next());
        Feed({});
        break;
      case 3:
        Unlink(Next());
        break;
      default:
        Submit(kind % 8 - 4U);
    }
  }

  // On endpoint 0, 1 or 2, or any; in or out.
  void Submit(std::uint32_t endpoint) {
    const std::uint32_t number = endpoint < 3 ? endpoint : Next() & 0xFU;
    const bool isIn = (Next() & 1) != 0;
    const auto setup = Next(number == 0 ? 8 : 0);
    const std::uint32_t room = Next() * 257U;
    const auto sent = Next(isIn ? 0 : room);
    usb::Bytes message(kHeader);
    StoreBe32(&message[0], 1);
    StoreBe32(&message[4], ++sequence_);
    StoreBe32(&message[12], isIn ? 1 : 0);
    StoreBe32(&message[16], number);
    StoreBe32(&message[24], isIn ? room : static_cast<std::uint32_t>(sent.size()));
    std::ranges::copy(setup, message.begin() + 40);
    message.insert(message.end(), sent.begin(), sent.end());
    rooms_[sequence_] = isIn ? room : 0;
    Feed(message);
  }

  void Unlink(std::uint32_t target) {
    usb::Bytes message(kHeader);
    StoreBe32(&message[0], 2);
    StoreBe32(&message[4], ++sequence_);
    StoreBe32(&message[20], target);
    Feed(message);
  }

  void Feed(std::span<const std::uint8_t> bytes) {
    if (connection_.isReading()) {
      connection_.Feed(bytes);
    }
    connection_.Run(now_);
    if (connection_.output().size() > kMostWaiting) {
      std::abort();
    }
  }

  void Read(std::size_t most) {
    const auto output = connection_.output();
    const auto piece = output.first(std::min(most, output.size()));
    answers_.insert(answers_.end(), piece.begin(), piece.end());
    connection_.Written(piece.size());
    CheckAnswers();
    connection_.Run(now_);
  }

  void CheckAnswers() {
    std::size_t position = 0;
    while (isMine_ && answers_.size() - position >= kHeader) {
      const std::uint8_t* const header = &answers_[position];
      const std::uint32_t sequence = LoadBe32(&header[4]);
      std::size_t moved = 0;
      if (LoadBe32(header) == 3) {
        const auto asked = rooms_.find(sequence);
        if (asked == rooms_.end()) {
          std::abort();  // not asked for, or answered before
        }
        moved = asked->second > 0 ? LoadBe32(&header[24]) : 0;
        if (moved > asked->second) {
          std::abort();
        }
        if (answers_.size() - position < kHeader + moved) {
          break;
        }
        rooms_.erase(asked);
      }
      position += kHeader + moved;
    }
    answers_.erase(answers_.begin(), answers_.begin() + static_cast<std::ptrdiff_t>(position));
  }

  std::span<const std::uint8_t> data_;
  usb::PluggedCamera camera_;
  usb::UsbIpConnection connection_;
  usb::Time now_{std::chrono::hours(1)};
  std::uint32_t sequence_ = 0;
  std::map<std::uint32_t, std::size_t> rooms_;  // of transfers without an answer, by their number
  usb::Bytes answers_;
  bool isMine_ = true;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 0) {
    Client({data + 1, size - 1}, (data[0] & 1) != 0).Run();
  }
  return 0;
}
