// The camera's end of the data channel: what transfer controls make of the data controls, the burn
// that they order, and the read-back of the flash.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <utility>
#include <vector>

#include "simulator/camera.h"
#include "simulator/command_block.h"
#include "simulator/flash_memory.h"

namespace zem::simulator {

struct DataChannelSettings {
  std::size_t dataLength = 32;  // of the slow data control: 32 or 64
  bool highSpeed = true;        // has the 512-byte data control and long flash chunks
  std::uint32_t burnPolls = 0;  // status reads that find a burn busy
  bool burnError = false;       // burns end in an error, with the area erased
  bool busy = false;            // busy with something else whenever a transfer is announced
};

class DataChannel {
 public:
  DataChannel(const DataChannelSettings& settings, FlashMemory& flash)
      : settings_(settings), flash_(flash) {}

  // A transfer control that the host wrote.
  void Control(const Block& control);

  // The transfer status, as it is read.
  Block Status();

  // A data control that the host writes or reads.
  Outcome Write(std::uint16_t selector, std::span<const std::uint8_t> bytes);
  Outcome Read(std::uint16_t selector, std::vector<std::uint8_t>& bytes);

  // A burn that is under way comes to its end by itself.
  void Settle();

  // Called when an area has been erased, and when one has been burned.
  void SetFlashObserver(std::function<void(const FlashArea&)> observer) {
    flashObserver_ = std::move(observer);
  }

  // What the host sent last, cut to the length it announced: what the camera has ready to be read.
  std::vector<std::uint8_t> ReadyData() const;
  void SetReadyData(std::vector<std::uint8_t> data);

 private:
  enum class Mode { kIdle, kReceiving, kBurning, kSending, kReadingFlash };

  void BeginWrite(const Block& control);
  void BeginBurn(const Block& control);
  void EndBurn();
  void BeginRead();
  void BeginFlashRead(const Block& control);
  Outcome NextFlashChunk(std::size_t length, std::vector<std::uint8_t>& bytes);

  // How many bytes more arrived than were announced, as far as the announced length tells.
  std::int64_t Surplus() const;
  bool LengthFits() const;

  DataChannelSettings settings_;
  FlashMemory& flash_;
  std::function<void(const FlashArea&)> flashObserver_;
  Mode mode_ = Mode::kIdle;
  Block status_ = {};
  std::uint32_t announced_ = 0;
  std::vector<std::uint8_t> received_;
  const FlashArea* burning_ = nullptr;
  std::uint32_t pollsLeft_ = 0;
  std::vector<std::uint8_t> sending_;
  std::size_t position_ = 0;  // in what is sent, or in the flash
  std::size_t flashEnd_ = 0;
};

}  // namespace zem::simulator
