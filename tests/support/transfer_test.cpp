#include "tests/support/transfer_test.h"

#include <algorithm>

namespace zem::testing {

Bytes CountingBytes(std::size_t count) {
  Bytes bytes(count);
  for (std::size_t index = 0; index < count; ++index) {
    bytes[index] = static_cast<std::uint8_t>(index + 1);
  }
  return bytes;
}

std::string ChunkLine(unsigned selector, const Bytes& data, std::size_t offset,
                      std::size_t length) {
  Bytes chunk(length);
  for (std::size_t index = 0; index < length && offset + index < data.size(); ++index) {
    chunk[index] = data[offset + index];
  }
  return "set vendor " + std::to_string(selector) + ": " + HexText(chunk);
}

Lines Repeated(std::size_t count, const Lines& lines) {
  Lines all;
  for (std::size_t time = 0; time < count; ++time) {
    all.insert(all.end(), lines.begin(), lines.end());
  }
  return all;
}

Lines operator+(Lines left, const Lines& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

TransferTest::TransferTest() {
  system().onSleep = [this](std::uint32_t milliseconds) {
    Note("sleep " + std::to_string(milliseconds));
  };
  system().onDrain = [this] { Note("drain"); };
}

void TransferTest::Report(std::uint32_t value, std::uint64_t user) {
  reinterpret_cast<TransferTest*>(user)->Note("progress " + std::to_string(value));
}

Lines TransferTest::TakeProgress() {
  Lines lines = TakeWire();
  std::erase_if(lines, [](const std::string& line) { return !line.starts_with("progress "); });
  return lines;
}

}  // namespace zem::testing
