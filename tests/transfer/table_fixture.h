// A camera whose vendor unit has a real memory, for tests of the table store.
#pragma once

#include <algorithm>

#include "simulator/vendor_unit.h"
#include "tests/support/device_test.h"

namespace zem::testing {

using Bytes = std::vector<std::uint8_t>;

inline constexpr std::size_t kImageSize = 8192;
// A request and a read for each piece of 29 bytes of a whole image.
inline constexpr std::size_t kWholeImageTransfers = 566;

class TableTest : public DeviceTest {
 protected:
  TableTest() {
    vendor().Delegate(16, device_);
    handle();
  }
  ~TableTest() override { ZEMAPI_CloseTableHandle(nullptr, &table_); }

  // The device's memory, from address 0; erased behind `bytes`.
  void Store(const Bytes& bytes) {
    device_.state.nvmem.assign(kImageSize, 0xFF);
    std::copy(bytes.begin(), bytes.end(), device_.state.nvmem.begin());
  }
  const Bytes& memory() const { return device_.state.nvmem; }

  // A table handle with an image of its own, which no device has.
  std::uint8_t* Image(const Bytes& bytes) {
    image_.assign(kImageSize, 0xFF);
    std::copy(bytes.begin(), bytes.end(), image_.begin());
    return image_.data();
  }
  const Bytes& image() const { return image_; }

  // The handle of the device's table store, opened on first use; what that sent is forgotten.
  std::uint8_t* table() {
    if (table_ == nullptr) {
      EXPECT_EQ(ZEMAPI_OpenTableHandle(handle(), &table_), 0);
      TakeWire();
      TakeDebuggerLines();
    }
    return table_;
  }

 private:
  simulator::VendorUnit device_;
  Bytes image_;
  std::uint8_t* table_ = nullptr;
};

// Table 1 with a1 a2 a3, an empty table 2, table 0x30 with 40 bytes b0.
inline Bytes ThreeTables() {
  Bytes image = {0xEE, 0x77, 0x3B, 0x00,                    //
                 0x71, 0x01, 0x07, 0x00, 0xA1, 0xA2, 0xA3,  //
                 0x72, 0x02, 0x04, 0x00,                    //
                 0x73, 0x30, 0x2C, 0x00};
  image.insert(image.end(), 40, 0xB0);
  return image;
}

}  // namespace zem::testing
