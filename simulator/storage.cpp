#include "simulator/storage.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>

namespace zem::simulator {

bool Storage::Read(std::uint64_t address, std::span<std::uint8_t> data) const {
  if (!Holds(address, data.size())) {
    return false;
  }
  std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(address), data.size(), data.begin());
  return true;
}

bool Storage::Write(std::uint64_t address, std::span<const std::uint8_t> data) {
  if (!Holds(address, data.size())) {
    return false;
  }
  std::copy(data.begin(), data.end(), bytes_.begin() + static_cast<std::ptrdiff_t>(address));
  if (observer_) {
    observer_(address, data);
  }
  return true;
}

void Storage::Erase() {
  std::fill(bytes_.begin(), bytes_.end(), kErased);
  if (observer_) {
    observer_(0, bytes_);
  }
}

void KeepInFile(Storage& storage, const std::string& path) {
  const std::filesystem::path native(std::u8string(path.begin(), path.end()));
  std::vector<std::uint8_t> content(storage.bytes().size(), Storage::kErased);
  if (std::ifstream existing(native, std::ios::binary); existing) {
    existing.read(reinterpret_cast<char*>(content.data()),
                  static_cast<std::streamsize>(content.size()));
  }
  storage.Write(0, content);
  const auto file = std::make_shared<std::ofstream>(native, std::ios::binary | std::ios::trunc);
  const auto keep = [file](std::uint64_t address, std::span<const std::uint8_t> data) {
    file->seekp(static_cast<std::streamoff>(address));
    file->write(reinterpret_cast<const char*>(data.data()),
                static_cast<std::streamsize>(data.size()));
    file->flush();
  };
  keep(0, content);
  if (!*file) {
    throw std::runtime_error("the storage file \"" + path + "\" cannot be written");
  }
  storage.SetObserver(keep);
}

}  // namespace zem::simulator
