// The ground of tests that move data: what happens besides the transfers is written between them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/device_test.h"

namespace zem::testing {

using Bytes = std::vector<std::uint8_t>;

// 1, 2, 3, ... 255, 0, 1, ...
Bytes CountingBytes(std::size_t count);

// A write of `length` bytes of `data` from `offset` on, as TakeWire shows it; what lies behind the
// end of `data` is zeros.
std::string ChunkLine(unsigned selector, const Bytes& data, std::size_t offset, std::size_t length);

// A read of the transfer status, and a poll of it, as TakeWire shows them.
inline constexpr const char* kStatus = "get vendor 5 [8]";
inline const Lines kPoll = {"drain", "sleep 30", kStatus};

// The same transfer, which has failed.
inline std::string Failed(const std::string& line) { return line + " failed"; }

// The same lines n times.
Lines Repeated(std::size_t count, const Lines& lines);
Lines operator+(Lines left, const Lines& right);

class TransferTest : public DeviceTest {
 protected:
  // "sleep 30" and "drain" are among the lines of TakeWire.
  TransferTest();

  // A progress function for this test: "progress 50" is among the lines of TakeWire. It goes with
  // user().
  static void Report(std::uint32_t value, std::uint64_t user);
  std::uint64_t user() { return reinterpret_cast<std::uint64_t>(this); }

  // Only these lines of TakeWire.
  Lines TakeProgress();

  // From now on the camera lacks the 512-byte control.
  void MakeSlow() { vendor().Remove(13); }
};

}  // namespace zem::testing
