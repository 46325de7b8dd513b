// Replacing the whole table store: announce, data, order, and no wait.
#include <numeric>

#include "tests/support/device_test.h"
#include "tests/support/memory_limit.h"

namespace {

using zem::testing::DeviceTest;
using zem::testing::kFailedTransfer;
using zem::testing::Lines;
using zem::testing::SetLine;
using zem::testing::WideLines;
using Bytes = std::vector<std::uint8_t>;

class InitialTableTest : public DeviceTest {
 protected:
  InitialTableTest() {
    // Data goes out in chunks of 32 bytes.
    vendor().Remove(13);
    std::iota(image.begin(), image.end(), std::uint8_t{0xE0});
    handle();
  }

  ZemResult Write() {
    return ZEMAPI_WriteInitialTable(handle(), image.data(),
                                    static_cast<std::uint32_t>(image.size()));
  }

  Bytes image = Bytes(34);

  const std::string announce = "set vendor 4: 01 00 00 00 00 00 00 00";
  const std::string status = "get vendor 5 [8]";
  const std::string probe = "get vendor 13 [512] failed";
  const std::string firstChunk =
      "set vendor 3: e0 e1 e2 e3 e4 e5 e6 e7 e8 e9 ea eb ec ed ee ef"
      " f0 f1 f2 f3 f4 f5 f6 f7 f8 f9 fa fb fc fd fe ff";
  const std::string lastChunk =
      "set vendor 3: 00 01 00 00 00 00 00 00 00 00 00 00 00 00 00 00"
      " 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00";
  const std::string order = "set vendor 4: 01 01 03 04 00 00 00 00";
  const std::wstring speedLine = L"[MSG] Set Speeed:: 32Bytes, CS=0x3, Len=0x20\r\n";
};

TEST_F(InitialTableTest, AnnouncesSendsAndOrders) {
  EXPECT_EQ(Write(), 0);
  EXPECT_EQ(TakeWire(), (Lines{announce, status, probe, firstChunk, lastChunk, order}));
  EXPECT_EQ(TakeDebuggerLines(),
            (WideLines{SetLine(0, 8), speedLine, SetLine(0, 32), SetLine(0, 32), SetLine(0, 8)}));
  EXPECT_EQ(system().sleeps, std::vector<std::uint32_t>()) << "the end is not awaited";
}

TEST_F(InitialTableTest, NothingIsAskedOfTheImage) {
  EXPECT_EQ(ZEMAPI_WriteInitialTable(handle(), image.data(), 0), 0);
  EXPECT_EQ(TakeWire(), (Lines{announce, status, probe, order}));
  EXPECT_EQ(ZEMAPI_WriteInitialTable(handle(), nullptr, 0), 0);
  EXPECT_EQ(TakeWire(), (Lines{announce, status, probe, order}));
}

TEST_F(InitialTableTest, WithoutMemoryTheWriteIsOrderedAsAfterAnyFailedImage) {
  const zem::testing::MemoryExhausted memory;
  EXPECT_EQ(Write(), 0);
  EXPECT_EQ(TakeWire(), (Lines{announce, status, order}));
}

TEST_F(InitialTableTest, DeviceThatIsNotIdleIsLeftAlone) {
  for (const std::uint8_t state : Bytes{0x01, 0x80, 0x82, 0xFF}) {
    vendor().Answer(5, {state, 0, 0, 0, 0, 0, 0, 0});
    EXPECT_EQ(Write(), ZEM_E_DEVICE_REFUSED);
    EXPECT_EQ(TakeWire(), (Lines{announce, status}));
  }
}

TEST_F(InitialTableTest, FailureOfTheDataIsReportedOnTheDebuggerChannelOnly) {
  FailTransfer(4);
  EXPECT_EQ(Write(), 0);
  EXPECT_EQ(TakeDebuggerLines(),
            (WideLines{SetLine(0, 8), speedLine, SetLine(kFailedTransfer, 32),
                       L"[ERR] ZEMAPI_WriteFWData: Len = 32, hr = 8007001F\r\n", SetLine(0, 8)}));
}

TEST_F(InitialTableTest, NullHandleAndNullImage) {
  EXPECT_EQ(ZEMAPI_WriteInitialTable(nullptr, image.data(), 4), ZEM_E_NO_DEVICE);
  EXPECT_EQ(ZEMAPI_WriteInitialTable(handle(), nullptr, 4), ZEM_E_REFUSED);
  EXPECT_EQ(TakeWire(), Lines());
}

}  // namespace
