// Transfers that get no memory.
#include <optional>

#include "tests/support/memory_limit.h"
#include "tests/support/transfer_test.h"

namespace {

using zem::simulator::Fault;
using zem::testing::BeforeAllocation;
using zem::testing::Bytes;
using zem::testing::ChunkLine;
using zem::testing::CountingBytes;
using zem::testing::Lines;
using zem::testing::MemoryExhausted;
using zem::testing::TransferTest;

class MemoryExhaustedTest : public TransferTest {
 protected:
  Bytes bytes = CountingBytes(32);
  std::uint32_t length = 0x5A5A5A5A;
};

TEST_F(MemoryExhaustedTest, SendDataEndsAfterTheAnnounce) {
  handle();
  const MemoryExhausted memory;
  EXPECT_EQ(ZEMAPI_SendData(handle(), bytes.data(), 32, Report, user(), 0, 0), ZEM_E_NO_DEVICE);
  EXPECT_EQ(TakeWire(), Lines{"set vendor 4: 01 00 00 00 20 00 00 00"});
}

TEST_F(MemoryExhaustedTest, WriteFWDataSendsNothing) {
  handle();
  const MemoryExhausted memory;
  EXPECT_EQ(ZEMAPI_WriteFWData(handle(), bytes.data(), 32, Report, user()), ZEM_E_NO_DEVICE);
  EXPECT_EQ(TakeWire(), Lines());
}

TEST_F(MemoryExhaustedTest, ReadFWDataEndsBeforeTheFirstChunk) {
  vendor().Answer(5, {0, 0, 32, 0, 0, 0, 0, 0});
  handle();
  const MemoryExhausted memory;
  EXPECT_EQ(ZEMAPI_ReadFWData(handle(), bytes.data(), 32, &length, Report, user()),
            ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(TakeWire(), (Lines{"get vendor 3 [32]", "set vendor 4: 01 02 00 00 00 00 00 00",
                               "get vendor 5 [8]"}));
}

TEST_F(MemoryExhaustedTest, ReadFWDataAsksForAsMuchMemoryAsTheCameraSaysThatAChunkHas) {
  vendor().Answer(5, {0, 0, 32, 0, 0, 0, 0, 0});
  handle();
  camera().AddFault({Fault::Kind::kLength, 1, 1, 0xFFFFFFFF});
  MemoryExhausted memory;
  EXPECT_EQ(ZEMAPI_ReadFWData(handle(), bytes.data(), 32, &length, Report, user()),
            ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(memory.TakeWanted(), 0xFFFFFFFFU);
}

TEST_F(MemoryExhaustedTest, SpeedProbeWithoutItsBufferChoosesTheLowSpeed) {
  handle();
  int allocations = 0;
  std::optional<MemoryExhausted> memory;
  const BeforeAllocation limit([&] {
    if (++allocations == 2) {
      memory.emplace();
    }
  });
  EXPECT_EQ(ZEMAPI_WriteFWData(handle(), bytes.data(), 32, nullptr, 0), 0);
  EXPECT_EQ(TakeWire(), (Lines{ChunkLine(3, bytes, 0, 32), "drain"})) << "there is no probe";
  EXPECT_EQ(TakeDebuggerLines()[0], L"[MSG] Set Speeed:: 32Bytes, CS=0x3, Len=0x20\r\n");
}

TEST_F(MemoryExhaustedTest, ReadPartialFlashDataEndsAfterTheAnnounce) {
  handle();
  const MemoryExhausted memory;
  EXPECT_EQ(ZEMAPI_ReadPartialFlashData(handle(), 0, 32, bytes.data(), &length, Report, user()),
            ZEM_E_DEVICE_REFUSED);
  EXPECT_EQ(length, 0x5A5A5A5AU);
  EXPECT_EQ(TakeWire(), Lines{"set vendor 4: 01 10 00 00 00 00 20 00"});
}

TEST_F(MemoryExhaustedTest, WriteWithoutAHandleDoesWithoutTheProbe) {
  const MemoryExhausted memory;
  EXPECT_EQ(ZEMUVCEXT_WriteFWData(bytes.data(), 32, nullptr, 0), 0);
  EXPECT_EQ(TakeWire(), (Lines{"sleep 300", ChunkLine(3, bytes, 0, 32), "drain"}));
}

TEST_F(MemoryExhaustedTest, UpdateStopsOrOrdersTheBurnAsAfterAnyFailedImage) {
  handle();
  const MemoryExhausted memory;
  EXPECT_EQ(ZEMAPI_UpdateFW_516x(handle(), bytes.data(), 32, nullptr, 0, 0), ZEM_E_NO_DEVICE);
  EXPECT_EQ(TakeWire(), (Lines{"set vendor 4: 01 00 03 00 00 02 00 00", "get vendor 5 [8]"}));
  EXPECT_EQ(ZEMAPI_UpdateCaliData(handle(), bytes.data(), 32, nullptr, 0), 0);
  EXPECT_EQ(TakeWire()[2], "set vendor 4: 01 01 03 05 00 00 00 00");
}

}  // namespace
