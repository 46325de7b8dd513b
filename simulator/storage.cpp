#include "simulator/storage.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <stdexcept>

#include "simulator/utf8_files.h"

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

namespace {

bool WriteAt(std::FILE* file, std::uint64_t address, std::span<const std::uint8_t> data) {
  return std::fseek(file, static_cast<long>(address), SEEK_SET) == 0 &&
         std::fwrite(data.data(), 1, data.size(), file) == data.size() && std::fflush(file) == 0;
}

}  // namespace

void KeepInFile(Storage& storage, const std::string& path) {
  std::vector<std::uint8_t> content(storage.bytes().size(), Storage::kErased);
  if (const File existing = OpenUtf8(path, "rb")) {
    static_cast<void>(std::fread(content.data(), 1, content.size(), existing.get()));
  }
  const std::shared_ptr<std::FILE> file = OpenUtf8(path, "wb");
  if (!file || !WriteAt(file.get(), 0, content)) {
    throw std::runtime_error("the storage file \"" + path + "\" cannot be written");
  }
  storage.Write(0, content);
  storage.SetObserver([file](std::uint64_t address, std::span<const std::uint8_t> data) {
    WriteAt(file.get(), address, data);
  });
}

}  // namespace zem::simulator
