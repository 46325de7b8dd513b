// The message queue of the thread during transfers and burns.
#include "tests/support/transfer_test.h"

namespace {

using zem::platform::DrainMessageQueue;
using zem::testing::Bytes;
using zem::testing::CountingBytes;
using zem::testing::TransferTest;

using MessageQueueTest = TransferTest;

TEST_F(MessageQueueTest, DrainDispatchesEverythingAlsoWhatIsPostedMeanwhile) {
  system().messages.push_back({[this] { system().messages.emplace_back(); }});
  system().messages.emplace_back();
  DrainMessageQueue();
  EXPECT_EQ(system().dispatchedMessages, 3);
  EXPECT_TRUE(system().messages.empty());
  EXPECT_EQ(system().queueDrains, 1);
}

TEST_F(MessageQueueTest, QuitMessageEndsTheDrainAndIsTaken) {
  system().messages.emplace_back();
  system().messages.push_back({nullptr, true});
  system().messages.emplace_back();
  DrainMessageQueue();
  EXPECT_EQ(system().dispatchedMessages, 1);
  EXPECT_EQ(system().messages.size(), 1U);
  DrainMessageQueue();
  EXPECT_EQ(system().dispatchedMessages, 2);
}

TEST_F(MessageQueueTest, QuitMessageEndsOneDrainAndNotTheTransfer) {
  const Bytes data = CountingBytes(1536);
  system().messages.push_back({nullptr, true});
  system().messages.emplace_back();
  int dispatchedAtFirst = -1;
  system().onDrain = [this, &dispatchedAtFirst] {
    if (system().queueDrains == 2) {
      dispatchedAtFirst = system().dispatchedMessages;
    }
  };
  EXPECT_EQ(ZEMAPI_WriteFWData(handle(), data.data(), 1536, Report, user()), 0);
  EXPECT_EQ(dispatchedAtFirst, 0);
  EXPECT_EQ(system().dispatchedMessages, 1);
  EXPECT_EQ(system().queueDrains, 4);
}

TEST_F(MessageQueueTest, TransfersDrainOnceForEachReportAndOnceAtTheEnd) {
  const Bytes data = CountingBytes(160);
  EXPECT_EQ(ZEMAPI_SendData(handle(), data.data(), 160, Report, user(), 0, 0), 0);
  EXPECT_EQ(system().queueDrains, 6);
  EXPECT_EQ(ZEMAPI_SendData(handle(), data.data(), 160, nullptr, 0, 0, 0), 0);
  EXPECT_EQ(system().queueDrains, 7);
}

TEST_F(MessageQueueTest, WindowProcedureMayUseTheLibrary) {
  vendor().Answer(5, {0});
  vendor().Answer(5, {1});
  unsigned short value = 0;
  ZemResult result = -1;
  system().messages.push_back({[&] { result = ZEMAPI_GetRegister(handle(), 0x1234, &value); }});
  vendor().Answer(2, {0, 0, 0x11, 0x22});
  const Bytes data = CountingBytes(8);
  EXPECT_EQ(ZEMAPI_UpdateCaliData(handle(), data.data(), 8, nullptr, 0), 0);
  EXPECT_EQ(result, 0);
  EXPECT_EQ(value, 0x2211);
}

}  // namespace
