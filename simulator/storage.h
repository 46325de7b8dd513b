// A storage device of the simulated camera: bytes by address, 0xFF where nothing was written.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

namespace zem::simulator {

class Storage {
 public:
  static constexpr std::uint8_t kErased = 0xFF;

  explicit Storage(std::size_t size) : bytes_(size, kErased) {}

  std::span<const std::uint8_t> bytes() const { return bytes_; }

  // Both false, and nothing done, for bytes that do not lie wholly inside the storage.
  bool Read(std::uint64_t address, std::span<std::uint8_t> data) const;
  bool Write(std::uint64_t address, std::span<const std::uint8_t> data);

  // Everything erased again.
  void Erase();

  // Called after each write with the bytes that are there now.
  using Observer = std::function<void(std::uint64_t address, std::span<const std::uint8_t> data)>;
  void SetObserver(Observer observer) { observer_ = std::move(observer); }

 private:
  bool Holds(std::uint64_t address, std::size_t length) const {
    return address <= bytes_.size() && length <= bytes_.size() - address;
  }

  std::vector<std::uint8_t> bytes_;
  Observer observer_;
};

// Keeps the storage in a file (a path in UTF-8): what the file holds becomes the storage's
// content, cut or filled with erased bytes, and every later write goes to the file at once. Throws
// std::runtime_error for a file that can neither be opened nor created.
void KeepInFile(Storage& storage, const std::string& path);

}  // namespace zem::simulator
